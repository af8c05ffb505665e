#include "synth/VoiceRenderer.h"

#include "synth/Coefficients.h"
#include "synth/Envelope.h"
#include "synth/ParameterTable.h"
#include "synth/Realtime.h"

#include <algorithm>
#include <cmath>

namespace vexa {

namespace {

constexpr double kTwoPi = 6.28318530718;

} // namespace

/// The work space of one block.
struct VoiceRenderer::Block {
    std::array<float, kBlock> x, y, s;
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
    for (std::size_t done = 0; done < count; done += kBlock) {
        const std::size_t n = std::min(kBlock, count - done);
        std::fill_n(buffer + done, n, 0.0F);
        for (int i = 0; i < kVoiceSlots; i++) {
            TakeUpChange(running[i], voices[i]);
            if (!running[i].sounds)
                continue;
            RenderVoice(running[i], f, block, n);
            for (std::size_t k = 0; k < n; k++)
                buffer[done + k] += block.s[k];
        }
        const float factor = gain;
        for (std::size_t k = 0; k < n; k++)
            buffer[done + k] *= factor;
    }
    ShowProgress();
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
        next.hpa = slot.hpa;
        next.hpb = slot.hpb;
        next.hpgain = slot.hpgain;
        next.vel = slot.vel;
        next.key = slot.key;
        next.freq = slot.freq;
        next.t = 0;
        next.phasex = next.phasey = 0;
        next.cx = slot.startcx;
        next.cy = slot.startcy;
        // Charged so that the first sample is what the slot's last one was, without a click.
        const float d = slot.continues && v.sounds ? slot.start - v.out : float(slot.start);
        next.hpsum0 = d * (1.0F / (1.0F - next.hpa));
        next.hpsum1 = d * (1.0F / (1.0F - next.hpb));
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

void VoiceRenderer::RenderVoice(RunningVoice& v, const PlaneFunction& f, Block& block,
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

    for (std::size_t i = 0; i < count; i++) {
        const auto t = static_cast<float>(v.t);
        const double rx = envAx.Value(t, v.released, v.rellevel[2]) * radiusx;
        const double ry = envAy.Value(t, v.released, v.rellevel[3]) * radiusy;
        block.x[i] = static_cast<float>(rx * std::cos(v.phasex) + v.cx);
        block.y[i] = static_cast<float>(ry * std::sin(v.phasey) + v.cy);
        v.cx += dt * (envCx.Value(t, v.released, v.rellevel[0]) * dcx.c0 + dcx.rest);
        v.cy += dt * (envCy.Value(t, v.released, v.rellevel[1]) * dcy.c0 + dcy.rest);
        v.phasex += turnx;
        v.phasey += turny;
        v.t += dt;
    }
    f.Evaluate(block.x.data(), block.y.data(), block.s.data(), count);

    for (std::size_t i = 0; i < count; i++) {
        // One value that is not finite would stay in the accumulators for ever.
        const float s = std::isfinite(block.s[i]) ? block.s[i] : 0.0F;
        const double w0 = double(v.hpa) * v.hpsum0 + s;
        const double w1 = double(v.hpb) * v.hpsum1 + s;
        v.hpsum0 = static_cast<float>(w0);
        v.hpsum1 = static_cast<float>(w1);
        block.s[i] = static_cast<float>(s - v.hpgain * (w0 - w1));
    }
    v.out = block.s[count - 1];
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
