// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/storage/Node.h"

#include <string>

#include <fcntl.h>
#include <sys/xattr.h>

namespace {

std::string UserAttribute(const char* name) {
    return std::string("user.") + name;
}

} // namespace

BNode::BNode(const char* path)
    // O_NONBLOCK: opening a pipe does not wait for its writer.
    : descriptor(::open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK)),
      status(descriptor ? B_OK : -errno) {}

status_t BNode::WriteAttrString(const char* name, const BString* data) {
    if (status != B_OK)
        return status;
    const auto size = static_cast<std::size_t>(data->Length());
    const int result =
        ::fsetxattr(descriptor.Number(), UserAttribute(name).c_str(), data->String(), size, 0);
    return result == 0 ? B_OK : -errno;
}

status_t BNode::ReadAttrString(const char* name, BString* result) const {
    if (status != B_OK)
        return status;
    // The longest value that Linux allows.
    std::string value(64 * 1024, '\0');
    const ssize_t size =
        ::fgetxattr(descriptor.Number(), UserAttribute(name).c_str(), value.data(), value.size());
    if (size < 0)
        return errno == ENODATA ? B_ENTRY_NOT_FOUND : -errno;
    value.resize(static_cast<std::size_t>(size));
    *result = BString(std::string_view(value));
    return B_OK;
}
