// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/pictures/PictureFile.h"

#include "kits/pictures/Decoders.h"
#include "kits/pictures/Orientation.h"
#include "kits/storage/ReadFile.h"

#include <new>

namespace kits {

namespace {

/// The signature of PNG (ISO/IEC 15948, 5.2).
constexpr std::string_view kPngBeginning = "\x89PNG\r\n\x1A\n";
/// The marker SOI and the first byte of the next marker (ITU-T T.81, B.1.1).
constexpr std::string_view kJpegBeginning = "\xFF\xD8\xFF";

} // namespace

bool IsPicture(std::string_view beginning) {
    return beginning.starts_with(kPngBeginning) || beginning.starts_with(kJpegBeginning);
}

Result<BrightnessMap> DecodePicture(std::string_view bytes) {
    if (!IsPicture(bytes))
        return Error{"it is neither PNG nor JPEG"};
    Result<Decoded> decoded =
        bytes.starts_with(kPngBeginning) ? DecodePng(bytes) : DecodeJpeg(bytes);
    if (!decoded)
        return decoded.Fault();
    return Upright(std::move(decoded->map), decoded->orientation);
}

Result<BrightnessMap> ReadPicture(const std::filesystem::path& path) try {
    const Result<std::string> bytes = ReadFile(path, kMostPictureBytes);
    if (!bytes)
        return bytes.Fault();
    Result<BrightnessMap> map = DecodePicture(*bytes);
    if (!map)
        return Error{"could not read " + path.string() + ": " + map.Fault().text};
    return map;
} catch (const std::bad_alloc&) {
    return Error{"could not read " + path.string() + ": there is not enough memory"};
}

} // namespace kits
