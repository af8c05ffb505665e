#include "synth/VoiceRenderer.h"

#include "synth/BlockLoops.h"
#include "synth/Coefficients.h"
#include "synth/Envelope.h"
#include "synth/ParameterTable.h"
#include "synth/Realtime.h"

#include <algorithm>

namespace vexa {

namespace {

constexpr double kTwoPi = 6.28318530718;

} // namespace

/// The work space of one block. Positions and values of all the voices stand one voice after the
/// other, so that the plane function is called once.
struct VoiceRenderer::Block {
    static constexpr std::size_t kPoints = kVoiceSlots * kBlock;

    // Of one voice.
    alignas(64) std::array<double, kBlock> seconds, phase, cx, cy;
    alignas(64) std::array<float, kBlock> t, envCx, envCy, envAx, envAy;
    // Of all voices.
    alignas(64) std::array<float, kPoints> x, y, s;
};

VoiceRenderer::VoiceRenderer(const ControllerTable& controllers, const sound_param& parameters,
                             VoiceTable& voices)
    : controllers(controllers), parameters(parameters), voices(voices) {}

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
    for (std::size_t done = 0; done < count; done += kBlock)
        RenderBlock(f, block, buffer + done, std::min(kBlock, count - done));
    ShowProgress();
}

void VoiceRenderer::RenderBlock(const PlaneFunction& f, Block& block, float* buffer,
                                std::size_t count) noexcept {
    std::array<RunningVoice*, kVoiceSlots> sounding;
    std::array<LowCutFilter*, kVoiceSlots> filters;
    std::size_t voiceCount = 0;
    for (std::size_t i = 0; i < kVoiceSlots; i++) {
        TakeUpChange(running[i], voices[i]);
        if (!running[i].sounds)
            continue;
        filters[voiceCount] = &running[i].filter;
        sounding[voiceCount++] = &running[i];
    }
    std::fill_n(buffer, count, 0.0F);
    if (voiceCount == 0)
        return;
    const auto line = [count](auto& all, std::size_t k) { return all.data() + k * count; };
    for (std::size_t k = 0; k < voiceCount; k++)
        Move(*sounding[k], block, line(block.x, k), line(block.y, k), count);
    f.Evaluate(block.x.data(), block.y.data(), block.s.data(), voiceCount * count);
    Loops().LowCut(filters.data(), block.s.data(), voiceCount, count);
    const float factor = gain;
    for (std::size_t k = 0; k < voiceCount; k++) {
        const float* const s = line(block.s, k);
        sounding[k]->out = s[count - 1];
        for (std::size_t i = 0; i < count; i++)
            buffer[i] += s[i];
    }
    for (std::size_t i = 0; i < count; i++)
        buffer[i] *= factor;
}

/// Begins the slot's new note, or its release, if there is one. A note that is being rewritten at
/// this moment is left for the next block; until then the voice goes on as it is.
void VoiceRenderer::TakeUpChange(RunningVoice& v, const voice& slot) noexcept {
    const VoiceState::Seen seen = slot.state.Look();
    if (!seen.Active()) {
        v.sounds = false;
        return;
    }
    if (seen.Changing() || (v.sounds && seen.Changes() == v.changes))
        return;

    const uint32 notes = slot.notes;
    RunningVoice next = v;
    next.changes = seen.Changes();
    next.sounds = true;
    if (!v.sounds || notes != v.notes) {
        next.notes = notes;
        next.released = false;
        next.vel = slot.vel;
        next.key = slot.key;
        next.freq = slot.freq;
        next.t = 0;
        next.phasex = next.phasey = 0;
        next.cx = slot.startcx;
        next.cy = slot.startcy;
        // Charged so that the first sample is what the slot's last one was, without a click.
        const float d = slot.continues && v.sounds ? slot.start - v.out : float(slot.start);
        const float hpa = slot.hpa;
        const float hpb = slot.hpb;
        next.filter = {hpa, hpb, slot.hpgain, d * (1.0F / (1.0F - hpa)), d * (1.0F / (1.0F - hpb))};
        next.out = slot.continues && v.sounds ? v.out : 0.0F;
    }
    if (slot.released && !next.released) {
        const float heldFor = slot.heldfor;
        const auto places = EnvelopePlaces();
        for (std::size_t i = 0; i < places.size(); i++) {
            // A note-off that came while a buffer was rendered took the levels of an earlier time
            // than the voice has reached: taken again, so that nothing jumps.
            const Envelope& envelope = *(parameters.*places[i].target);
            const auto t = static_cast<float>(next.t);
            next.rellevel[i] = t == heldFor ? float(slot.rellevel[i]) : envelope.Value(t, false, 0);
        }
        next.t = 0;
        next.released = true;
    }
    if (slot.state.Look() == seen)
        v = next;
}

/// Moves a voice's point over the block: writes its places and advances the voice.
void VoiceRenderer::Move(RunningVoice& v, Block& block, float* x, float* y,
                         std::size_t count) noexcept {
    const sound_param& p = parameters;
    const EnvelopeCurve& envCx = p.EnvCx->Curve();
    const EnvelopeCurve& envCy = p.EnvCy->Curve();
    const EnvelopeCurve& envAx = p.EnvAx->Curve();
    const EnvelopeCurve& envAy = p.EnvAy->Curve();
    const auto weights = [this, &v](const CoefficientGroup& group) {
        return group.For(parameters, controllers, v.vel, v.key);
    };
    const Weights dcx = weights(kDcxdt);
    const Weights dcy = weights(kDcydt);
    const Weights ax = weights(kAx);
    const Weights ay = weights(kAy);

    const double dt = 1.0 / sampleRate;
    const double radiusx = ax.c0 + ax.rest;
    const double radiusy = ay.c0 + ay.rest;
    const double turnx = kTwoPi * p.Fx * v.freq * dt;
    const double turny = kTwoPi * p.Fy * v.freq * dt;

    const BlockLoops& loops = Loops();
    v.t = loops.Accumulate(v.t, dt, block.seconds.data(), count);
    loops.Narrow(block.seconds.data(), block.t.data(), count);
    const auto envelope = [&](const EnvelopeCurve& curve, std::size_t level, auto& values) {
        return curve.Values(block.t.data(), v.released, v.rellevel[level], values.data(), count);
    };
    const auto drift = [&](bool steady, const auto& values, const Weights& speed, double& c,
                           auto& centres) {
        if (steady || speed.c0 == 0) {
            c = loops.Accumulate(c, dt * (values[0] * speed.c0 + speed.rest), centres.data(),
                                 count);
            return;
        }
        for (std::size_t i = 0; i < count; i++) {
            centres[i] = c;
            c += dt * (values[i] * speed.c0 + speed.rest);
        }
    };
    drift(envelope(envCx, 0, block.envCx), block.envCx, dcx, v.cx, block.cx);
    drift(envelope(envCy, 1, block.envCy), block.envCy, dcy, v.cy, block.cy);
    envelope(envAx, 2, block.envAx);
    envelope(envAy, 3, block.envAy);

    v.phasex = loops.Accumulate(v.phasex, turnx, block.phase.data(), count);
    loops.CosinePlaces(block.phase.data(), block.envAx.data(), radiusx, block.cx.data(), x, count);
    v.phasey = loops.Accumulate(v.phasey, turny, block.phase.data(), count);
    loops.SinePlaces(block.phase.data(), block.envAy.data(), radiusy, block.cy.data(), y, count);
}

void VoiceRenderer::ShowProgress() noexcept {
    for (int i = 0; i < kVoiceSlots; i++) {
        const RunningVoice& v = running[i];
        if (!v.sounds)
            continue;
        voice& slot = voices[i];
        slot.t = v.t;
        slot.phasex = v.phasex;
        slot.phasey = v.phasey;
        slot.cx = v.cx;
        slot.cy = v.cy;
        slot.out = v.out;
        slot.rendered = v.changes;
    }
}

} // namespace vexa
