// SPDX-License-Identifier: GPL-3.0-or-later
// Looking up elements by name below an element of a document.
#pragma once

#include "xml/MXFragment.h"
#include "xml/Remarks.h"

#include <string>
#include <string_view>
#include <vector>

namespace vexa {

/// Returns "<NAME>", fit for a message.
std::string Tag(std::string_view name);

/// Returns the first child that is an element of that name, be it an empty one; null if there is
/// none.
const MXFragment* ChildNamed(const MXFragment& parent, std::string_view name);

/// Finds the first element of each of some names in an element's subtree, in document order and the
/// element itself included. All are found in one walk, so that looking up costs no more than the
/// document is long, whatever is missing in it. Any thread, one at a time.
class ElementScope {
  public:
    /// Walks through the subtree of `scope`. A null `scope` is an element that is missing: nothing
    /// is found in it, and nothing more is said about it. `scope` and `remarks` must outlive this.
    ElementScope(const MXFragment* scope, std::vector<std::string_view> names, Remarks& remarks);

    /// Returns the element, or null; `name` is one of the names.
    const MXFragment* Find(std::string_view name) const;
    /// Returns the same, and adds a remark if it is missing.
    const MXFragment* Element(std::string_view name) const;
    /// Sets the field to the element's text, and says where the element holds more than that. A
    /// missing element leaves the field as it is, with a remark. Returns the element.
    const MXFragment* ReadText(std::string_view name, std::string& field) const;
    /// Does the same for a field that holds a number, or that of a controller, and says where the
    /// text is none, or not as a whole. The text is taken as it stands.
    void ReadNumber(std::string_view name, std::string& field, bool controller = false) const;

  private:
    void Add(const MXFragment& place, std::string text) const {
        remarks.Add(place.TextLeft(), std::move(text));
    }

    const MXFragment* scope;
    std::vector<std::string_view> names;
    std::vector<const MXFragment*> found;
    Remarks& remarks;
};

} // namespace vexa
