// SPDX-License-Identifier: GPL-3.0-or-later
// The features that a host offers to a plug-in and to its user interface.
#pragma once

#include <cstring>

#include <lv2/core/lv2.h>

namespace vexa::lv2 {

/// Returns the data of the feature with that URI; null if the host does not offer it.
template<class Feature>
Feature* Find(const LV2_Feature* const* features, const char* uri) {
    for (; features && *features; features++) {
        if (std::strcmp((*features)->URI, uri) == 0)
            return static_cast<Feature*>((*features)->data);
    }
    return nullptr;
}

} // namespace vexa::lv2
