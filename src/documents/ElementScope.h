// Looking up elements by name below an element of a document.
#pragma once

#include "xml/MXFragment.h"

#include <string>
#include <string_view>
#include <vector>

namespace vexa {

using Warnings = std::vector<std::string>;

/// The first element of each of some names in an element's subtree, in document order and the
/// element itself included. All are found in one walk, so that looking up costs no more than the
/// document is long, whatever is missing in it.
class ElementScope {
  public:
    /// A null `scope` is an element that is missing: nothing is found in it, and nothing more is
    /// said about it. `scope` and `warnings` must outlive this.
    ElementScope(const MXFragment* scope, std::vector<std::string_view> names, Warnings& warnings);

    /// The element, or null; `name` is one of the names.
    const MXFragment* Find(std::string_view name) const;
    /// The same with a warning if it is missing.
    const MXFragment* Element(std::string_view name) const;
    /// Sets the field to the element's text; a missing element leaves it as it is, with a warning.
    void ReadText(std::string_view name, std::string& field) const;

  private:
    const MXFragment* scope;
    std::vector<std::string_view> names;
    std::vector<const MXFragment*> found;
    Warnings& warnings;
};

} // namespace vexa
