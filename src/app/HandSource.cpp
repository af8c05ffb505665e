// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/HandSource.h"

namespace vexa {

void HandSource::Send(uint8 kind, uchar first, uchar second) const {
    if (player)
        return player(static_cast<uint8>(kind | channel), first, second);
    switch (kind) {
    case 0x90:
        return producer.SprayNoteOn(channel, first, second);
    case 0x80:
        return producer.SprayNoteOff(channel, first, second);
    case 0xB0:
        return producer.SprayControlChange(channel, first, second);
    default:
        return producer.SprayPitchBend(channel, first, second);
    }
}

} // namespace vexa
