// SPDX-License-Identifier: GPL-3.0-or-later
// The bar of controls between the pictures of the logo bar.
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
class RecordButton;
class VexaView;

/// From left to right the bar has: the caption of the sound (VexaView::Caption), between buttons
/// for the previous and the next sound; buttons for undo and redo; the audio device, whose menu
/// chooses it and the MIDI source; the number of voices and their share of the time; the level
/// meter; the record button, which shows how long it has recorded; and the silence button. If a
/// plug-in plays, the device, the meter and the record button are left out, as its host has them; a
/// narrow bar leaves out what it has no room for. Window thread.
class BarView : public BView {
  public:
    /// Makes a bar for the main view, which outlives it, as wide as `frame`.
    BarView(BRect frame, VexaView& mainView);
    ~BarView() override;

    /// Returns the width, as BRect::Width counts it, at which all of it has room.
    float PreferredWidth() const;

    void Draw(BRect update) override;
    /// A press on the caption asks the window to describe the sound.
    void MouseDown(BPoint where) override;
    void MouseMoved(BPoint where, uint32 transit, const BMessage* dragged) override;
    void FrameResized(float width, float height) override;
    void MessageReceived(BMessage* message) override;
    /// The only part is the text about voices.
    std::size_t CountParts() const override { return voicesFit ? 1 : 0; }
    kits::AccessibleThing DescribePart(std::size_t index) const override;
    /// Shows changes of all this since the last call. To be called about ten times a second.
    void Refresh();

    /// Begins a recording or ends the present one; does nothing during one of the command line,
    /// which is not interrupted. The bar shows the name of the finished file in place of the
    /// sound's name for a while; an alert reports a failure.
    void ToggleRecording();
    bool IsRecording() const { return recorder && recorder->IsRecording(); }

    /// Returns the text in the name's place.
    const std::string& Caption() const { return caption; }
    /// Returns where the text is.
    BRect CaptionFrame() const { return nameBox; }
    BRect VoicesFrame() const { return voicesBox; }
    BMenu& DeviceMenu() { return *deviceMenu; }

  private:
    void AddDevice();
    BButton* AddArrow(const char* label, const char* words, uint32 code);
    void FillDeviceMenu();
    void ShowDevice();
    void ShowSteps();
    void ShowVoices();
    void TellPointed();
    bool RecordsElsewhere() const;
    void ShowRecording();
    void Announce(const std::string& text);
    void Arrange();

    VexaView& mainView;
    BMenu* deviceMenu = nullptr;
    BMenuField* device = nullptr;
    BButton* previous = nullptr;
    BButton* next = nullptr;
    BButton* undo = nullptr;
    BButton* redo = nullptr;
    RecordButton* record = nullptr;
    BButton* silence = nullptr;
    LevelMeter* meter = nullptr;
    std::unique_ptr<WindowRecorder> recorder;

    BRect nameBox;
    BRect voicesBox;
    bool voicesFit = true;
    /// Where the pointer is, if it is on the bar.
    std::optional<BPoint> pointer;
    std::string caption;
    std::string voices;
    std::string load;
    /// The text shown for a while instead of the name, and the pulses that remain for it.
    std::string announcement;
    int pulsesLeft = 0;
};

} // namespace vexa
