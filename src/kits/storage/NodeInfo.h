// SPDX-License-Identifier: GPL-3.0-or-later
// The MIME type of a file.
#pragma once

#include "kits/storage/Node.h"

/// The maximum size of a file's type in bytes, including its terminating zero.
constexpr int32 B_MIME_TYPE_LENGTH = 240;

/// Reads and sets the MIME type of a node, which must outlive this object. The type is the node's
/// attribute "mime_type", which Linux desktops read too. Any thread.
class BNodeInfo {
  public:
    explicit BNodeInfo(BNode* node) : node(node) {}

    /// Returns B_BAD_VALUE for a type that is too long.
    status_t SetType(const char* type);
    /// Writes the type into `type`, which has room for B_MIME_TYPE_LENGTH bytes. Returns
    /// B_ENTRY_NOT_FOUND if the node has no type.
    status_t GetType(char* type) const;

  private:
    BNode* node;
};
