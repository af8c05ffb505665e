// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/clap/Parameters.h"

#include "kits/support/NumberText.h"
#include "kits/support/RealtimeMark.h"
#include "kits/support/Trimmed.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <span>
#include <utility>

namespace vexa::clap {

namespace {

constexpr std::string_view kAsSound = "as the sound";
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

/// Returns the words for the values from 0 on; empty for most controls.
std::span<const std::string_view> WordsOf(const Control& control) {
    for (const PlayingRow& row : PlayingRows()) {
        if (control.target && row.target == control.target && control.target == &Playing::mode)
            return row.words;
    }
    return {};
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
    if (control.LeavesToSound(given))
        return std::string(kAsSound);
    const float bounded = control.Bounded(given);
    if (const auto words = WordsOf(control); !words.empty())
        return std::string(words[static_cast<std::size_t>(bounded)]);
    const float number = control.target == &Playing::oversample ? std::exp2(bounded) : bounded;
    std::string text = kits::RoundedText(double(number), kDigits);
    const std::string_view unit = UnitOf(control);
    return unit.empty() ? text : text.append(" ").append(unit);
}

std::optional<double> ValueOf(const Control& control, std::string_view text) {
    text = kits::Trimmed(text);
    if (text == kAsSound)
        return control.asSound;
    const auto words = WordsOf(control);
    if (const auto word = std::ranges::find(words, text); word != words.end())
        return static_cast<double>(word - words.begin());
    double value = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), value);
    if (read.ec != std::errc())
        return std::nullopt;
    const std::string_view rest =
        kits::Trimmed(text.substr(static_cast<std::size_t>(read.ptr - text.data())));
    const bool inside = value >= double(control.minimum) && value <= double(control.maximum);
    return inside && (rest.empty() || rest == UnitOf(control)) ? std::optional(value)
                                                               : std::nullopt;
}

double Held(const Control& control, double value) {
    const bool toSound = control.LeavesToSound(static_cast<float>(value));
    return toSound ? double(control.asSound) : std::min(value, double(control.maximum));
}

} // namespace vexa::clap
