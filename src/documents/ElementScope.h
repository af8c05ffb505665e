// SPDX-License-Identifier: GPL-3.0-or-later
// Looks up elements by name in the subtree of an element of a document.
#pragma once

#include "xml/MXFragment.h"
#include "xml/Remarks.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vexa {

/// Returns "<NAME>", made fit for a message by kits::Shown.
std::string Tag(std::string_view name);
/// Returns the tags of the names, "<a>, <b> or <c>".
std::string Tags(std::span<const std::string_view> names);

/// Returns true for an MX_ELEMENT and an MX_EMPTY_ELEMENT.
bool IsElement(const MXFragment& fragment);

/// Returns the first child element with that name, which may be an MX_EMPTY_ELEMENT; null if there
/// is none.
const MXFragment* ChildNamed(const MXFragment& parent, std::string_view name);

/// Adds a remark for each child that is not read: an element whose name is not in `known`, another
/// element of a known name, a text between the elements; and for attributes of the known elements.
/// `known` are all the names that a reader of the parent looks for.
void TellUnreadChildren(const MXFragment& parent, std::span<const std::string_view> known,
                        Remarks& remarks);

/// Finds the first MX_ELEMENT with each of several names in the subtree of an element, itself
/// included, in document order. One walk finds all of them, so the cost is at most proportional to
/// the subtree, even if elements are missing. Any thread, one at a time.
class ElementScope {
  public:
    /// Walks through the subtree of `scope`. A null `scope` means that the element itself is
    /// missing: nothing is found, and no further remarks are added. `scope` and `remarks` must
    /// outlive this object.
    ElementScope(const MXFragment* scope, std::vector<std::string_view> names, Remarks& remarks);

    /// Returns the element, or null if it is missing; `name` is one of the constructor's names.
    const MXFragment* Find(std::string_view name) const;
    /// Does the same, and adds a remark if the scope has only an empty element of that name, which
    /// ends in "/>" and counts as missing.
    const MXFragment* Optional(std::string_view name) const;
    /// Does the same, and adds a remark also if the element is missing.
    const MXFragment* Element(std::string_view name) const;
    /// Sets the field to the element's text, and adds a remark if the element also contains
    /// elements or CDATA sections. A missing element adds a remark and leaves the field unchanged.
    /// Returns the element, or null.
    const MXFragment* ReadText(std::string_view name, std::string& field) const;
    /// Does the same for a field with a float, or with a controller number if `controller` is true,
    /// and adds a remark if NumberDoubt finds the text odd. The field gets the text unchanged.
    void ReadNumber(std::string_view name, std::string& field, bool controller = false) const;
    /// Does the same with another judge of the text, which returns "" if the text is not odd.
    void ReadNumber(std::string_view name, std::string& field,
                    std::string (*doubtOf)(const std::string&)) const;

  private:
    void Add(const MXFragment& place, std::string text) const {
        remarks.Add(place.TextLeft(), std::move(text));
    }
    void AddDoubt(const MXFragment& element, const std::string& doubt) const;

    const MXFragment* scope;
    std::vector<std::string_view> names;
    std::vector<const MXFragment*> found;
    Remarks& remarks;
};

} // namespace vexa
