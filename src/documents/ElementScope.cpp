// SPDX-License-Identifier: GPL-3.0-or-later
#include "documents/ElementScope.h"

#include "documents/NumberDoubt.h"
#include "kits/support/Quoted.h"
#include "xml/FragmentWalk.h"

#include <algorithm>

namespace vexa {

std::string Tag(std::string_view name) {
    return '<' + kits::Shown(name) + '>';
}

std::string Tags(std::span<const std::string_view> names) {
    std::string tags;
    for (std::size_t i = 0; i < names.size(); i++)
        tags += (i == 0 ? "" : i + 1 == names.size() ? " or " : ", ") + Tag(names[i]);
    return tags;
}

bool IsElement(const MXFragment& fragment) {
    return fragment.Type() == MX_ELEMENT || fragment.Type() == MX_EMPTY_ELEMENT;
}

const MXFragment* ChildNamed(const MXFragment& parent, std::string_view name) {
    for (const auto& child : parent.children) {
        if (IsElement(*child) && child->name == name)
            return child.get();
    }
    return nullptr;
}

void TellUnreadChildren(const MXFragment& parent, std::span<const std::string_view> known,
                        Remarks& remarks) {
    const std::string expected = "expected " + Tags(known) + " in " + Tag(parent.name) + ", found ";
    std::vector<const MXFragment*> firsts(known.size());
    for (const auto& child : parent.children) {
        const auto tell = [&](const std::string& text) { remarks.Add(child->TextLeft(), text); };
        if (child->Type() == MX_TEXT)
            tell(expected + "the text " + kits::Quoted(child->name));
        else if (child->Type() == MX_CDATA)
            tell(expected + "a CDATA section");
        if (!IsElement(*child))
            continue;
        const auto place = std::ranges::find(known, std::string_view(child->name));
        if (place == known.end()) {
            tell(expected + "an element " + Tag(child->name));
            continue;
        }
        const MXFragment*& first = firsts[static_cast<std::size_t>(place - known.begin())];
        // Most readers pass over an element that ends in "/>".
        const bool mayBeRead =
            first && first->Type() == MX_EMPTY_ELEMENT && child->Type() == MX_ELEMENT;
        if (first)
            tell("expected one element " + Tag(child->name) + " in " + Tag(parent.name) +
                 ", found another" + (mayBeRead ? "" : ", which is not read"));
        else if (child->attributes.CountItems() > 0)
            tell(Tag(child->name) + ": attributes are not read here");
        if (!first || mayBeRead)
            first = child.get();
    }
}

ElementScope::ElementScope(const MXFragment* scope, std::vector<std::string_view> searched,
                           Remarks& remarks)
    : scope(scope), names(std::move(searched)), found(names.size()), remarks(remarks) {
    if (!scope)
        return;
    std::size_t missing = names.size();
    WalkFragments(*scope, [&](const MXFragment& fragment) {
        if (fragment.Type() != MX_ELEMENT)
            return WalkStep::Past;
        const auto name = std::find(names.begin(), names.end(), std::string_view(fragment.name));
        if (name != names.end()) {
            const MXFragment*& first = found[static_cast<std::size_t>(name - names.begin())];
            if (!first) {
                first = &fragment;
                missing--;
            }
        }
        return missing > 0 ? WalkStep::Into : WalkStep::Stop;
    });
}

const MXFragment* ElementScope::Find(std::string_view name) const {
    const auto place = std::find(names.begin(), names.end(), name);
    return place == names.end() ? nullptr : found[static_cast<std::size_t>(place - names.begin())];
}

const MXFragment* ElementScope::Optional(std::string_view name) const {
    const MXFragment* element = Find(name);
    if (const MXFragment* empty = scope && !element ? ChildNamed(*scope, name) : nullptr)
        Add(*empty, Tag(name) + ": expected an element with an end tag; one that ends in \"/>\" "
                                "counts as missing");
    return element;
}

const MXFragment* ElementScope::Element(std::string_view name) const {
    const MXFragment* element = Optional(name);
    if (scope && !element && !ChildNamed(*scope, name))
        Add(*scope,
            "expected an element " + Tag(name) + " in " + Tag(scope->name) + ", found none");
    return element;
}

const MXFragment* ElementScope::ReadText(std::string_view name, std::string& field) const {
    const MXFragment* element = Element(name);
    if (!element)
        return nullptr;
    field = std::string_view(element->GetContainedText());
    WalkFragments(*element, [&](const MXFragment& fragment) {
        if (&fragment == element)
            return WalkStep::Into;
        const bool isElement = IsElement(fragment);
        if (isElement)
            Add(fragment, "expected a text in " + Tag(name) + ", found an element " +
                              Tag(fragment.name) + "; an end tag may be missing");
        else if (fragment.Type() == MX_CDATA)
            Add(fragment,
                "expected a text in " + Tag(name) + ", found a CDATA section, which is not read");
        return isElement ? WalkStep::Stop : WalkStep::Into;
    });
    return element;
}

void ElementScope::ReadNumber(std::string_view name, std::string& field, bool controller) const {
    if (const MXFragment* element = ReadText(name, field))
        AddDoubt(*element, NumberDoubt(field, controller));
}

void ElementScope::ReadNumber(std::string_view name, std::string& field,
                              std::string (*doubtOf)(const std::string&)) const {
    if (const MXFragment* element = ReadText(name, field))
        AddDoubt(*element, doubtOf(field));
}

void ElementScope::AddDoubt(const MXFragment& element, const std::string& doubt) const {
    if (!doubt.empty())
        Add(element, Tag(element.name) + ": " + doubt);
}

} // namespace vexa
