// SPDX-License-Identifier: GPL-3.0-or-later
// The private folder of one compilation.
#pragma once

#include "kits/support/Descriptor.h"
#include "kits/support/Result.h"

#include <filesystem>

namespace vexa {

/// A folder that no other user can access, and that is removed with this object. It is locked while
/// this process lives, so a folder that is not locked was left behind by a killed program.
class CompileFolder {
  public:
    /// Creates a folder named ".compile-" and six characters below `parent`. The error says that
    /// other users could put files into `parent`, or why nothing can be created there. Folders that
    /// killed programs have left behind are removed first.
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
