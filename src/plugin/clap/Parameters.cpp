// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/clap/Parameters.h"

#include "kits/support/NumberText.h"
#include "kits/support/RealtimeMark.h"
#include "kits/support/Trimmed.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <utility>

namespace vexa::clap {

namespace {

/// The number of significant digits shown to the user.
constexpr int kDigits = 6;

/// The units of LV2's units vocabulary and their spelling for the user.
constexpr std::pair<std::string_view, std::string_view> kUnits[] = {
    {"db", "dB"}, {"degree", "°"}, {"s", "s"}, {"semitone12TET", "semitones"}};

std::string_view UnitOf(const Control& control) {
    for (const auto& [name, text] : kUnits) {
        if (control.unit && name == control.unit)
            return text;
    }
    return {};
}

/// Returns true if the texts are equal but for the case of ASCII letters.
bool Same(std::string_view a, std::string_view b) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
    return std::ranges::equal(a, b, {}, lower, lower);
}

bool IsStepped(const Control& control) {
    return control.whole && control.asSound == std::floor(control.asSound);
}

/// Returns the FNV-1a hash (Fowler, Noll, Vo) of the symbol without its highest bit, which hosts
/// use for their own purposes.
VEXA_REALTIME clap_id NumberOf(std::string_view symbol) {
    uint32 hash = 2166136261U;
    for (const char c : symbol)
        hash = (hash ^ static_cast<unsigned char>(c)) * 16777619U;
    return hash & 0x7FFFFFFFU;
}

} // namespace

clap_param_info InfoOf(std::size_t index) {
    const Control& control = Controls()[index];
    clap_param_info info{};
    info.id = NumberOf(control.symbol);
    info.flags = CLAP_PARAM_IS_AUTOMATABLE | CLAP_PARAM_REQUIRES_PROCESS;
    if (IsStepped(control))
        info.flags |= CLAP_PARAM_IS_STEPPED;
    if (MacroOf(index))
        info.flags |= CLAP_PARAM_IS_AUTOMATABLE_PER_NOTE_ID | CLAP_PARAM_IS_AUTOMATABLE_PER_KEY |
                      CLAP_PARAM_IS_AUTOMATABLE_PER_CHANNEL | CLAP_PARAM_IS_MODULATABLE |
                      CLAP_PARAM_IS_MODULATABLE_PER_NOTE_ID | CLAP_PARAM_IS_MODULATABLE_PER_KEY |
                      CLAP_PARAM_IS_MODULATABLE_PER_CHANNEL;
    std::snprintf(info.name, sizeof info.name, "%s", control.label);
    std::snprintf(info.module, sizeof info.module, "%s", MacroOf(index) ? "Macros" : "Playing");
    info.min_value = info.default_value = double(control.asSound);
    info.max_value = double(control.maximum);
    return info;
}

std::optional<std::size_t> IndexOf(clap_id id) {
    for (std::size_t i = 0; i < kControls; i++) {
        if (NumberOf(Controls()[i].symbol) == id)
            return i;
    }
    return std::nullopt;
}

std::string TextOf(const Control& control, double value) {
    const auto given = static_cast<float>(value);
    const bool toSound = control.LeavesToSound(given);
    const float bounded = toSound ? control.asSound : control.Bounded(given);
    const bool isPower = !toSound && control.target == &Playing::oversample;
    const float number = isPower ? std::exp2(bounded) : bounded;
    for (const ControlPoint& point : Points(control)) {
        if (point.value == number)
            return point.label;
    }
    std::string text = kits::RoundedText(double(number), kDigits);
    const std::string_view unit = UnitOf(control);
    return unit.empty() ? text : text.append(" ").append(unit);
}

std::optional<double> ValueOf(const Control& control, std::string_view text) {
    text = kits::Trimmed(text);
    for (const ControlPoint& point : Points(control)) {
        if (Same(text, point.label))
            return point.value;
    }
    if (text.starts_with('+') && !text.starts_with("+-"))
        text.remove_prefix(1);
    double value = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), value);
    if (read.ec != std::errc())
        return std::nullopt;
    const std::string_view rest =
        kits::Trimmed(text.substr(static_cast<std::size_t>(read.ptr - text.data())));
    const bool inside = value >= double(control.minimum) && value <= double(control.maximum);
    return inside && (rest.empty() || Same(rest, UnitOf(control))) ? std::optional(value)
                                                                   : std::nullopt;
}

double Held(const Control& control, double value) {
    const bool toSound = control.LeavesToSound(static_cast<float>(value));
    return toSound ? double(control.asSound) : std::min(value, double(control.maximum));
}

} // namespace vexa::clap
