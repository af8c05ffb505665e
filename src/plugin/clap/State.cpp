// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/clap/State.h"

#include "documents/SoundDocument.h"
#include "plugin/clap/Parameters.h"

#include <algorithm>
#include <charconv>
#include <vector>

namespace vexa::clap {

namespace {

constexpr std::size_t kMostBytes = std::size_t{64} << 20;
constexpr std::string_view kBegin = "<!-- vexa-knobs", kEnd = " -->\n";

/// Returns the position at which a document's root begins.
std::size_t Root(std::string_view document) {
    return document.find(std::string("<").append(kSoundElement).append(">"));
}

/// Returns the text that precedes a control's value.
std::string Lead(const Control& control) {
    return std::string(" ").append(control.symbol).append("=");
}

} // namespace

Knobs UntouchedKnobs() {
    Knobs knobs{};
    for (std::size_t i = 0; i < kControls; i++)
        knobs[i] = Controls()[i].asSound;
    return knobs;
}

std::string WithKnobs(std::string document, const Knobs& knobs) {
    std::string text;
    for (std::size_t i = 0; i < kControls; i++) {
        const Control& control = Controls()[i];
        if (control.LeavesToSound(static_cast<float>(knobs[i])))
            continue;
        char digits[64];
        const auto end = std::to_chars(digits, digits + sizeof digits, knobs[i]);
        text.append(Lead(control)).append(digits, end.ptr);
    }
    if (!text.empty())
        document.insert(Root(document), text.insert(0, kBegin).append(kEnd));
    return document;
}

Knobs KnobsOf(std::string_view state) {
    Knobs knobs = UntouchedKnobs();
    state = state.substr(0, Root(state));
    const std::string_view said = state.substr(std::min(state.find(kBegin), state.size()));
    for (std::size_t i = 0; i < kControls; i++) {
        const Control& control = Controls()[i];
        const std::string lead = Lead(control);
        const std::size_t at = said.find(lead);
        double value = 0;
        if (at == std::string_view::npos)
            continue;
        const char* const number = said.data() + at + lead.size();
        if (std::from_chars(number, said.data() + said.size(), value).ec == std::errc())
            knobs[i] = Held(control, value);
    }
    return knobs;
}

std::optional<std::string> ReadAll(const clap_istream& stream) {
    std::string text;
    std::vector<char> piece(std::size_t{1} << 16);
    while (text.size() <= kMostBytes) {
        const int64_t count = stream.read(&stream, piece.data(), piece.size());
        if (count == 0)
            return text;
        if (count < 0 || static_cast<std::size_t>(count) > piece.size())
            return std::nullopt;
        text.append(piece.data(), static_cast<std::size_t>(count));
    }
    return std::nullopt;
}

bool WriteAll(const clap_ostream& stream, std::string_view text) {
    while (!text.empty()) {
        const int64_t count = stream.write(&stream, text.data(), text.size());
        if (count <= 0 || static_cast<std::size_t>(count) > text.size())
            return false;
        text.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

} // namespace vexa::clap
