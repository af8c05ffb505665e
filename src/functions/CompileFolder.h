// SPDX-License-Identifier: GPL-3.0-or-later
// The folder in which one compilation takes place.
#pragma once

#include "kits/support/Descriptor.h"
#include "kits/support/Result.h"

#include <filesystem>

namespace vexa {

/// A folder that nobody else can use and that goes with this. It is locked as long as its process
/// lives, so one that a killed program has left is known by its lock being free.
class CompileFolder {
  public:
    /// Creates ".compile-" and six characters below `parent`, where no other user can have put
    /// anything: the error says if `parent` is not such a folder, or why nothing can be created
    /// there. What killed programs have left is removed first.
    static kits::Result<CompileFolder> Create(const std::filesystem::path& parent);

    CompileFolder(CompileFolder&& other) noexcept;
    CompileFolder& operator=(CompileFolder&&) = delete;
    ~CompileFolder();

    const std::filesystem::path& Path() const { return path; }

  private:
    CompileFolder(std::filesystem::path path, kits::Descriptor lock);

    std::filesystem::path path;
    kits::Descriptor lock;
};

} // namespace vexa
