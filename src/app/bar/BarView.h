// SPDX-License-Identifier: GPL-3.0-or-later
// The bar stands in the logo bar between its pictures.
#pragma once

#include "app/bar/WindowRecorder.h"
#include "kits/interface/View.h"

#include <memory>
#include <optional>
#include <string>

class BButton;
class BMenu;
class BMenuField;

namespace vexa {

class LevelMeter;
class VexaView;

/// From left to right it has the sound's name, between buttons for the previous one and the next,
/// with a mark where it has changed and what is worth knowing of it; the audio device, whose menu
/// chooses it and the MIDI source; the voices and the share of the time that they take; the level;
/// the button that records, and the one that silences. What a plug-in's host has is left out where
/// one plays, and what a narrow window has no room for. Window thread.
class BarView : public BView {
  public:
    /// Makes the bar of the main view, which outlives it, as wide as the frame.
    BarView(BRect frame, VexaView& mainView);
    ~BarView() override;

    void Draw(BRect update) override;
    void FrameResized(float width, float height) override;
    void MessageReceived(BMessage* message) override;
    /// Shows what has become of all that since the last call; to be called some ten times a second.
    void Refresh();

    /// Begins a recording, or ends the one that goes on. What becomes of it is shown in the place
    /// of the sound's name for a while.
    void ToggleRecording();
    bool IsRecording() const { return recorder && recorder->IsRecording(); }

    /// Returns the text in the place of the name.
    const std::string& Caption() const { return caption; }
    BMenu& DeviceMenu() { return *deviceMenu; }

  private:
    void AddDevice();
    BButton* AddArrow(const char* label, const char* words, uint32 code);
    void FillDeviceMenu();
    void ShowDevice();
    void ShowSteps();
    void ShowVoices();
    void Announce(const std::string& text);
    void Arrange();

    VexaView& mainView;
    BMenu* deviceMenu = nullptr;
    BMenuField* device = nullptr;
    BButton* previous = nullptr;
    BButton* next = nullptr;
    BButton* undo = nullptr;
    BButton* redo = nullptr;
    BButton* record = nullptr;
    BButton* silence = nullptr;
    LevelMeter* meter = nullptr;
    std::unique_ptr<WindowRecorder> recorder;

    BRect nameBox;
    BRect voicesBox;
    bool voicesFit = true;
    std::string caption;
    std::string voices;
    std::string load;
    /// The text that is shown for a while instead of the name, and the pulses for which it still
    /// is.
    std::string announcement;
    int pulsesLeft = 0;
};

} // namespace vexa
