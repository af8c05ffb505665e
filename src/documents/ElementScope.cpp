#include "documents/ElementScope.h"

#include "kits/support/Quoted.h"
#include "xml/FragmentWalk.h"

#include <algorithm>

namespace vexa {

ElementScope::ElementScope(const MXFragment* scope, std::vector<std::string_view> searched,
                           Warnings& warnings)
    : scope(scope), names(std::move(searched)), found(names.size()), warnings(warnings) {
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

const MXFragment* ElementScope::Element(std::string_view name) const {
    const MXFragment* element = Find(name);
    if (scope && !element)
        warnings.push_back("no element " + kits::Quoted(name) + " in " + kits::Quoted(scope->name) +
                           "; what it sets stays as it was");
    return element;
}

void ElementScope::ReadText(std::string_view name, std::string& field) const {
    if (const MXFragment* element = Element(name))
        field = std::string_view(element->GetContainedText());
}

} // namespace vexa
