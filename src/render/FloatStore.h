// SPDX-License-Identifier: GPL-3.0-or-later
// A store holds samples that are too many for memory, until all of them are known.
#pragma once

#include "kits/storage/FileReplacement.h"

#include <functional>
#include <span>

namespace vexa {

/// A temporary file of floats beside another file; gone when it is destroyed. One thread.
class FloatStore {
  public:
    using Sink = std::function<kits::Result<void>(std::span<const float>)>;

    static kits::Result<FloatStore> Create(const std::filesystem::path& beside);

    kits::Result<void> Append(std::span<const float> samples);

    /// Hands all samples on, in pieces and in order; stops at the sink's first error.
    kits::Result<void> Replay(const Sink& sink) const;

  private:
    FloatStore(kits::FileReplacement file, std::filesystem::path beside)
        : file(std::move(file)), beside(std::move(beside)) {}

    kits::FileReplacement file;
    std::filesystem::path beside;
};

} // namespace vexa
