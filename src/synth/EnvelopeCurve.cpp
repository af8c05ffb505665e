#include "synth/EnvelopeCurve.h"

#include <utility>

namespace vexa {

EnvelopeCurve::EnvelopeCurve(std::vector<EnvPoint> points, float empty)
    : points(std::move(points)), empty(empty) {}

float EnvelopeCurve::Value(float t, bool released, float level) const noexcept {
    if (points.empty())
        return empty;
    if (points.size() == 1)
        return points.front().val;
    return released ? ReleasedValue(t, level) : HeldValue(t);
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
