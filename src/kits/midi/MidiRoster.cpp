// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/midi/MidiRoster.h"

#include "kits/midi/MidiSystems.h"

#include <string_view>

namespace {

/// Returns the name without the address at its end by which ALSA's sequencer tells sources apart,
/// as in "Keys:Keys MIDI 1 20:0": the address depends on the order in which devices were plugged
/// in.
std::string_view WithoutAddress(std::string_view name) {
    constexpr const char* kDigits = "0123456789";
    const auto colon = name.find_last_not_of(kDigits);
    if (colon == name.npos || colon + 1 == name.size() || name[colon] != ':')
        return name;
    const auto blank = name.find_last_not_of(kDigits, colon - 1);
    if (blank == name.npos || blank + 1 == colon || name[blank] != ' ')
        return name;
    return name.substr(0, blank);
}

} // namespace

void BMidiProducer::Release() {
    delete this;
}

status_t BMidiProducer::Connect(BMidiLocalConsumer* consumer) {
    return consumer ? consumer->ConnectSource(id, true) : B_BAD_VALUE;
}

status_t BMidiProducer::Disconnect(BMidiLocalConsumer* consumer) {
    return consumer ? consumer->ConnectSource(id, false) : B_BAD_VALUE;
}

BMidiRoster* BMidiRoster::MidiRoster(std::string* reason) {
    static BMidiRoster roster(kits::MidiSystems::Open());
    const std::string fault = roster.systems->Fault();
    if (reason)
        *reason = fault;
    return fault.empty() ? &roster : nullptr;
}

void BMidiRoster::StartWatching(const BMessenger& messenger) {
    systems->Watch(messenger);
}

BMidiProducer* BMidiRoster::NextProducer(int32* id) {
    const auto sources = systems->Sources();
    const auto next = sources.upper_bound(*id);
    if (next == sources.end())
        return nullptr;
    *id = next->first;
    return new BMidiProducer(next->second.name, next->first);
}

BMidiProducer* BMidiRoster::FindProducer(int32 id) {
    int32 before = id - 1;
    BMidiProducer* producer = NextProducer(&before);
    if (producer && producer->ID() != id) {
        producer->Release();
        return nullptr;
    }
    return producer;
}

BMidiProducer* BMidiRoster::FindProducer(const std::string& name) {
    const auto sources = systems->Sources();
    for (const auto& [number, source] : sources) {
        if (source.name == name)
            return new BMidiProducer(source.name, number);
    }
    for (const auto& [number, source] : sources) {
        if (WithoutAddress(source.name) == WithoutAddress(name))
            return new BMidiProducer(source.name, number);
    }
    return nullptr;
}
