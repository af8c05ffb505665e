// SPDX-License-Identifier: GPL-3.0-or-later
// Going through a tree in document order, at any depth, without recursion.
#pragma once

#include "xml/MXFragment.h"

#include <vector>

namespace vexa {

/// Tells how to go on from a fragment: to its children, to what comes after them, or not at all.
enum class WalkStep { Into, Past, Stop };

/// Calls enter(fragment), which returns a WalkStep, for `top` and then for what is below it in
/// document order, and leave(fragment) after the children of each fragment that was gone into.
/// `Fragment` is MXFragment or const MXFragment.
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

/// Does the same for those who need not know when a fragment is left.
template<class Fragment, class Enter>
void WalkFragments(Fragment& top, Enter enter) {
    WalkFragments(top, enter, [](Fragment&) {});
}

} // namespace vexa
