// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/bar/RecordButton.h"

#include <cstdint>

namespace vexa {

namespace {

constexpr const char* kResting = "● Rec";
constexpr const char* kRestingName = "Record what is heard";
constexpr const char* kRunningName = "Recording; press to end it";
/// The room that a button keeps free beside its label, in pixels.
constexpr float kBesideLabel = 6;

/// Returns whole minutes and seconds: "0:07".
std::string MinutesText(double seconds) {
    const auto whole = static_cast<std::int64_t>(seconds);
    const std::string rest = std::to_string(whole % 60);
    return std::to_string(whole / 60) + (rest.size() < 2 ? ":0" : ":") + rest;
}

} // namespace

RecordButton::RecordButton(BRect frame, BMessage* message)
    : BButton(frame, "Record", kResting, message) {
    SetOnDark();
    SetAccessibleName(kRestingName);
    SetHelp("Records what is heard into a WAV file");
}

void RecordButton::Show(std::optional<double> seconds) {
    const std::string length = seconds ? MinutesText(*seconds) : "";
    const std::string label = seconds ? "● " + length : kResting;
    if (label == Label())
        return;
    const std::string before = Label();
    const bool turns = !seconds || before == kResting;
    // The text has the same size until the time has another digit.
    const bool resizes = turns || label.size() != before.size();
    SetLabel(label.c_str());
    if (resizes)
        SetFontSize(kits::FittingFontSize(label, Frame().Width() - kBesideLabel));
    SetToolTip(seconds ? (length + " recorded").c_str() : restingTip.c_str());
    if (!turns)
        return;
    SetAccessibleName(seconds ? kRunningName : kRestingName);
    SetDown(seconds.has_value());
}

void RecordButton::SetRestingTip(const std::string& text) {
    restingTip = text;
    if (std::string(Label()) == kResting)
        SetToolTip(text.c_str());
}

} // namespace vexa
