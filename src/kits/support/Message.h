// SPDX-License-Identifier: GPL-3.0-or-later
// A message: a code and named fields of typed data.
#pragma once

#include "kits/support/EntryRef.h"
#include "kits/support/SupportDefs.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

constexpr type_code B_RAW_TYPE = FourCC("RAWT");
constexpr type_code B_INT32_TYPE = FourCC("LONG");
constexpr type_code B_REF_TYPE = FourCC("RREF");
constexpr type_code B_STRING_TYPE = FourCC("CSTR");

/// A message is a value that can be copied. Each field holds one or more items of one type, in the
/// order in which they were added. Operations return B_OK, B_NAME_NOT_FOUND (no such field),
/// B_BAD_INDEX (no such item) or B_BAD_TYPE (another type).
class BMessage {
  public:
    explicit BMessage(uint32 what = 0) : what(what) {}

    /// The code that says what the message is about.
    uint32 what;

    bool HasData(std::string_view name, type_code type, int32 index = 0) const;
    status_t AddData(std::string_view name, type_code type, const void* data, std::size_t size);
    status_t ReplaceData(std::string_view name, type_code type, int32 index, const void* data,
                         std::size_t size);
    /// The item belongs to the message and is valid until the message changes.
    status_t FindData(std::string_view name, type_code type, int32 index, const void** data,
                      std::size_t* size) const;

    // The same operations for the types in use. A text is stored with its length, so it may contain
    // any byte.

    status_t AddInt32(std::string_view name, int32 value);
    status_t FindInt32(std::string_view name, int32* value) const;
    status_t AddString(std::string_view name, std::string_view text);
    status_t FindString(std::string_view name, std::string* text) const;
    status_t AddRef(std::string_view name, const entry_ref* ref);
    status_t FindRef(std::string_view name, entry_ref* ref) const { return FindRef(name, 0, ref); }
    status_t FindRef(std::string_view name, int32 index, entry_ref* ref) const;

  private:
    struct Field {
        type_code type;
        std::vector<std::string> items;
    };
    std::map<std::string, Field, std::less<>> fields;
};
