// SPDX-License-Identifier: GPL-3.0-or-later
// The features are what a host offers to a plug-in and to its user interface.
#pragma once

#include <cstring>

#include <lv2/core/lv2.h>

namespace vexa::lv2 {

/// The data of the feature of that name; null where the host has none.
template<class Feature>
Feature* Find(const LV2_Feature* const* features, const char* uri) {
    for (; features && *features; features++) {
        if (std::strcmp((*features)->URI, uri) == 0)
            return static_cast<Feature*>((*features)->data);
    }
    return nullptr;
}

} // namespace vexa::lv2
