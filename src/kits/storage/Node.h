// SPDX-License-Identifier: GPL-3.0-or-later
// A file or folder as a holder of attributes.
#pragma once

#include "kits/support/Descriptor.h"
#include "kits/support/String.h"
#include "kits/support/SupportDefs.h"

/// An existing file or folder. Attributes are the file system's extended attributes of the user's
/// name space: the attribute "a" is "user.a". Any thread.
class BNode {
  public:
    explicit BNode(const char* path);
    BNode(const BNode&) = delete;
    BNode& operator=(const BNode&) = delete;

    /// Returns B_OK, or the reason why the file could not be opened.
    status_t InitCheck() const { return status; }

    status_t WriteAttrString(const char* name, const BString* data);
    /// Returns B_ENTRY_NOT_FOUND if there is no such attribute.
    status_t ReadAttrString(const char* name, BString* result) const;

  private:
    kits::Descriptor descriptor;
    status_t status;
};
