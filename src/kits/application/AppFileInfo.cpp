// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/application/AppFileInfo.h"

#include "kits/storage/ProgramFolder.h"
#include "kits/storage/ReadFile.h"

#include <algorithm>
#include <string>
#include <utility>

status_t GetAppInfo(app_info* info) {
    info->file = kits::ProgramFile();
    return info->file.empty() ? B_ENTRY_NOT_FOUND : B_OK;
}

BAppFileInfo::BAppFileInfo(std::filesystem::path program) : program(std::move(program)) {}

status_t BAppFileInfo::GetIcon(BBitmap* icon, icon_size size) const {
    const auto edge = static_cast<float>(size - 1);
    if (!icon || icon->ColorSpace() != B_CMAP8 || icon->Bounds() != BRect{0, 0, edge, edge})
        return B_BAD_VALUE;
    const kits::Result<std::string> bits =
        kits::ReadFile(program.string() + "-" + std::to_string(int(size)) + ".icon");
    if (!bits || static_cast<int64>(bits->size()) != icon->BitsLength())
        return B_ENTRY_NOT_FOUND;
    std::ranges::copy(*bits, static_cast<char*>(icon->Bits()));
    return B_OK;
}
