// SPDX-License-Identifier: GPL-3.0-or-later
// A piano that shows the sounding notes and plays.
#pragma once

#include "app/strip/PianoKeys.h"
#include "kits/interface/View.h"

#include <bitset>
#include <optional>
#include <string>
#include <vector>

namespace vexa {

class VexaView;

/// The piano has as many keys as the width has room for; the mouse wheel and the arrows at its ends
/// scroll it by octaves. A press plays a note, louder towards the front of the key, and sliding
/// plays the keys it reaches. On the keyboard, Left and Right choose a key by semitones, Up and
/// Down by octaves, and Space or Enter begins and ends its note. Window thread.
class Piano : public BView {
  public:
    /// Makes a piano that plays and shows the notes of the main view, which outlives it.
    explicit Piano(VexaView& mainView);

    /// Shows the keys that sound now.
    void Refresh();
    const PianoKeys& Keys() const { return keys; }
    /// Returns whether the key is shown as sounding.
    bool IsLit(int key) const { return lit[static_cast<std::size_t>(key)]; }

    void Draw(BRect update) override;
    void ColorsChanged() override;
    void FrameResized(float width, float height) override;
    void MouseDown(BPoint where) override;
    void MouseUp(BPoint where) override;
    void MouseMoved(BPoint where, uint32 transit, const BMessage* dragged) override;
    bool WheelMoved(BPoint where, BPoint steps) override;
    bool KeyDown(const kits::KeyPress& press) override;
    void FocusChanged() override;
    kits::AccessibleThing Describe() const override;
    /// Returns the number of visible keys.
    std::size_t CountParts() const override { return seen.size(); }
    kits::AccessibleThing DescribePart(std::size_t index) const override;
    void Activate(std::optional<std::size_t> part) override;

  private:
    void Arrange(int first, int count);
    void Scroll(int octaves);
    void Play(std::optional<int> key, int velocity);
    int VelocityAt(BPoint where, int key) const;
    void DrawKey(int key);
    void DrawArrow(bool right);
    void Choose(int key);

    VexaView& mainView;
    PianoKeys keys;
    /// The MIDI numbers of the visible keys.
    std::vector<int> seen;
    std::bitset<128> lit;
    /// The key that the mouse or the keyboard holds.
    std::optional<int> played;
    /// The key that the computer's keyboard would play.
    int chosen = 60;
    float turned = 0;
    /// The user has scrolled, so a change of the width keeps the first key.
    bool scrolled = false;
};

} // namespace vexa
