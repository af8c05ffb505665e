// SPDX-License-Identifier: GPL-3.0-or-later
// This knows the type of a file.
#pragma once

#include "kits/storage/Node.h"

/// A file's type has so many bytes at most, its terminating zero included.
constexpr int32 B_MIME_TYPE_LENGTH = 240;

/// Reads and sets the MIME type of a node, which must outlive it; it is the node's attribute
/// "mime_type", which Linux desktops read too. Any thread.
class BNodeInfo {
  public:
    explicit BNodeInfo(BNode* node) : node(node) {}

    /// B_BAD_VALUE for a type that is too long.
    status_t SetType(const char* type);
    /// `type` has room for B_MIME_TYPE_LENGTH bytes. B_ENTRY_NOT_FOUND if the node has no type.
    status_t GetType(char* type) const;

  private:
    BNode* node;
};
