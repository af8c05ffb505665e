// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/midi/MidiLocalProducer.h"

#include "kits/midi/backends/LocalMidi.h"

#include <span>
#include <utility>

BMidiLocalProducer::BMidiLocalProducer(std::string name) : BMidiEndpoint(std::move(name)) {}

BMidiLocalProducer::~BMidiLocalProducer() {
    Unregister();
}

status_t BMidiLocalProducer::Register() {
    kits::LocalSources::Instance().Add(Name());
    return B_OK;
}

status_t BMidiLocalProducer::RegisterAsOwn() {
    kits::LocalSources::Instance().AddOwn(Name());
    return B_OK;
}

status_t BMidiLocalProducer::Unregister() {
    kits::LocalSources::Instance().Remove(Name());
    return B_OK;
}

void BMidiLocalProducer::SprayNoteOn(uchar channel, uchar note, uchar velocity) const {
    Spray({uint8(0x90 | channel), note, velocity});
}

void BMidiLocalProducer::SprayNoteOff(uchar channel, uchar note, uchar velocity) const {
    Spray({uint8(0x80 | channel), note, velocity});
}

void BMidiLocalProducer::SprayControlChange(uchar channel, uchar controller, uchar value) const {
    Spray({uint8(0xB0 | channel), controller, value});
}

void BMidiLocalProducer::SprayPitchBend(uchar channel, uchar lsb, uchar msb) const {
    Spray({uint8(0xE0 | channel), lsb, msb});
}

void BMidiLocalProducer::Spray(std::initializer_list<uint8> bytes) const {
    kits::LocalSources::Instance().Put(Name(), {bytes.begin(), bytes.size()});
}
