// SPDX-License-Identifier: GPL-3.0-or-later
// Walks through a tree of fragments in document order, without recursion, at any depth.
#pragma once

#include "xml/MXFragment.h"

#include <vector>

namespace vexa {

/// How a walk continues after a fragment: with its children, past its children, or not at all.
enum class WalkStep { Into, Past, Stop };

/// Calls enter(fragment), which returns a WalkStep, for `top` and its descendants in document
/// order. For each fragment with WalkStep::Into it calls leave(fragment) after the children.
/// Neither is called again after WalkStep::Stop. `Fragment` is MXFragment or const MXFragment.
template<class Fragment, class Enter, class Leave>
void WalkFragments(Fragment& top, Enter enter, Leave leave) {
    struct Level {
        Fragment* fragment;
        MXFragment::Children::const_iterator next;
    };
    if (enter(top) != WalkStep::Into)
        return;
    std::vector<Level> levels{{&top, top.children.begin()}};
    while (!levels.empty()) {
        Level& level = levels.back();
        if (level.next == level.fragment->children.end()) {
            leave(*level.fragment);
            levels.pop_back();
            continue;
        }
        Fragment& child = **level.next++;
        const WalkStep step = enter(child);
        if (step == WalkStep::Stop)
            return;
        if (step == WalkStep::Into && !child.children.empty())
            levels.push_back({&child, child.children.begin()});
        else if (step == WalkStep::Into)
            leave(child);
    }
}

/// Does the same without a `leave`.
template<class Fragment, class Enter>
void WalkFragments(Fragment& top, Enter enter) {
    WalkFragments(top, enter, [](Fragment&) {});
}

} // namespace vexa
