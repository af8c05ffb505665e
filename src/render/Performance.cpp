// SPDX-License-Identifier: GPL-3.0-or-later
#include "render/Performance.h"

#include <algorithm>
#include <cmath>

namespace vexa {

namespace {

/// The duration, in seconds, of the fade of notes that are still held at the end of the tail.
constexpr double kFadeSeconds = 0.1;
/// The duration, in seconds, of the fade of notes that the end would cut off with a click.
constexpr double kCutSeconds = 0.01;
/// The last sample of a voice that counts as silent, which is -80 dB.
constexpr float kFaint = 1e-4F;
/// The same for the end of a note, which is less than the last bit of a file of 24 bits. A tone is
/// hardly ever so close to 0, wherever in its period it is looked at.
constexpr float kEnded = 1e-8F;

} // namespace

Performance::Performance(Engine& instrument, const MidiFile& file, double rate, double tail,
                         int oversampling)
    : instrument(instrument),
      file(file),
      rate(rate),
      length(SampleOf(file.duration + tail)),
      fadeStart(SampleOf(file.duration + std::max(tail - kFadeSeconds, 0.0))),
      cutStart(std::max(length - SampleOf(kCutSeconds), int64(0))) {
    instrument.renderer.SetSampleRate(rate, oversampling);
}

int64 Performance::SampleOf(double seconds) const {
    return std::llround(seconds * rate);
}

std::size_t Performance::Render(float* left, float* right, std::size_t count) {
    const int64 end = std::min(length, position + static_cast<int64>(count));
    const int64 begin = position;
    while (true) {
        while (nextEvent < file.events.size() &&
               SampleOf(file.events[nextEvent].seconds) <= position)
            Play(file.events[nextEvent++]);
        if (position == fadeStart)
            fadedNotes = HeldNotes();
        if (position == cutStart)
            isCut = isCut || Sounds();
        if (position == end)
            return static_cast<std::size_t>(end - begin);
        int64 next = end;
        if (nextEvent < file.events.size())
            next = std::min(next, SampleOf(file.events[nextEvent].seconds));
        for (const int64 mark : {fadeStart, cutStart}) {
            if (position < mark)
                next = std::min(next, mark);
        }
        const int64 done = position - begin;
        float* const ears[] = {left + done, right ? right + done : nullptr};
        instrument.renderer.Render(ears[0], ears[1], static_cast<std::size_t>(next - position));
        for (float* const ear : ears)
            FadeOut(ear, position, next);
        position = next;
    }
}

/// Returns the number of notes that a key or a pedal holds and that are heard. A note that has just
/// begun has no sample yet, and is going to be heard.
std::size_t Performance::HeldNotes() const {
    return static_cast<std::size_t>(std::ranges::count_if(instrument.voices, [](const voice& slot) {
        const VoiceState::Seen seen = slot.state.Look();
        const bool isHeard = Seconds(slot, seen) == 0 || std::abs(slot.out) > kFaint;
        return seen.Active() && !slot.released && isHeard;
    }));
}

/// Returns true if any note has not ended.
bool Performance::Sounds() const {
    return std::ranges::any_of(instrument.voices, [](const voice& slot) {
        return !IsOver(slot, slot.state.Look()) && std::abs(slot.out) > kEnded;
    });
}

/// Fades those of an ear's samples from `first` to `next` that lie in the fade; null is no ear.
void Performance::FadeOut(float* samples, int64 first, int64 next) const {
    const int64 start = fadedNotes > 0 ? std::min(fadeStart, cutStart) : isCut ? cutStart : length;
    const auto duration = static_cast<float>(length - start);
    for (int64 i = std::max(first, start); samples && i < next; i++)
        samples[i - first] *= static_cast<float>(length - i) / duration;
}

void Performance::Play(const MidiEvent& event) {
    VexaMidiConsumer& consumer = instrument.consumer;
    if (watcher)
        watcher->Came(event.ForConsumer());
    kits::Call(event.ForConsumer(), consumer);
    if (event.kind != MidiEvent::Kind::NoteOn)
        return;
    isCut = isCut || position >= cutStart;
    notes += consumer.Accepts(event.channel) ? 1 : 0;
    mostVoices = std::max(mostVoices, consumer.CountVox());
}

} // namespace vexa
