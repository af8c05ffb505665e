// SPDX-License-Identifier: GPL-3.0-or-later
// A piano that shows what sounds, and plays.
#pragma once

#include "app/strip/PianoKeys.h"
#include "kits/interface/View.h"

#include <bitset>
#include <optional>
#include <string>
#include <vector>

namespace vexa {

class VexaView;

/// The piano has as many keys as the width has room for; the wheel and the arrows at its ends move
/// on by octaves. A press plays, the louder the nearer to the front of the key it is, and sliding
/// plays on. With the keyboard Left, Right, Up and Down choose a key, by semitones and octaves, and
/// Space or Enter begins and ends its note. Window thread.
class Piano : public BView {
  public:
    /// Plays and shows the notes of the main view, which outlives it.
    explicit Piano(VexaView& mainView);

    /// Shows what sounds now.
    void Refresh();
    const PianoKeys& Keys() const { return keys; }
    /// True where the key is shown as one that sounds.
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
    /// The keys that are seen.
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
    /// The numbers of the keys that are seen.
    std::vector<int> seen;
    std::bitset<128> lit;
    /// The key that the mouse or the keyboard holds.
    std::optional<int> played;
    /// The one that the keyboard would play.
    int chosen = 60;
    float turned = 0;
    /// A person has chosen which keys are seen.
    bool scrolled = false;
};

} // namespace vexa
