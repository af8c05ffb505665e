// SPDX-License-Identifier: GPL-3.0-or-later
#include "midi/MpeZones.h"

#include <algorithm>

namespace vexa {

namespace {

constexpr uchar kLower = 0, kUpper = 15;
constexpr int kMostMembers = 15;
/// The largest number of members of both zones together: each zone also needs its master.
constexpr int kMostShared = 14;

} // namespace

bool MpeZones::Configure(uchar master, int members) {
    if ((master != kLower && master != kUpper) || members < 0 || members > kMostMembers)
        return false;
    int& zone = master == kLower ? lower : upper;
    int& other = master == kLower ? upper : lower;
    zone = members;
    if (zone > 0)
        other = std::clamp(other, 0, std::max(0, kMostShared - zone));
    return true;
}

std::optional<uchar> MpeZones::MasterOf(uchar channel) const {
    if (channel > kLower && channel <= kLower + lower)
        return kLower;
    if (channel < kUpper && channel >= kUpper - upper)
        return kUpper;
    return std::nullopt;
}

bool MpeZones::IsMaster(uchar channel) const {
    return (channel == kLower && lower > 0) || (channel == kUpper && upper > 0);
}

} // namespace vexa
