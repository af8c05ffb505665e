// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/midi/MidiRoster.h"

#include "kits/midi/MidiSystems.h"

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
    for (const auto& [number, source] : systems->Sources()) {
        if (source.name == name)
            return new BMidiProducer(source.name, number);
    }
    return nullptr;
}
