// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/translation/TranslationUtils.h"

#include "kits/storage/ProgramFolder.h"

#include <QImage>
#include <cstring>
#include <filesystem>
#include <memory>

namespace {

std::unique_ptr<BBitmap> Read(const std::filesystem::path& path) {
    QImage image(QString::fromStdString(path.string()));
    if (image.isNull())
        return nullptr;
    image.convertTo(QImage::Format_ARGB32);
    const BRect bounds{0, 0, float(image.width() - 1), float(image.height() - 1)};
    auto bitmap = std::make_unique<BBitmap>(bounds, B_RGBA32);
    if (!bitmap->IsValid())
        return nullptr;
    auto* row = static_cast<uint8*>(bitmap->Bits());
    for (int y = 0; y < image.height(); y++, row += bitmap->BytesPerRow())
        std::memcpy(row, image.constScanLine(y), static_cast<std::size_t>(image.width()) * 4);
    return bitmap;
}

} // namespace

BBitmap* BTranslationUtils::GetBitmap(const char* name) {
    const std::filesystem::path path = kits::ContentFolder() / name;
    std::unique_ptr<BBitmap> bitmap = Read(path);
    if (!bitmap)
        return nullptr;
    std::filesystem::path dense = path;
    dense.replace_filename(path.stem().string() + "@2x" + path.extension().string());
    bitmap->SetDense(Read(dense));
    return bitmap.release();
}
