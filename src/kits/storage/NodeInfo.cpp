// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/storage/NodeInfo.h"

#include <cstring>

namespace {

constexpr const char* kTypeAttribute = "mime_type";

} // namespace

status_t BNodeInfo::SetType(const char* type) {
    const BString value(type);
    if (value.Length() >= B_MIME_TYPE_LENGTH)
        return B_BAD_VALUE;
    return node->WriteAttrString(kTypeAttribute, &value);
}

status_t BNodeInfo::GetType(char* type) const {
    BString value;
    const status_t status = node->ReadAttrString(kTypeAttribute, &value);
    if (status != B_OK)
        return status;
    if (value.Length() >= B_MIME_TYPE_LENGTH)
        return B_BAD_VALUE;
    std::strcpy(type, value.String());
    return B_OK;
}
