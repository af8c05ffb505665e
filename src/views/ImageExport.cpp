// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/ImageExport.h"

#include "kits/interface/Alert.h"
#include "kits/storage/File.h"
#include "kits/translation/BitmapStream.h"
#include "kits/translation/TranslatorRoster.h"

#include <cstring>
#include <new>

namespace vexa {

namespace {

/// The largest size of a picture, which is the largest coordinate of the toolkit's painting.
constexpr int32 kLargestSize = 32767;

void Tell(const char* text, status_t status) {
    auto* alert = new BAlert("", text, "OK");
    // These two are no error codes of the system, so strerror has no text for them.
    if (status != B_ERROR && status != B_BAD_TYPE)
        alert->SetDetails(std::strerror(-status));
    alert->Go();
}

} // namespace

std::optional<ImageRequest> ReadImageRequest(const BMessage& message) {
    ImageRequest request;
    const void* id = nullptr;
    std::size_t length = 0;
    int32 format = 0;
    if (message.FindData("translator_id", B_RAW_TYPE, 0, &id, &length) != B_OK ||
        length < sizeof request.translator ||
        message.FindInt32("translator_format", &format) != B_OK ||
        message.FindInt32("size", &request.size) != B_OK ||
        message.FindRef("directory", &request.directory) != B_OK ||
        message.FindString("name", &request.name) != B_OK)
        return std::nullopt;
    std::memcpy(&request.translator, id, sizeof request.translator);
    request.format = static_cast<uint32>(format);
    return request;
}

void ExportImage(const ImageRequest& request,
                 const std::function<std::unique_ptr<BBitmap>(int32 size)>& makeBitmap) {
    const BDirectory directory(&request.directory);
    BFile file(&directory, request.name, B_WRITE_ONLY | B_CREATE_FILE | B_ERASE_FILE);
    if (file.InitCheck() != B_OK)
        return Tell("Could not create file.", file.InitCheck());
    status_t status = B_NO_MEMORY;
    try {
        std::unique_ptr<BBitmap> bitmap;
        if (request.size >= 0 && request.size <= kLargestSize)
            bitmap = makeBitmap(request.size);
        BBitmapStream stream(bitmap.release());
        status = BTranslatorRoster::Default()->Translate(request.translator, &stream, nullptr,
                                                         &file, request.format);
        if (status == B_OK)
            status = file.Commit();
    } catch (const std::bad_alloc&) {
        // The picture does not fit into memory; `status` is still B_NO_MEMORY.
    }
    if (status != B_OK)
        Tell("Could not save the image.", status);
}

} // namespace vexa
