// SPDX-License-Identifier: GPL-3.0-or-later
#include "midi/ProgramSelector.h"

#include "kits/midi/ControllerNumbers.h"

namespace vexa {

void ProgramSelector::Came(const kits::MidiEvent& event) {
    Bank& bank = banks[event.channel & 15];
    if (event.hook == kits::MidiEvent::Hook::ControlChange && event.data1 == kits::kBankMsb)
        bank.msb = event.data2;
    if (event.hook == kits::MidiEvent::Hook::ControlChange && event.data1 == kits::kBankLsb)
        bank.lsb = event.data2;
    if (event.hook != kits::MidiEvent::Hook::ProgramChange)
        return;
    if (const int32 channel = consumer.Channel(); channel >= 0 && channel != event.channel)
        return;
    // Only the last of many in a row counts, so one message is enough.
    if (chosen.exchange((bank.msb * 128 + bank.lsb) * 128 + event.data1) == kNone)
        target.SendMessage(BMessage(code));
}

std::optional<int32> ProgramSelector::Take() {
    const int32 program = chosen.exchange(kNone);
    return program == kNone ? std::nullopt : std::optional(program);
}

} // namespace vexa
