// SPDX-License-Identifier: GPL-3.0-or-later
#include "synth/EnvelopeCurve.h"

#include <algorithm>
#include <atomic>
#include <limits>
#include <utility>

namespace vexa {

namespace {

/// Orders points by kind, then by time.
bool Before(const EnvPoint& a, const EnvPoint& b) {
    return a.fku != b.fku ? b.fku : a.t < b.t;
}

constexpr float kForEver = std::numeric_limits<float>::infinity();

std::uint64_t NextNumber() {
    static std::atomic<std::uint64_t> last{0};
    return ++last;
}

} // namespace

EnvelopeCurve::EnvelopeCurve(std::vector<EnvPoint> given, float empty)
    : number(NextNumber()),
      points(std::move(given)),
      empty(empty),
      keyDown(static_cast<std::size_t>(
          std::count_if(points.begin(), points.end(), [](const EnvPoint& p) { return !p.fku; }))),
      ordered(!points.empty() && !points[0].fku && points[0].t == 0 &&
              std::is_sorted(points.begin(), points.end(), Before) &&
              std::none_of(points.begin(), points.end(),
                           [](const EnvPoint& p) { return !(p.t >= 0); })) {}

float EnvelopeCurve::Value(float t, bool released, float level) const noexcept {
    if (points.empty())
        return empty;
    if (points.size() == 1)
        return points.front().val;
    return released ? ReleasedValue(t, level) : HeldValue(t);
}

void EnvelopeCurve::Values(const double* t, bool released, float level, float* values,
                           std::size_t count) const noexcept {
    const double* const end = t + count;
    for (const double* from = t; from < end;) {
        const Piece piece = PieceAt(static_cast<float>(*from), released, level);
        if (piece.until < *from) {
            for (; from < end; from++)
                values[from - t] = Value(static_cast<float>(*from), released, level);
            return;
        }
        const double* const to =
            end[-1] <= piece.until ? end : std::upper_bound(from, end, piece.until);
        Loops().Line(piece.line, from, values + (from - t), static_cast<std::size_t>(to - from));
        from = to;
    }
}

EnvelopeCurve::Piece EnvelopeCurve::PieceAt(float t, bool released, float level) const noexcept {
    const auto constant = [](float value, float until) {
        return Piece{{value, 0, 0, 1}, true, until};
    };
    if (points.size() <= 1)
        return constant(Value(t, released, level), kForEver);
    if (!ordered)
        return {{0, 0, 0, 1}, false, -kForEver};
    const auto first = points.begin() + (released ? static_cast<std::ptrdiff_t>(keyDown) : 1);
    const auto last =
        released ? points.end() : points.begin() + static_cast<std::ptrdiff_t>(keyDown);
    // The lowest segment that contains t ends at the first point that is not before t.
    const auto b =
        std::lower_bound(first, last, t, [](const EnvPoint& p, float time) { return p.t < time; });
    if (b >= last)
        return constant(released && keyDown == points.size() ? level : last[-1].val, kForEver);
    if (released && b == first) {
        if (b->t == 0)
            return constant(b->val, b->t);
        return {{level, 0, double(b->val) - level, b->t}, b->val == level, b->t};
    }
    const auto a = b - 1;
    if (a->t == b->t)
        return constant(b->val, b->t);
    return {{b->val, b->t, double(a->val) - b->val, double(a->t) - b->t}, a->val == b->val, b->t};
}

float EnvelopeCurve::HeldValue(float t) const noexcept {
    for (std::size_t i = 1; i < points.size(); i++) {
        if (points[i].fku)
            return points[i - 1].val;
        if (!points[i - 1].fku && points[i - 1].t <= t && t <= points[i].t)
            return Line(i, t);
    }
    return points.back().val;
}

float EnvelopeCurve::ReleasedValue(float t, float level) const noexcept {
    for (std::size_t i = 1; i < points.size(); i++) {
        const EnvPoint& before = points[i - 1];
        const EnvPoint& point = points[i];
        if (!point.fku)
            continue;
        if (!before.fku && t <= point.t) {
            if (point.t == 0)
                return point.val;
            return static_cast<float>(level + double(t) * (double(point.val) - level) / point.t);
        }
        if (before.fku && before.t <= t && t <= point.t)
            return Line(i, t);
    }
    return points.back().fku ? points.back().val : level;
}

float EnvelopeCurve::Line(std::size_t i, float t) const noexcept {
    const EnvPoint& a = points[i - 1];
    const EnvPoint& b = points[i];
    if (a.t == b.t)
        return b.val;
    return static_cast<float>(b.val +
                              (double(t) - b.t) * (double(a.val) - b.val) / (double(a.t) - b.t));
}

} // namespace vexa
