// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/support/Message.h"

#include <cstring>

namespace {

std::string Bytes(const void* data, std::size_t size) {
    return {static_cast<const char*>(data), size};
}

} // namespace

bool BMessage::HasData(std::string_view name, type_code type, int32 index) const {
    const void* data = nullptr;
    std::size_t size = 0;
    return FindData(name, type, index, &data, &size) == B_OK;
}

status_t BMessage::AddData(std::string_view name, type_code type, const void* data,
                           std::size_t size) {
    Field& field = fields.try_emplace(std::string(name), Field{type, {}}).first->second;
    if (field.type != type)
        return B_BAD_TYPE;
    field.items.push_back(Bytes(data, size));
    return B_OK;
}

status_t BMessage::ReplaceData(std::string_view name, type_code type, int32 index, const void* data,
                               std::size_t size) {
    const void* old = nullptr;
    std::size_t length = 0;
    if (const status_t status = FindData(name, type, index, &old, &length); status != B_OK)
        return status;
    fields.find(name)->second.items[static_cast<std::size_t>(index)] = Bytes(data, size);
    return B_OK;
}

status_t BMessage::FindData(std::string_view name, type_code type, int32 index, const void** data,
                            std::size_t* size) const {
    const auto field = fields.find(name);
    if (field == fields.end())
        return B_NAME_NOT_FOUND;
    if (field->second.type != type)
        return B_BAD_TYPE;
    const std::vector<std::string>& items = field->second.items;
    if (index < 0 || static_cast<std::size_t>(index) >= items.size())
        return B_BAD_INDEX;
    const std::string& item = items[static_cast<std::size_t>(index)];
    *data = item.data();
    *size = item.size();
    return B_OK;
}

status_t BMessage::AddInt32(std::string_view name, int32 value) {
    return AddData(name, B_INT32_TYPE, &value, sizeof value);
}

status_t BMessage::FindInt32(std::string_view name, int32* value) const {
    const void* data = nullptr;
    std::size_t size = 0;
    const status_t status = FindData(name, B_INT32_TYPE, 0, &data, &size);
    if (status == B_OK && size == sizeof *value)
        std::memcpy(value, data, size);
    return status;
}

status_t BMessage::AddString(std::string_view name, std::string_view text) {
    return AddData(name, B_STRING_TYPE, text.data(), text.size());
}

status_t BMessage::FindString(std::string_view name, std::string* text) const {
    const void* data = nullptr;
    std::size_t size = 0;
    const status_t status = FindData(name, B_STRING_TYPE, 0, &data, &size);
    if (status == B_OK)
        *text = Bytes(data, size);
    return status;
}

// Neither part of a ref can contain a zero byte, so a zero separates them.

status_t BMessage::AddRef(std::string_view name, const entry_ref* ref) {
    const std::string both = ref->directory + '\0' + ref->name;
    return AddData(name, B_REF_TYPE, both.data(), both.size());
}

status_t BMessage::FindRef(std::string_view name, int32 index, entry_ref* ref) const {
    const void* data = nullptr;
    std::size_t size = 0;
    if (const status_t status = FindData(name, B_REF_TYPE, index, &data, &size); status != B_OK)
        return status;
    const std::string both = Bytes(data, size);
    const std::size_t end = both.find('\0');
    if (end == std::string::npos)
        return B_BAD_VALUE;
    *ref = {both.substr(0, end), both.substr(end + 1)};
    return B_OK;
}
