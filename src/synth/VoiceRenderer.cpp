// SPDX-License-Identifier: GPL-3.0-or-later
#include "synth/VoiceRenderer.h"

#include "kits/maths/Functions.h"
#include "kits/support/RealtimeMark.h"
#include "synth/Envelope.h"
#include "synth/NoteInputs.h"
#include "synth/ParameterTable.h"
#include "synth/Realtime.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace vexa {

/// The work space of one block. The positions and values of the voices follow one another, so that
/// one call of the plane function computes all of them.
struct VoiceRenderer::Block {
    static constexpr std::size_t kPoints = kVoiceSlots * kBlock + kSlack;

    /// The points and values of one ear, and the sum of its voices.
    struct Ear {
        alignas(64) std::array<float, kPoints> x, y, s;
        alignas(64) std::array<float, kRoom> sum;
    };
    Ear left, right;
};

namespace {

/// The rate for which a low-cut filter's constant is computed, whatever the rate of the device is.
constexpr double kFilterRate = 44100;

/// A voice below this level is inaudible. Full volume is 1.
constexpr float kInaudible = 1e-7F;

/// The value of f may change although a note's point stands, if it uses the time, and a point may
/// move for ever where f does not change. A change of less than `kStill` per second is too slow to
/// be heard, and its change within a cell, 0.0015 at 44100 samples per second, too small. A
/// released note that changes no faster for `kStillSeconds` counts as ended.
constexpr double kStill = 1;
constexpr double kStillSeconds = 10;

/// The durations, in seconds, of the ramps of pitch bend, volumes and pan, and of the fade of a
/// voice that is cut off.
constexpr double kHandSeconds = 0.01;
constexpr double kFadeSeconds = 0.005;

/// Returns an upper bound of the filter's output from now on if its input stays at `s`. Each
/// accumulator converges to a limit, and its distance from that limit decays.
VEXA_REALTIME float Lacks(const LowCutFilter& filter, float s) noexcept {
    const float end0 = s / (1.0F - filter.hpa);
    const float end1 = s / (1.0F - filter.hpb);
    return filter.hpgain * (std::abs(filter.hpsum0 - end0) + std::abs(filter.hpsum1 - end1));
}

/// Returns true if the filter's output stays constant as long as its input stays at `s`. If all
/// further change is inaudible, the filter is set to its limits, and true is returned too.
VEXA_REALTIME bool Settles(LowCutFilter& filter, float s) noexcept {
    const auto after = [s](float pole, float sum) {
        return static_cast<float>(double(pole) * sum + s);
    };
    if (after(filter.hpa, filter.hpsum0) == filter.hpsum0 &&
        after(filter.hpb, filter.hpsum1) == filter.hpsum1)
        return true;
    if (!(Lacks(filter, s) < kInaudible))
        return false;
    filter.hpsum0 = s / (1.0F - filter.hpa);
    filter.hpsum1 = s / (1.0F - filter.hpb);
    filter.out = 0;
    return true;
}

/// Returns true if two filters with the same input will have the same output from now on, up to
/// inaudible differences.
bool Agree(const LowCutFilter& a, const LowCutFilter& b) noexcept {
    return a.hpgain * (std::abs(a.hpsum0 - b.hpsum0) + std::abs(a.hpsum1 - b.hpsum1)) <
               kInaudible &&
           std::abs(a.out - b.out) < kInaudible;
}

/// Returns a filter with the coefficients of `poles` whose last output is `out`, and which
/// subtracts `d` from a constant input.
VEXA_REALTIME LowCutFilter Charged(const LowCutFilter& poles, float d, float out) noexcept {
    return {poles.hpa,
            poles.hpb,
            poles.hpgain,
            d * (1.0F / (1.0F - poles.hpa)),
            d * (1.0F / (1.0F - poles.hpb)),
            out};
}

/// Replaces the coefficients of the voice's filters. The new filters subtract the same offset as
/// the old ones, so the output has no step.
VEXA_REALTIME void Refilter(RunningVoice& v, const LowCutFilter& next) noexcept {
    for (LowCutFilter* filter : {&v.filter, &v.rightFilter})
        *filter = Charged(next, filter->hpgain * (filter->hpsum0 - filter->hpsum1), filter->out);
}

} // namespace

VoiceRenderer::VoiceRenderer(SoundRecords& records)
    : inputs(records.macros),
      macros(records.macros),
      controllers(records.controllers),
      parameters(records.parameters),
      playing(records.playing),
      mix(records.playing, records.volumes),
      voices(records.voices),
      filterRate(kFilterRate) {}

std::size_t VoiceRenderer::SamplesIn(double seconds) const noexcept {
    return static_cast<std::size_t>(std::max(1.0, std::floor(seconds * sampleRate)));
}

void VoiceRenderer::SetSampleRate(double rate, int oversampling) noexcept {
    const double ratio = rate / sampleRate;
    const bool refilters = filterRate != kFilterRate * oversampling;
    sampleRate = rate;
    filterRate = kFilterRate * oversampling;
    inputs.ShowMacros();
    for (RunningVoice& v : running) {
        for (std::size_t* samples :
             {&v.age, &v.left, &v.still.lasts, &v.calm[0].lasts, &v.calm[1].lasts})
            *samples = Rescaled(*samples, ratio);
        const auto rescale = [ratio](auto&... lines) { (lines.Rescale(ratio), ...); };
        rescale(v.glide, v.bend, v.arrives, v.gains[0], v.gains[1]);
        std::ranges::for_each(v.sums, rescale);
        std::ranges::for_each(v.heard, rescale);
        std::ranges::for_each(v.envelopes, rescale);
        if (refilters && v.sounds)
            Refilter(v, LowCutFor(v.freq));
    }
}

/// Returns the filter of a note of `freq` Hz with its accumulators at 0. The poles of the two
/// accumulators are e^-k and e^-2k with k = ln 2 freq / filterRate; the gain makes the response at
/// frequency 0 exactly 0.
LowCutFilter VoiceRenderer::LowCutFor(float freq) const noexcept {
    const auto k = static_cast<float>(std::numbers::ln2 * freq / filterRate);
    const auto hpa = static_cast<float>(kits::maths::Exponential(-double(k)));
    const auto hpb = static_cast<float>(kits::maths::Exponential(-2.0 * k));
    const auto gain = (1.0 - hpa) * (1.0 - hpb) / (double(hpa) - double(hpb));
    return {hpa, hpb, static_cast<float>(gain)};
}

void VoiceRenderer::Clear() noexcept {
    for (RunningVoice& v : running)
        v = RunningVoice();
    offset = 0;
    apart = false;
    ears.Restart();
    mix.Restart();
    inputs.Restart();
}

void VoiceRenderer::SetGain(float next) noexcept {
    if (next >= 0 && next <= 1)
        gain = next;
}

void VoiceRenderer::Render(float* left, float* right, std::size_t count) noexcept {
    const RealtimeSection realtime;
    const FlushDenormals flush;
    const kits::Reader::Section reading(reader);
    // Read before the function: IsReplaced() then notices a replacement that happens in between. In
    // the other order, the old function would be taken for the new sound's.
    const uint32 now = replacing;
    const bool another = std::exchange(replaced, now) != now;
    renewed = renewed || another;
    for (RunningVoice& v : running)
        v.fresh = v.fresh || another;
    const PlaneFunction& f = function.Get();
    Block block;
    for (std::size_t done = 0; done < count;) {
        float* const rightPart = right ? right + done : nullptr;
        const std::size_t most = offset == 0 ? std::min(kMostCells, (count - done) / kBlock) : 0;
        // While sounds are joined, each change must be noticed in its own block.
        const bool whole = most > 1 && !joins && !renewed;
        const std::size_t cells = whole ? RenderCells(f, left + done, rightPart, most) : 0;
        if (cells > 0) {
            done += cells * kBlock;
            continue;
        }
        const std::size_t n = std::min(kBlock - offset, count - done);
        if (!RenderBlock(f, block, left + done, rightPart, n)) {
            std::fill_n(left + done, count - done, 0.0F);
            if (right)
                std::fill_n(rightPart, count - done, 0.0F);
            break;
        }
        done += n;
        offset = (offset + n) % kBlock;
    }
    ShowProgress();
}

/// Renders a block. Returns false, and changes nothing, if the values read may belong to two
/// sounds.
bool VoiceRenderer::RenderBlock(const PlaneFunction& f, Block& block, float* left, float* right,
                                std::size_t count) noexcept {
    const OwnControllers own(playing, macros);
    const VoiceMotion motion(parameters, controllers, own, 1.0 / sampleRate, offset, count);
    if (IsReplaced())
        return false;
    if (renewed)
        Recentre(own);
    const bool changed = WakeIfChanged(motion, f);
    const float levelBefore = mix.Level();
    std::array<RunningVoice*, kVoiceSlots> sounding;
    std::size_t voiceCount = 0;
    // Voices at rest whose volumes move.
    std::array<RunningVoice*, kVoiceSlots> fading;
    std::size_t fadingCount = 0;
    inputs.Advance(sampleRate, Smooth(), offset, count);
    // A volume changes at once if nothing sounds, or if sounds are joined: the filters of the notes
    // then compensate for it.
    const bool join = joins || renewed;
    const bool glides = !join && std::ranges::any_of(running, &RunningVoice::sounds);
    const std::size_t hand = SamplesIn(kHandSeconds);
    mix.Begin({hand, glides ? hand : 0, SamplesIn(kFadeSeconds)}, offset, count);
    OpenEars(right, count);
    const PlaneSource& source = f.Source();
    float resting = 0, restingRight = 0;
    for (std::size_t i = 0; i < kVoiceSlots; i++) {
        RunningVoice& v = running[i];
        TakeUpChange(v, voices[i], source);
        if (!v.sounds)
            continue;
        TakeUpHands(v, voices[i]);
        if (v.rests && inputs.IsAskedOf(source, v, controllers, own))
            v.stands = v.rests = false;
        if (v.rests) {
            motion.Pass(v);
            v.age += v.stopped ? 0 : count;
            if (mix.Moves(v)) {
                fading[fadingCount++] = &v;
                continue;
            }
            resting += v.filter.out * mix.Volume(v) * v.gains[0].Now();
            restingRight += v.rightFilter.out * mix.Volume(v) * v.gains[1].Now();
            continue;
        }
        sounding[voiceCount++] = &v;
    }
    inputs.ShowMacros();
    mix.Sort({sounding.data(), voiceCount});
    const std::span<RunningVoice* const> all(sounding.data(), voiceCount);
    Block::Ear &one = block.left, &other = block.right;
    if (voiceCount > 0) {
        constexpr std::size_t kTogether = VoiceMotion::kTogether;
        for (std::size_t k = 0; k < voiceCount; k += kTogether) {
            const auto some = all.subspan(k, std::min(kTogether, voiceCount - k));
            const std::size_t at = k * count;
            if (apart)
                motion.Move(some, ears, {&one.x[at], &one.y[at]}, {&other.x[at], &other.y[at]});
            else
                motion.Move(some, {&one.x[at], &one.y[at]});
        }
        const float* const* heard =
            inputs.Fill(source, all, controllers, own, 1.0 / sampleRate, count);
        source.Evaluate(one.x.data(), one.y.data(), heard, one.s.data(), voiceCount * count);
        if (apart)
            source.Evaluate(other.x.data(), other.y.data(), heard, other.s.data(),
                            voiceCount * count);
    }
    if (join && (changed || mix.Level() != levelBefore))
        Join(all, block, count, mix.Level() / levelBefore);
    renewed = false;
    one.sum.fill(resting);
    if (apart)
        other.sum.fill(restingRight);
    for (RunningVoice* const v : std::span(fading.data(), fadingCount)) {
        mix.AddResting(*v, v->filter.out, 0, one.sum.data());
        if (apart)
            mix.AddResting(*v, v->rightFilter.out, 1, other.sum.data());
        for (Ramp<float>& gain : v->gains)
            gain.Pass(count);
    }
    const std::array<OutputMix::Ear, 2> both{
        {{&RunningVoice::filter, one.s.data(), one.sum.data(), 0},
         {&RunningVoice::rightFilter, other.s.data(), other.sum.data(), 1}}};
    if (mix.Add(all, {both.data(), apart ? both.size() : 1}))
        bounded = true;
    mix.Write(one.sum.data(), gain, left, count);
    if (right)
        mix.Write(apart ? other.sum.data() : one.sum.data(), gain, right, count);
    const bool hearsTime = HearsTime(source);
    const bool cellEnds = offset + count == kBlock;
    for (std::size_t k = 0; k < voiceCount; k++)
        Watch(*sounding[k], &one.s[k * count], &other.s[k * count], count, hearsTime, cellEnds);
    // Only at the end of a cell, so that the result does not depend on how blocks are cut; and only
    // for points that already stood when the cell began, so that the last value is the final one.
    if (!cellEnds)
        return true;
    for (std::size_t k = 0; k < voiceCount; k++) {
        RunningVoice& v = *sounding[k];
        const bool stood = v.stands;
        const auto last = [at = (k + 1) * count - 1](const Block::Ear& ear) { return ear.s[at]; };
        v.stands = motion.Stands(v);
        if (!v.stands) {
            v.still.lasts = 0;
            v.stopped = false;
        }
        v.rests = stood && v.stands && !v.arrives.Moves() && inputs.IsSteady(source, v) &&
                  !Lingers(v, hearsTime, 0) && Settles(v.filter, Heard(last(one))) &&
                  (!apart || Settles(v.rightFilter, Heard(last(other))));
        // A resting voice is over even if IsOver is false: its filter may settle short of its
        // limits because rounding stops the accumulators there.
        v.over = v.rests || (v.stands && IsOver(v, last(one), apart ? last(other) : 0));
    }
    CloseEars();
    return true;
}

/// Moves the notes to where notes of this sound begin: their orbits have drifted over the terrain
/// of another sound, and there this one may be beyond all bounds.
void VoiceRenderer::Recentre(const OwnControllers& own) noexcept {
    for (RunningVoice& v : running) {
        const NoteMoment note{v.vel, v.key, 0, v.own, v.macros};
        v.cx = CentreOf(kCx0, parameters, controllers, own, note);
        v.cy = CentreOf(kCy0, parameters, controllers, own, note);
    }
}

/// Parts the ears if the sound has a spread or a note is panned. The right ear begins with the
/// filters of the left one.
void VoiceRenderer::OpenEars(bool both, std::size_t count) noexcept {
    ears.Begin(parameters, both ? playing.Spread() : 0, SamplesIn(kHandSeconds), offset, count);
    if (apart || !(ears.Apart() || (both && Panned())))
        return;
    apart = true;
    for (RunningVoice& v : running)
        v.rightFilter = v.filter;
}

/// Returns true if a note is louder in one ear than in the other.
bool VoiceRenderer::Panned() const noexcept {
    for (std::size_t i = 0; i < running.size(); i++) {
        const RunningVoice& v = running[i];
        const voice& slot = voices[i];
        const bool isNew = slot.expressed != v.expressed;
        if (isNew && slot.state.Look().Active() && slot.gains[0] != slot.gains[1])
            return true;
        if (v.scaled && v.sounds && !v.rests && v.gains[0].Now() != v.gains[1].Now())
            return true;
    }
    return false;
}

/// Joins the ears again, at the end of a cell, if they hear the same.
void VoiceRenderer::CloseEars() noexcept {
    apart = apart && (ears.Apart() || Panned() ||
                      std::any_of(running.begin(), running.end(), [](const auto& v) {
                          return v.sounds && !Agree(v.filter, v.rightFilter);
                      }));
}

/// Returns the value of f that an ear, on the side -1 or 1, hears at the start of a note's orbit.
/// As in voice::start, the radii are the first values of their envelopes, whatever their formulas
/// give.
float VoiceRenderer::StartOf(const RunningVoice& v, const PlaneSource& f,
                             double side) const noexcept {
    const double x = parameters.EnvAx->Value(0, false, 0) * ears.X().cosine + v.cx;
    const double y = parameters.EnvAy->Value(0, false, 0) * ears.Y().sine * side + v.cy;
    const std::array<float, kMostInputs> heard =
        InputsOf(f, {v.vel, v.key, 0, v.own, v.macros}, macros, controllers,
                 OwnControllers(playing, macros));
    return Heard(f.At(static_cast<float>(x), static_cast<float>(y), heard.data()));
}

bool VoiceRenderer::HearsTime(const PlaneSource& f) noexcept {
    return std::ranges::any_of(f.Inputs(), [](const FunctionInput& input) {
        return input.kind == FunctionInput::Kind::Time;
    });
}

/// Watches the values of f of a released voice. If its point stands, stops the voice's time once
/// the voice counts as ended.
void VoiceRenderer::Watch(RunningVoice& v, const float* left, const float* right, std::size_t count,
                          bool hearsTime, bool cellEnds) const noexcept {
    if (!v.released)
        return;
    const auto most = static_cast<float>(kStill * double(kBlock) / sampleRate);
    const auto watch = [=](Stillness& still, const float* samples) {
        still.stirs = still.stirs || std::any_of(samples, samples + count, [&](float sample) {
                          return !(std::abs(sample - still.level) <= most);
                      });
        if (!cellEnds)
            return;
        still.lasts = still.stirs ? 0 : still.lasts + kBlock;
        still.stirs = false;
        still.level = samples[count - 1];
    };
    watch(v.calm[0], left);
    if (apart)
        watch(v.calm[1], right);
    else
        v.calm[1] = v.calm[0];
    if (!v.stands || !hearsTime)
        return;
    watch(v.still, left);
    v.stopped = v.stopped || (cellEnds && v.still.lasts >= SamplesIn(kStillSeconds));
}

/// Returns true if a released voice counts as ended although its point may still move.
bool VoiceRenderer::IsCalm(const RunningVoice& v) const noexcept {
    return v.released && std::ranges::all_of(v.calm, [&](const Stillness& ear) {
               return ear.lasts >= SamplesIn(kStillSeconds);
           });
}

/// Sets the filters so that the first samples of a block continue from the last output. `louder` is
/// the ratio of the new to the old level.
void VoiceRenderer::Join(std::span<RunningVoice* const> sounding, const Block& block,
                         std::size_t count, float louder) const noexcept {
    const auto charge = [louder](LowCutFilter& filter, float first) {
        const float out = filter.out / louder;
        filter = Charged(filter, Heard(first) - out, out);
    };
    for (std::size_t k = 0; k < sounding.size(); k++) {
        charge(sounding[k]->filter, block.left.s[k * count]);
        if (apart)
            charge(sounding[k]->rightFilter, block.right.s[k * count]);
    }
}

/// Returns true if the voice, whose point stands, uses a time that will not stop within the next
/// `cells` cells.
bool VoiceRenderer::Lingers(const RunningVoice& v, bool hearsTime,
                            std::size_t cells) const noexcept {
    return hearsTime && !v.stopped && v.still.lasts + cells * kBlock < SamplesIn(kStillSeconds);
}

/// Returns true if the voice stays inaudible as long as the input of its filters keeps these
/// values.
bool VoiceRenderer::IsOver(const RunningVoice& v, float left, float right) const noexcept {
    return Lacks(v.filter, Heard(left)) < kInaudible &&
           (!apart || Lacks(v.rightFilter, Heard(right)) < kInaudible);
}

/// Wakes the resting voices if the sound or the function has changed. Returns true if it has.
bool VoiceRenderer::WakeIfChanged(const VoiceMotion& motion, const PlaneFunction& f) noexcept {
    const VoiceMotion::Sound now = motion.Of();
    if (now == sound && &f.Source() == heard)
        return false;
    sound = now;
    heard = &f.Source();
    for (RunningVoice& v : running)
        v.stands = v.rests = false;
    return true;
}

/// Returns the length in samples of the ramps of coefficients and controllers; 0 if they step.
std::size_t VoiceRenderer::Smooth() const noexcept {
    const double seconds = playing.given ? double(playing.smooth) / 1000 : 0;
    return seconds > 0 ? SamplesIn(seconds) : 0;
}

/// Applies bend, expression and controllers to a sounding note; one that was cut off keeps its
/// values. If the slot meanwhile has a newer note that has not been taken up, these values are that
/// note's.
void VoiceRenderer::TakeUpHands(RunningVoice& v, const voice& slot) noexcept {
    v.glide.Aim(0, 0, offset);
    v.arrives.Aim(1, 0, offset);
    if (v.ends)
        return;
    if (const uint32 now = slot.expressed; now != v.expressed) {
        v.expressed = now;
        std::copy(slot.macros.begin(), slot.macros.end(), v.macros.begin());
        v.tuning = slot.tuning;
        v.scaled = true;
    }
    if (v.scaled) {
        v.scaled = false;
        for (std::size_t i = 0; i < v.gains.size(); i++) {
            v.gains[i].Aim(slot.gains[i], SamplesIn(kHandSeconds), offset);
            v.scaled = v.scaled || v.gains[i].Varies() || v.gains[i].Now() != 1;
        }
    }
    v.bend.Aim(BendOf(v, slot), SamplesIn(kHandSeconds), offset);
    v.own = OwnOf(slot);
    // Values that depend on the key do not jump at a legato change.
    v.smooth = std::max(Smooth(), v.retuned ? SamplesIn(kHandSeconds) : 0);
    v.retuned = false;
}

/// Returns the bend and the tuning of a note together, in semitones.
double VoiceRenderer::BendOf(const RunningVoice& v, const voice& slot) const noexcept {
    return (playing.Bends() ? double(slot.bend) : 0.0) + v.tuning;
}

/// Ends a voice. With `playing` settings it fades out, without them it stops at once.
void VoiceRenderer::CutOff(RunningVoice& v) noexcept {
    if (!v.ends && playing.given && !v.rests && !v.over) {
        v.ends = true;
        v.left = SamplesIn(kFadeSeconds);
    }
    v.sounds = v.sounds && v.ends && v.left > 0 && !v.rests;
    v.ends = v.sounds;
}

/// Moves the voice to the channel of its note. A sounding voice reaches the volume of that channel
/// within 10 ms; a silent one has it at once.
void VoiceRenderer::MoveTo(RunningVoice& v, std::size_t channel, bool silent) noexcept {
    v.before = mix.Volume(v);
    v.channel = channel;
    v.arrives.Set(1);
    if (silent || v.before == mix.Volume(v))
        return;
    v.arrives.Set(0);
    v.arrives.Aim(1, SamplesIn(kHandSeconds), offset);
}

/// Takes up a change of the slot: a new note, a release or a new pitch. A slot that is being
/// rewritten at this moment is left for the next block, and the voice continues unchanged until
/// then.
void VoiceRenderer::TakeUpChange(RunningVoice& v, const voice& slot,
                                 const PlaneSource& f) noexcept {
    const VoiceState::Seen seen = slot.state.Look();
    if (!seen.Active())
        return CutOff(v);
    if (seen.Changing() || (v.sounds && seen.Changes() == v.changes))
        return;

    // Everything is read before anything changes, because the slot may be rewritten meanwhile.
    const uint32 notes = slot.notes, tunes = slot.tunes;
    const int32 channel = slot.channel;
    const float glide = slot.glide, glideFrom = slot.glidefrom;
    const uint32 expressed = slot.expressed;
    const float bend = slot.bend, tuned = slot.tuning;
    const bool glidesOn = slot.glideson && v.sounds;
    const bool released = slot.released;
    const bool continues = slot.continues && v.sounds;
    const float vel = slot.vel, key = slot.key, freq = slot.freq;
    const float startcx = slot.startcx, startcy = slot.startcy, start = slot.start;
    const float heldFor = slot.heldfor;
    const OwnValues own = OwnOf(slot);
    OwnMacros ownMacros;
    std::copy(slot.macros.begin(), slot.macros.end(), ownMacros.begin());
    const std::array<float, 2> gains{slot.gains[0], slot.gains[1]};
    std::array<float, 4> rellevel;
    std::copy(slot.rellevel.begin(), slot.rellevel.end(), rellevel.begin());
    if (slot.state.Look() != seen)
        return;

    const bool begins = !v.sounds || notes != v.notes;
    // With `playing` settings a voice that is cut off fades, so the slot's previous note still
    // sounds if it was replaced since the last block.
    const bool goesOn = v.sounds && (continues || v.ends || playing.given);
    if (begins || tunes != v.tunes) {
        const double from = glidesOn ? v.freq * v.glide.Factor() : double(glideFrom);
        v.glide.Set(glide > 0 && from > 0 ? SemitonesBetween(freq, from) : 0);
        v.glide.Aim(0, SamplesIn(glide), offset);
        v.retuned = !begins;
        MoveTo(v, static_cast<std::size_t>(channel) & 15, begins && !goesOn);
        v.tunes = tunes;
        v.key = key;
        v.freq = freq;
        Refilter(v, LowCutFor(freq));
    }
    if (begins) {
        const float fade = mix.Fade(v);
        v.notes = notes;
        v.released = false;
        v.ends = false;
        v.fresh = true;
        v.vel = vel;
        v.own = own;
        v.expressed = expressed;
        v.macros = ownMacros;
        v.tuning = tuned;
        v.scaled = gains[0] != 1 || gains[1] != 1;
        v.bend.Set((playing.Bends() ? double(bend) : 0.0) + v.tuning);
        v.t = 0;
        v.age = 0;
        v.stopped = false;
        v.cx = startcx;
        v.cy = startcy;
        v.x.Restart();
        v.y.Restart();
        // The first sample of the new note equals the last one of the slot, so there is no click.
        const auto charge = [&](LowCutFilter& filter, std::size_t ear, float from) {
            const float before = v.gains[ear].Now();
            v.gains[ear].Set(gains[ear]);
            const bool heard = goesOn && gains[ear] > 0;
            const float out = heard ? filter.out * fade * (before / gains[ear]) : 0.0F;
            filter = Charged(filter, from - out, out);
        };
        charge(v.filter, 0, apart ? StartOf(v, f, -1) : start);
        if (apart)
            charge(v.rightFilter, 1, StartOf(v, f, 1));
        else
            v.gains[1].Set(gains[1]);
    }
    if (released && !v.released) {
        const auto places = EnvelopePlaces();
        for (std::size_t i = 0; i < places.size(); i++) {
            // If the note-off came while a buffer was rendered, its levels belong to an earlier
            // time than the voice has reached. They are then computed anew, so that nothing jumps.
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
    v.stands = v.rests = v.over = false;
    v.still.lasts = 0;
    v.calm = {};
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
        slot.pitch = static_cast<float>(v.freq * (v.glide.Factor() * v.bend.Factor()));
        std::ranges::transform(v.sums, slot.sums.begin(), &Ramp<double>::Now);
        slot.out = v.filter.out;
        slot.over = v.over || IsCalm(v);
        slot.renderednotes = v.notes;
        slot.rendered = v.changes;
    }
}

} // namespace vexa
