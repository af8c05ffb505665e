#include "synth/VoiceRenderer.h"

#include "synth/Envelope.h"
#include "synth/ParameterTable.h"
#include "synth/Realtime.h"

#include <algorithm>
#include <cmath>

namespace vexa {

/// The work space of one block. Positions and values of all the voices stand one voice after the
/// other, so that the plane function is called once.
struct VoiceRenderer::Block {
    static constexpr std::size_t kPoints = kVoiceSlots * kBlock + kSlack;

    alignas(64) std::array<float, kPoints> x, y, s;
    alignas(64) std::array<float, kRoom> sum;
};

namespace {

/// Of a voice, below full volume 1.
constexpr float kInaudible = 1e-7F;

/// Seconds in which the wheel, volumes and what is cut off get where they are wanted.
constexpr double kHandSeconds = 0.01;
constexpr double kFadeSeconds = 0.005;

/// Whether the output of a filter will stay as it is as long as its input stays `s`. Where all that
/// is still to come is inaudible, it is left out.
bool Settles(LowCutFilter& filter, float s) noexcept {
    const auto after = [s](float pole, float sum) {
        return static_cast<float>(double(pole) * sum + s);
    };
    if (after(filter.hpa, filter.hpsum0) == filter.hpsum0 &&
        after(filter.hpb, filter.hpsum1) == filter.hpsum1)
        return true;
    // Each sum tends to one value, and what it lacks decays.
    const float end0 = s / (1.0F - filter.hpa);
    const float end1 = s / (1.0F - filter.hpb);
    const float lacks =
        filter.hpgain * (std::abs(filter.hpsum0 - end0) + std::abs(filter.hpsum1 - end1));
    if (!(lacks < kInaudible))
        return false;
    filter.hpsum0 = end0;
    filter.hpsum1 = end1;
    filter.out = 0;
    return true;
}

} // namespace

VoiceRenderer::VoiceRenderer(const ControllerTable& controllers, Macros& macros,
                             const sound_param& parameters, const Playing& playing,
                             const ChannelVolumes& volumes, VoiceTable& voices)
    : inputs(macros),
      controllers(controllers),
      parameters(parameters),
      playing(playing),
      mix(playing, volumes),
      voices(voices) {}

std::size_t VoiceRenderer::SamplesIn(double seconds) const noexcept {
    return static_cast<std::size_t>(std::max(1.0, std::floor(seconds * sampleRate)));
}

void VoiceRenderer::SetGain(float next) noexcept {
    if (next >= 0 && next <= 1)
        gain = next;
}

void VoiceRenderer::Render(float* buffer, std::size_t count) noexcept {
    const RealtimeSection realtime;
    const FlushDenormals flush;
    const kits::Reader::Section reading(reader);
    const PlaneFunction& f = function.Get();
    Block block;
    for (std::size_t done = 0; done < count;) {
        const std::size_t cells = offset == 0 ? std::min(kMostCells, (count - done) / kBlock) : 0;
        if (cells > 1 && RenderCells(f, buffer + done, cells)) {
            done += cells * kBlock;
            continue;
        }
        const std::size_t n = std::min(kBlock - offset, count - done);
        RenderBlock(f, block, buffer + done, n);
        done += n;
        offset = (offset + n) % kBlock;
    }
    ShowProgress();
}

void VoiceRenderer::RenderBlock(const PlaneFunction& f, Block& block, float* buffer,
                                std::size_t count) noexcept {
    const int32 pressure = playing.Pressure();
    const VoiceMotion motion(parameters, controllers, pressure, 1.0 / sampleRate, offset, count);
    WakeIfChanged(motion, f);
    std::array<RunningVoice*, kVoiceSlots> sounding;
    std::size_t voiceCount = 0;
    inputs.Advance(sampleRate, Smooth(), offset, count);
    mix.Begin(SamplesIn(kHandSeconds), SamplesIn(kFadeSeconds), offset, count);
    float resting = 0;
    for (std::size_t i = 0; i < kVoiceSlots; i++) {
        RunningVoice& v = running[i];
        TakeUpChange(v, voices[i]);
        if (!v.sounds)
            continue;
        TakeUpHands(v, voices[i]);
        if (v.rests) {
            motion.Pass(v);
            v.age += count;
            resting += v.filter.out * mix.Volume(v);
            continue;
        }
        sounding[voiceCount++] = &v;
    }
    mix.Sort({sounding.data(), voiceCount});
    const float factor = gain * mix.Level();
    if (voiceCount == 0) {
        std::fill_n(buffer, count, resting * factor);
        return;
    }
    constexpr std::size_t kTogether = VoiceMotion::kTogether;
    for (std::size_t k = 0; k < voiceCount; k += kTogether)
        motion.Move({&sounding[k], std::min(kTogether, voiceCount - k)}, &block.x[k * count],
                    &block.y[k * count]);
    const PlaneSource& source = f.Source();
    source.Evaluate(block.x.data(), block.y.data(),
                    inputs.Fill(source, {sounding.data(), voiceCount}, controllers, pressure,
                                1.0 / sampleRate, count),
                    block.s.data(), voiceCount * count);
    block.sum.fill(resting);
    if (mix.Add({sounding.data(), voiceCount}, block.s.data(), block.sum.data()))
        bounded = true;
    for (std::size_t i = 0; i < count; i++)
        buffer[i] = block.sum[i] * factor;
    // Only where a cell ends, so that it does not depend on where blocks are cut; and of points
    // that stood at its beginning too, so that the last value is the one that stays.
    if (offset + count < kBlock || !source.Inputs().empty())
        return;
    for (std::size_t k = 0; k < voiceCount; k++) {
        RunningVoice& v = *sounding[k];
        const bool stood = v.stands;
        v.stands = motion.Stands(v);
        v.rests = stood && v.stands && Settles(v.filter, Heard(block.s[(k + 1) * count - 1]));
    }
}

/// A voice that rests goes on moving when the sound has become another.
void VoiceRenderer::WakeIfChanged(const VoiceMotion& motion, const PlaneFunction& f) noexcept {
    const VoiceMotion::Sound now = motion.Of();
    if (now == sound && &f.Source() == heard)
        return;
    sound = now;
    heard = &f.Source();
    for (RunningVoice& v : running)
        v.stands = v.rests = false;
}

/// Samples in which coefficients and controllers get where they are wanted; 0 where they step.
std::size_t VoiceRenderer::Smooth() const noexcept {
    const double seconds = playing.given ? double(playing.smooth) / 1000 : 0;
    return seconds > 0 ? SamplesIn(seconds) : 0;
}

/// What the player's hands do to a note that sounds. Other voices than the newest may have been
/// taken from the slot by now, and then this is about a note that is not taken up yet.
void VoiceRenderer::TakeUpHands(RunningVoice& v, const voice& slot) noexcept {
    v.glide.Aim(0, 0, offset);
    if (v.ends)
        return;
    v.bend.Aim(playing.given ? double(slot.bend) : 0.0, SamplesIn(kHandSeconds), offset);
    v.pressure = slot.pressure;
    // What a legato key has a say in does not jump.
    v.smooth = std::max(Smooth(), v.retuned ? SamplesIn(kHandSeconds) : 0);
    v.retuned = false;
}

/// Where somebody says how the sound is played, a voice that is cut off fades.
void VoiceRenderer::CutOff(RunningVoice& v) noexcept {
    if (!v.ends && playing.given && !v.rests) {
        v.ends = true;
        v.left = SamplesIn(kFadeSeconds);
    }
    v.sounds = v.sounds && v.ends && v.left > 0 && !v.rests;
    v.ends = v.sounds;
}

/// Begins the slot's new note, or its release or its new pitch, if there is one. A note that is
/// being rewritten at this moment is left for the next block; until then the voice goes on as it
/// is.
void VoiceRenderer::TakeUpChange(RunningVoice& v, const voice& slot) noexcept {
    const VoiceState::Seen seen = slot.state.Look();
    if (!seen.Active())
        return CutOff(v);
    if (seen.Changing() || (v.sounds && seen.Changes() == v.changes))
        return;

    // All is read before anything changes, in case that the slot is rewritten meanwhile.
    const uint32 notes = slot.notes, tunes = slot.tunes;
    const int32 channel = slot.channel;
    const float glide = slot.glide, glideFrom = slot.glidefrom, bend = slot.bend;
    const bool glidesOn = slot.glideson && v.sounds;
    const bool released = slot.released;
    const bool continues = slot.continues && v.sounds;
    const float vel = slot.vel, key = slot.key, freq = slot.freq;
    const float startcx = slot.startcx, startcy = slot.startcy, start = slot.start;
    const float hpa = slot.hpa, hpb = slot.hpb, hpgain = slot.hpgain;
    const float heldFor = slot.heldfor;
    std::array<float, 4> rellevel;
    std::copy(slot.rellevel.begin(), slot.rellevel.end(), rellevel.begin());
    if (slot.state.Look() != seen)
        return;

    const bool begins = !v.sounds || notes != v.notes;
    if (begins || tunes != v.tunes) {
        const double from = glidesOn ? v.freq * v.glide.Factor() : double(glideFrom);
        v.glide.Set(glide > 0 && from > 0 ? SemitonesBetween(freq, from) : 0);
        v.glide.Aim(0, SamplesIn(glide), offset);
        v.retuned = !begins;
        v.tunes = tunes;
        v.key = key;
        v.freq = freq;
        // Goes on with what the filter takes away, so that nothing jumps.
        const float d = v.filter.hpgain * (v.filter.hpsum0 - v.filter.hpsum1);
        v.filter = {hpa,         hpb, hpgain, d * (1.0F / (1.0F - hpa)), d * (1.0F / (1.0F - hpb)),
                    v.filter.out};
    }
    if (begins) {
        const float out = continues || v.ends ? v.filter.out * mix.Fade(v) : 0.0F;
        v.notes = notes;
        v.released = false;
        v.ends = false;
        v.fresh = true;
        v.vel = vel;
        v.channel = static_cast<std::size_t>(channel) & 15;
        v.bend.Set(playing.given ? double(bend) : 0.0);
        v.t = 0;
        v.age = 0;
        v.cx = startcx;
        v.cy = startcy;
        v.x.Restart();
        v.y.Restart();
        // Charged so that the first sample is what the slot's last one was, without a click.
        const float d = start - out;
        v.filter = {hpa, hpb, hpgain, d * (1.0F / (1.0F - hpa)), d * (1.0F / (1.0F - hpb)), out};
    }
    if (released && !v.released) {
        const auto places = EnvelopePlaces();
        for (std::size_t i = 0; i < places.size(); i++) {
            // A note-off that came while a buffer was rendered took the levels of an earlier time
            // than the voice has reached: taken again, so that nothing jumps.
            const Envelope& envelope = *(parameters.*places[i].target);
            const auto t = static_cast<float>(v.t);
            v.rellevel[i] = t == heldFor ? rellevel[i] : envelope.Value(t, false, 0);
        }
        v.t = 0;
        v.released = true;
    }
    for (EnvelopeTrack& envelope : v.envelopes)
        envelope.Restart();
    v.sounds = true;
    v.stands = v.rests = false;
    v.changes = seen.Changes();
}

void VoiceRenderer::ShowProgress() noexcept {
    for (int i = 0; i < kVoiceSlots; i++) {
        const RunningVoice& v = running[i];
        if (!v.sounds || v.ends)
            continue;
        voice& slot = voices[i];
        slot.t = v.t;
        slot.phasex = v.x.Phase();
        slot.phasey = v.y.Phase();
        slot.cx = v.cx;
        slot.cy = v.cy;
        slot.out = v.filter.out;
        slot.renderednotes = v.notes;
        slot.rendered = v.changes;
    }
}

} // namespace vexa
