// SPDX-License-Identifier: GPL-3.0-or-later
// The facts about the program that its own file and the files beside it give.
#pragma once

#include "kits/support/Bitmap.h"

#include <filesystem>

/// What is known of a running program.
struct app_info {
    /// The file that it was started from.
    std::filesystem::path file;
};

/// Fills in what is known of this program. Returns B_ENTRY_NOT_FOUND if its file cannot be
/// determined.
status_t GetAppInfo(app_info* info);

/// The edge of an icon in pixels.
enum icon_size { B_LARGE_ICON = 32, B_MINI_ICON = 16 };

/// The icons of a program, in files beside its own named <program>-32.icon and <program>-16.icon.
/// They contain the bits of a B_CMAP8 bitmap of that size and nothing else.
class BAppFileInfo {
  public:
    explicit BAppFileInfo(std::filesystem::path program);

    /// Copies the icon into a valid B_CMAP8 bitmap of its size (else B_BAD_VALUE). If there is no
    /// complete icon, the bitmap stays unchanged and the result is B_ENTRY_NOT_FOUND.
    status_t GetIcon(BBitmap* icon, icon_size size) const;

  private:
    std::filesystem::path program;
};
