// SPDX-License-Identifier: GPL-3.0-or-later
// A store on disk for samples that are too many for memory and are needed once all are known.
#pragma once

#include "kits/storage/FileReplacement.h"

#include <functional>
#include <span>

namespace vexa {

/// A temporary file of floats in the same folder as another file. The destructor removes it. One
/// thread.
class FloatStore {
  public:
    using Sink = std::function<kits::Result<void>(std::span<const float>)>;

    static kits::Result<FloatStore> Create(const std::filesystem::path& beside);

    kits::Result<void> Append(std::span<const float> samples);

    /// Passes all samples to the sink, in pieces and in order; stops at the sink's first error.
    kits::Result<void> Replay(const Sink& sink) const;

  private:
    FloatStore(kits::FileReplacement file, std::filesystem::path beside)
        : file(std::move(file)), beside(std::move(beside)) {}

    kits::FileReplacement file;
    std::filesystem::path beside;
};

} // namespace vexa
