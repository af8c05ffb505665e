// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/strip/PlayingControls.h"

#include "app/Attachment.h"
#include "app/VexaView.h"
#include "app/strip/NumberField.h"
#include "kits/interface/Menu.h"

#include <cctype>

namespace vexa {

namespace {

constexpr uint32 kEditCode = FourCC("PlyE");
/// The strip has room for two rows of cells.
constexpr std::size_t kColumns = (kPlayingRows + 1) / 2;

/// The appearance of a row's control, in the order of PlayingRows().
struct Appearance {
    /// The name with the unit, for accessibility.
    const char* name;
    const char* unit;
    double step;
    /// The text for "no value", if the row has such a value.
    const char* none;
    /// The labels of the row's words; null for the words themselves.
    const char* const* words;
};

constexpr const char* kPedals[] = {"off", "on"};
constexpr const char* kFactors[] = {"off", "2 \u00d7", "4 \u00d7", "8 \u00d7", "16 \u00d7"};

constexpr Appearance kAppearances[kPlayingRows] = {
    {"polyphony, voices", "", 1, "", nullptr},
    {"mode of playing", "", 1, "", nullptr},
    {"glide, seconds", " s", 0.05, "", nullptr},
    {"bend, semitones", " st", 1, "", nullptr},
    {"pedal", "", 1, "", kPedals},
    {"pressure, controller", "", 1, "none", nullptr},
    {"spread, degrees", "\u00b0", 5, "", nullptr},
    {"oversampling", "", 1, "", kFactors},
    {"smoothing, milliseconds", " ms", 1, "", nullptr},
    {"volume, decibels", " dB", 1, "", nullptr},
};

std::string HelpOf(const PlayingRow& row) {
    std::string help = row.help;
    help[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(help[0])));
    return help + ": " + row.allowed;
}

} // namespace

PlayingControls::PlayingControls(VexaView& mainView)
    : CellGrid("how the sound is played", kColumns), mainView(mainView) {
    for (std::size_t row = 0; row < kPlayingRows; row++)
        controls[row] = NewControl(row);
    Refresh();
}

PlayingControls::Control PlayingControls::NewControl(std::size_t row) {
    const PlayingRow& what = PlayingRows()[row];
    const Appearance& look = kAppearances[row];
    const auto message = [row] {
        auto* edit = new BMessage(kEditCode);
        edit->AddInt32("row", static_cast<int32>(row));
        return edit;
    };
    Control control;
    if (what.words.empty()) {
        control.number = new NumberField(
            look.name, {what.minimum, what.maximum, look.step, what.whole, look.unit, look.none},
            message());
        control.number->SetTarget(this);
        AddCell(std::string(what.name), control.number);
        return control;
    }
    auto* menu = new BPopUpMenu(look.name);
    for (std::size_t i = 0; i < what.words.size(); i++) {
        BMessage* choice = message();
        choice->AddInt32("word", static_cast<int32>(i));
        const std::string label = look.words ? look.words[i] : std::string(what.words[i]);
        menu->AddItem(new BMenuItem(label.c_str(), choice));
    }
    menu->SetTargetForItems(this);
    control.menu = new BMenuField({0, 0, 60, 0}, look.name, nullptr, menu);
    AddCell(std::string(what.name), control.menu);
    return control;
}

void PlayingControls::Refresh() {
    const Instrument& instrument = mainView.Played();
    if (shown == instrument.Changes() && shownLimit == instrument.VoiceLimit() &&
        shownPreferred == instrument.Preferred())
        return;
    shown = instrument.Changes();
    shownLimit = instrument.VoiceLimit();
    shownPreferred = instrument.Preferred();
    for (std::size_t row = 0; row < kPlayingRows; row++)
        Show(row);
}

/// Returns the value that is heard.
double PlayingControls::ValueOf(std::size_t row) const {
    const PlayingRow& what = PlayingRows()[row];
    if (what.target == &Playing::polyphony)
        return mainView.Played().VoiceLimit();
    return mainView.Engine().playing.*what.target;
}

void PlayingControls::Show(std::size_t row) {
    const PlayingRow& what = PlayingRows()[row];
    const Instrument& instrument = mainView.Played();
    const auto& playing = instrument.State().playing;
    const bool preferred = instrument.Preferred().texts[row].has_value();
    const bool said = playing && playing->texts[row];
    std::string help = HelpOf(what);
    if (preferred)
        help = (mainView.HasGraph() ? "--" + std::string(what.name) +
                                          " on the command line stands before the sound's\n"
                                    : kHostSetsIt) +
               help;
    else if (!said)
        help += "\nThe sound does not say it.";
    SetQuiet(row, !said && !preferred);
    const Control& control = controls[row];
    if (control.number) {
        control.number->SetHelp(help);
        control.number->SetEnabled(!preferred);
        control.number->Show(ValueOf(row));
        return;
    }
    control.menu->SetHelp(help);
    control.menu->SetEnabled(!preferred);
    BMenuItem* item = control.menu->Menu()->ItemAt(static_cast<std::size_t>(ValueOf(row)));
    if (item && !item->IsMarked())
        item->SetMarked(true);
}

void PlayingControls::MessageReceived(BMessage* message) {
    int32 row = 0;
    if (message->what != kEditCode || message->FindInt32("row", &row) != B_OK)
        return CellGrid::MessageReceived(message);
    const auto index = static_cast<std::size_t>(row);
    const PlayingRow& what = PlayingRows()[index];
    NumberField* number = controls[index].number;
    int32 word = 0;
    message->FindInt32("word", &word);
    const std::optional<std::string> text =
        number ? number->Typed(*message) : std::string(what.words[static_cast<std::size_t>(word)]);
    const bool taken = mainView.Played().EditPlaying(what, text);
    if (number)
        number->TellFault(taken ? "" : "This must be " + std::string(what.allowed));
    if (!taken)
        return;
    mainView.ShowVoiceLimit();
    shown = mainView.Played().Changes();
    for (std::size_t i = 0; i < kPlayingRows; i++)
        Show(i);
}

} // namespace vexa
