// SPDX-License-Identifier: GPL-3.0-or-later
// The instrument in its plainest form: one sample and one voice after the other, each line a line
// of the formulas. Tests check the fast product against this readable reference.
#pragma once

#include "synth/Envelope.h"
#include "synth/PlaneFunction.h"
#include "synth/SoundParam.h"

#include <array>
#include <cmath>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

namespace test {

/// The values of a note, besides its point, that a function may use.
struct Hearing {
    float vel, key;
    /// Seconds since the note began.
    double t;
    const std::array<float, 128>& ctl;
    /// The macros a to d.
    std::array<float, 4> macros;
};

/// F returns f(x, y), or f(x, y, hearing) if it uses more.
template<class F = vexa::PlaneFunction>
class ScalarReference {
  public:
    ScalarReference(const vexa::sound_param& parameters, F f) : p(parameters), f(std::move(f)) {}

    double sampleRate = 44100;
    float gain = 0.25F;
    /// The smoothing time in seconds.
    double smooth = 0;
    int voiceLimit = 20;
    /// True if the right ear is computed too.
    bool stereo = false;
    std::array<float, 128> ctl{};
    /// The controllers of the macros. `begins` has the initial values of the macros that a note has
    /// of its own from its start, by MPE pressure and controller 74: 0 and 64 before any message.
    std::array<int, 4> macroControllers{16, 17, 18, 19};
    std::array<std::optional<float>, 4> begins{};

    void NoteOn(int note, int velocity, int channel = 0) {
        const auto vel = float(velocity / 127.0);
        const auto key = float(note / 127.0);
        const float freq = std::exp(float(std::log(2.0) / 12.0) * float(note - 69)) * 440.0F;
        const auto k = float(std::log(2.0) * freq / 44100.0);
        const auto cx = float(p.C0x0 + p.C0x1 * vel + p.C0x2 * key + p.C0x3 * ctl[p.C0x4]);
        const auto cy = float(p.C0y0 + p.C0y1 * vel + p.C0y2 * key + p.C0y3 * ctl[p.C0y4]);
        const auto hpa = float(std::exp(double(-k)));
        const auto hpb = float(std::exp(-2.0 * k));
        Voice* v = Choose(key, channel);
        if (!v)
            return;
        for (Voice& other : voices)
            other.bygone = other.bygone || (other.channel == channel && other.released);
        v->channel = channel;
        v->bygone = false;
        for (std::size_t m = 0; m < 4; m++) {
            const std::optional<float> own = channels[channel][m] ? channels[channel][m]
                                             : channel > 0        ? begins[m]
                                                                  : std::nullopt;
            v->owns[m] = own.has_value();
            v->macros[m] = own ? Ramp{*own, *own, 0, 0} : macros[m];
        }
        v->vel = vel;
        v->key = key;
        v->cx = cx;
        v->cy = cy;
        v->released = false;
        v->freq = freq;
        v->phasex = v->phasey = v->t = v->age = 0;
        v->hpa = hpa;
        v->hpb = hpb;
        v->hpgain = float((1.0 - hpa) * (1.0 - hpb) / (double(hpa) - hpb));
        for (int side = 0; side < 2; side++) {
            Ear& ear = v->ears[side];
            const double x = p.EnvAx->Value(0, false, 0) * std::cos(Turn(side, p.Fx)) + cx;
            const double y = p.EnvAy->Value(0, false, 0) * std::sin(Turn(side, p.Fy)) + cy;
            const float s0 = Value(float(x), float(y), *v);
            const float d = v->active ? s0 - ear.out : s0;
            ear.hpsum0 = d * (1 / (1 - hpa));
            ear.hpsum1 = d * (1 / (1 - hpb));
        }
        v->active = true;
        v->fresh = true;
    }

    void NoteOff(int note, int channel = 0) {
        for (Voice& v : voices) {
            if (!v.active || v.released || v.key != float(note / 127.0) || v.channel != channel)
                continue;
            const auto t = float(v.t);
            v.rellevel = {p.EnvCx->Value(t, false, 0), p.EnvCy->Value(t, false, 0),
                          p.EnvAx->Value(t, false, 0), p.EnvAy->Value(t, false, 0)};
            v.t = 0;
            v.released = true;
        }
    }

    /// Sets a controller on channel 0, which applies to all notes, or on the channel of a single
    /// note. Macros change in a straight line over 10 ms, from the next sample on.
    void Control(int channel, int number, int value) {
        const auto to = float(value / 127.0);
        if (channel == 0)
            ctl[number] = to;
        for (std::size_t m = 0; m < 4; m++) {
            if (macroControllers[m] != number)
                continue;
            const auto aim = [&](Ramp& macro) {
                if (macro.to != to)
                    macro = {macro.Now(), to, 0, std::floor(0.01 * sampleRate)};
            };
            if (channel == 0)
                aim(macros[m]);
            const bool own = channel > 0 || begins[m];
            for (int c = 0; c < 16; c++) {
                if (channel == 0 || channel == c)
                    channels[c][m] = own ? std::optional(to) : std::nullopt;
            }
            for (Voice& v : voices) {
                if ((channel != 0 && channel != v.channel) ||
                    (v.bygone && (channel > 0 || v.owns[m])))
                    continue;
                v.owns[m] = own;
                aim(v.macros[m]);
            }
        }
    }

    /// Sets the spread in degrees. It changes in a straight line over 10 ms from the next sample
    /// on, except before the first sample.
    void SetSpread(double to) {
        spread = {begun ? spread.Now() : to, to, 0, std::floor(0.01 * sampleRate)};
    }

    /// Ends the voices that have sounded longest, released ones first.
    void LimitVoices(int limit) {
        voiceLimit = limit;
        while (Sounding() > limit)
            Longest()->active = false;
    }

    void Fill(float* left, std::size_t count, float* right = nullptr) {
        for (std::size_t i = 0; i < count; i++) {
            std::array<float, 2> sums{};
            for (Voice& v : voices) {
                if (v.active)
                    Sample(v, sums);
            }
            left[i] = sums[0] * gain;
            if (right)
                right[i] = sums[1] * gain;
            for (Ramp& macro : macros)
                macro.passed++;
            for (Voice& v : voices) {
                for (Ramp& macro : v.macros)
                    macro.passed++;
            }
            spread.passed++;
        }
        begun = true;
    }

  private:
    /// A straight line to the target of a sum.
    struct Line {
        double from, to, passed, length;
        double Now() const { return passed < length ? from + (to - from) * (passed / length) : to; }
    };

    /// The value of an envelope that was heard last, and the remaining difference to the previous
    /// curve.
    struct Followed {
        std::uint64_t curve;
        float value;
        Line lag;
    };

    /// The state of a voice that each ear has of its own.
    struct Ear {
        float hpsum0, hpsum1, out;
    };

    struct Ramp {
        float from = 0.5F, to = 0.5F;
        double passed = 0, length = 0;

        float Now() const {
            return passed < length ? from + (to - from) * float(passed / length) : to;
        }
    };

    struct Voice {
        /// True if its channel has had another note since this one was released.
        bool bygone;
        int channel;
        /// The macros that the voice uses, global ones or its own.
        std::array<Ramp, 4> macros;
        std::array<bool, 4> owns;
        float hpa, hpb, hpgain;
        std::array<Ear, 2> ears;
        std::array<float, 4> rellevel;
        bool active;
        double t;
        bool released;
        /// Seconds since the note began; `t` counts from its release once it is released.
        double age;
        double phasex, phasey;
        float freq;
        double cx, cy;
        float vel, key;
        bool fresh;
        std::array<Line, 6> sums;
        std::array<Followed, 4> envelopes;
    };

    /// Returns the phase offset of an oscillator for an ear.
    double Turn(int side, float frequency) const {
        return (side == 0 ? -0.5 : 0.5) * frequency * spread.Now() * M_PI / 180;
    }

    float Value(float x, float y, const Voice& v) const {
        if constexpr (std::invocable<const F&, float, float>)
            return vexa::Heard(f(x, y));
        else
            return vexa::Heard(f(x, y,
                                 Hearing{v.vel,
                                         v.key,
                                         v.age,
                                         ctl,
                                         {v.macros[0].Now(), v.macros[1].Now(), v.macros[2].Now(),
                                          v.macros[3].Now()}}));
    }

    /// Returns the smoothed sum at this sample.
    double Smooth(Voice& v, std::size_t number, double target) const {
        Line& line = v.sums[number];
        if (v.fresh || target != line.to)
            line = {v.fresh ? target : line.Now(), target, 0, std::floor(smooth * sampleRate)};
        const double now = line.Now();
        line.passed++;
        return now;
    }

    /// Returns the envelope at this sample.
    double Follow(Voice& v, std::size_t number, const vexa::Envelope& envelope) const {
        Followed& followed = v.envelopes[number];
        const float value = envelope.Value(float(v.t), v.released, v.rellevel[number]);
        const std::uint64_t curve = envelope.Curve().Number();
        if (v.fresh)
            followed = {curve, value, {0, 0, 0, 0}};
        else if (curve != followed.curve && smooth > 0)
            followed.lag = {double(followed.value) - value, 0, 0, std::floor(smooth * sampleRate)};
        followed.curve = curve;
        followed.value = float(value + followed.lag.Now());
        followed.lag.passed++;
        return followed.value;
    }

    /// Adds the next sample of both ears.
    void Sample(Voice& v, std::array<float, 2>& sums) const {
        const double dt = 1.0 / sampleRate;
        const double dCx =
            Follow(v, 0, *p.EnvCx) * Smooth(v, 0, p.Cx0) +
            Smooth(v, 1,
                   double(p.Cx1) * v.vel + double(p.Cx2) * v.key + double(p.Cx3) * ctl[p.Cx4]);
        const double dCy =
            Follow(v, 1, *p.EnvCy) * Smooth(v, 2, p.Cy0) +
            Smooth(v, 3,
                   double(p.Cy1) * v.vel + double(p.Cy2) * v.key + double(p.Cy3) * ctl[p.Cy4]);
        const double Ax =
            Follow(v, 2, *p.EnvAx) * Smooth(v, 4,
                                            double(p.Ax0) + double(p.Ax1) * v.vel +
                                                double(p.Ax2) * v.key + double(p.Ax3) * ctl[p.Ax4]);
        const double Ay =
            Follow(v, 3, *p.EnvAy) * Smooth(v, 5,
                                            double(p.Ay0) + double(p.Ay1) * v.vel +
                                                double(p.Ay2) * v.key + double(p.Ay3) * ctl[p.Ay4]);
        v.fresh = false;
        for (int side = 0; side < (stereo ? 2 : 1); side++) {
            Ear& ear = v.ears[side];
            const auto x = float(Ax * std::cos(v.phasex + Turn(side, p.Fx)) + v.cx);
            const auto y = float(Ay * std::sin(v.phasey + Turn(side, p.Fy)) + v.cy);
            const float s = Value(x, y, v);
            const double w0 = double(v.hpa) * ear.hpsum0 + s;
            const double w1 = double(v.hpb) * ear.hpsum1 + s;
            ear.hpsum0 = float(w0);
            ear.hpsum1 = float(w1);
            ear.out = float(s - v.hpgain * (w0 - w1));
            sums[side] += ear.out;
        }
        v.t += dt;
        v.age += dt;
        v.cx += dt * dCx;
        v.cy += dt * dCy;
        v.phasex += 6.28318530718 * p.Fx * v.freq * dt;
        v.phasey += 6.28318530718 * p.Fy * v.freq * dt;
    }

    int Sounding() const {
        int sounding = 0;
        for (const Voice& v : voices)
            sounding += v.active;
        return sounding;
    }

    Voice* Choose(float key, int channel) {
        for (Voice& v : voices) {
            if (v.active && !v.released && v.key == key && v.channel == channel)
                return &v;
        }
        const int sounding = Sounding();
        for (Voice& v : voices) {
            if (sounding < voiceLimit && !v.active)
                return &v;
        }
        return Longest();
    }

    Voice* Longest() {
        for (const bool released : {true, false}) {
            Voice* longest = nullptr;
            float best = 0;
            for (Voice& v : voices) {
                if (v.active && v.released == released && v.t >= best) {
                    best = float(v.t);
                    longest = &v;
                }
            }
            if (longest)
                return longest;
        }
        return nullptr;
    }

    const vexa::sound_param& p;
    const F f;
    std::array<Ramp, 4> macros;
    /// The initial values of the channels' next notes.
    std::array<std::array<std::optional<float>, 4>, 16> channels;
    Line spread{0, 0, 0, 0};
    bool begun = false;
    std::array<Voice, 21> voices{};
};

} // namespace test
