// SPDX-License-Identifier: GPL-3.0-or-later
#include "render/Performance.h"

#include <algorithm>
#include <cmath>

namespace vexa {

Performance::Performance(Engine& instrument, const MidiFile& file, double rate, double tail,
                         int oversampling)
    : instrument(instrument), file(file), rate(rate), length(SampleOf(file.duration + tail)) {
    instrument.renderer.SetSampleRate(rate, oversampling);
}

int64 Performance::SampleOf(double seconds) const {
    return std::llround(seconds * rate);
}

std::size_t Performance::Render(float* left, float* right, std::size_t count) {
    const int64 end = std::min(length, position + static_cast<int64>(count));
    const int64 begin = position;
    while (position < end) {
        while (nextEvent < file.events.size() &&
               SampleOf(file.events[nextEvent].seconds) <= position)
            Play(file.events[nextEvent++]);
        int64 next = end;
        if (nextEvent < file.events.size())
            next = std::min(next, SampleOf(file.events[nextEvent].seconds));
        const int64 done = position - begin;
        instrument.renderer.Render(left + done, right ? right + done : nullptr,
                                   static_cast<std::size_t>(next - position));
        position = next;
    }
    return static_cast<std::size_t>(end - begin);
}

void Performance::Play(const MidiEvent& event) {
    VexaMidiConsumer& consumer = instrument.consumer;
    if (watcher)
        watcher->Came(event.ForConsumer());
    kits::Call(event.ForConsumer(), consumer);
    if (event.kind == MidiEvent::Kind::NoteOn)
        mostVoices = std::max(mostVoices, consumer.CountVox());
}

} // namespace vexa
