// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/strip/Piano.h"

#include "app/VexaView.h"
#include "tuning/Tuning.h"
#include "views/Theme.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

namespace vexa {

namespace {

constexpr int kWhiteOctave = 7;
/// The C near the middle of the piano, and the number of the octave of MIDI key 0.
constexpr int kMiddleC = 60;
constexpr int kFirstOctave = -1;

// In pixels.

constexpr float kOctaveArrowWidth = 12;
constexpr float kWhiteWidth = 22;
constexpr float kKeyLabelSize = 9;

/// The velocities at the back and at the front of a key, and for the computer's keyboard.
constexpr int kSoftest = 20;
constexpr int kLoudest = 127;
constexpr int kUsualVelocity = 100;

std::string NameOf(int key) {
    static constexpr const char* kNames[kKeysInOctave] = {"C",  "C#", "D",  "D#", "E",  "F",
                                                          "F#", "G",  "G#", "A",  "A#", "B"};
    std::string name = kNames[key % kKeysInOctave];
    name += std::to_string(key / kKeysInOctave + kFirstOctave);
    return name;
}

} // namespace

Piano::Piano(VexaView& mainView)
    : BView({0, 0, 400, 43}, "piano", B_FOLLOW_NONE,
            B_WILL_DRAW | B_FRAME_EVENTS | B_NAVIGABLE | B_KEEPS_POINTER),
      mainView(mainView) {
    SetViewColor(Colors().panel);
    BFont font = *be_plain_font();
    font.SetSize(kKeyLabelSize);
    SetFont(&font);
    SetToolTip("Plays, louder towards the front of a key. The wheel moves on by octaves");
    FrameResized(Bounds().Width(), Bounds().Height());
}

void Piano::FrameResized(float width, float) {
    const float room = width + 1 - 2 * kOctaveArrowWidth;
    const int count = std::clamp(static_cast<int>(std::round(room / kWhiteWidth)), kWhiteOctave,
                                 PianoKeys::kWhiteKeys);
    const int octavesBelow = count / kWhiteOctave / 2;
    Arrange(scrolled ? keys.First() : PianoKeys::WhiteOf(kMiddleC) - octavesBelow * kWhiteOctave,
            count);
}

/// Shows `count` white keys from the white key `first` on, or as near to it as the range of keys
/// allows.
void Piano::Arrange(int first, int count) {
    const BRect bounds = Bounds();
    keys = {{kOctaveArrowWidth, 0, bounds.right - kOctaveArrowWidth, bounds.bottom},
            std::clamp(first, 0, PianoKeys::kWhiteKeys - count),
            count};
    seen.clear();
    for (int key = 0; key < kKeys; key++) {
        if (keys.Has(key))
            seen.push_back(key);
    }
    DescriptionChanged();
    Invalidate();
}

void Piano::Scroll(int octaves) {
    scrolled = true;
    Arrange(keys.First() + octaves * kWhiteOctave, keys.Count());
}

void Piano::Refresh() {
    std::bitset<kKeys> next;
    for (const voice& slot : mainView.Engine().voices) {
        const VoiceState::Seen seen = slot.state.Look();
        const long key = std::lround(slot.key * 127);
        if (seen.Active() && !slot.released && key >= 0 && key < kKeys)
            next.set(static_cast<std::size_t>(key));
    }
    const std::bitset<kKeys> changed = next ^ lit;
    lit = next;
    for (int key = 0; changed.any() && key < kKeys; key++) {
        if (changed[static_cast<std::size_t>(key)] && keys.Has(key))
            Invalidate(keys.FrameOf(key));
    }
    if (changed[static_cast<std::size_t>(chosen)])
        DescriptionChanged();
}

/// Releases the held key and plays `key`, if there is one.
void Piano::Play(std::optional<int> key, int velocity) {
    if (key == played)
        return;
    if (played)
        mainView.Piano().Release(static_cast<uchar>(*played));
    played = key;
    if (key)
        mainView.Piano().Press(static_cast<uchar>(*key), static_cast<uchar>(velocity));
}

int Piano::VelocityAt(BPoint where, int key) const {
    const BRect frame = keys.FrameOf(key);
    const float share = std::clamp((where.y - frame.top) / frame.Height(), 0.0F, 1.0F);
    return static_cast<int>(std::lround(kSoftest + share * (kLoudest - kSoftest)));
}

void Piano::MouseDown(BPoint where) {
    uint32 buttons = 0;
    GetMouse(&where, &buttons);
    if (buttons != B_PRIMARY_MOUSE_BUTTON)
        return;
    if (where.x < kOctaveArrowWidth)
        return Scroll(-1);
    if (where.x > Bounds().right - kOctaveArrowWidth)
        return Scroll(1);
    if (const std::optional<int> key = keys.KeyAt(where)) {
        Play(key, VelocityAt(where, *key));
        chosen = *key;
        DescriptionChanged();
    }
}

void Piano::MouseUp(BPoint) {
    Play(std::nullopt, 0);
}

void Piano::MouseMoved(BPoint where, uint32, const BMessage*) {
    uint32 buttons = 0;
    GetMouse(&where, &buttons);
    if (!(buttons & B_PRIMARY_MOUSE_BUTTON) || !played)
        return;
    // A pointer above or below the keys still plays them.
    where.y = std::clamp(where.y, 0.0F, Bounds().bottom);
    if (const std::optional<int> key = keys.KeyAt(where))
        Play(key, VelocityAt(where, *key));
}

bool Piano::WheelMoved(BPoint, BPoint steps) {
    turned += steps.x - steps.y;
    const float whole = std::trunc(turned);
    turned -= whole;
    if (whole != 0)
        Scroll(static_cast<int>(whole));
    return true;
}

/// Chooses the key for the computer's keyboard and scrolls it into view.
void Piano::Choose(int key) {
    chosen = std::clamp(key, 0, kKeys - 1);
    while (PianoKeys::WhiteOf(chosen) < keys.First())
        Scroll(-1);
    while (!keys.Has(chosen) && keys.First() + keys.Count() < PianoKeys::kWhiteKeys)
        Scroll(1);
    DescriptionChanged();
    Invalidate();
}

bool Piano::KeyDown(const kits::KeyPress& press) {
    switch (press.key) {
    case kits::Key::Left:
        Choose(chosen - 1);
        return true;
    case kits::Key::Right:
        Choose(chosen + 1);
        return true;
    case kits::Key::Down:
        Choose(chosen - kKeysInOctave);
        return true;
    case kits::Key::Up:
        Choose(chosen + kKeysInOctave);
        return true;
    default:
        if (press.key != kits::Key::Enter && press.character != U' ')
            return false;
        if (!press.repeat)
            Activate(std::nullopt);
        return true;
    }
}

void Piano::FocusChanged() {
    if (!IsFocus())
        Play(std::nullopt, 0);
    Invalidate();
}

kits::AccessibleThing Piano::Describe() const {
    kits::AccessibleThing piano;
    piano.role = kits::AccessibleRole::Group;
    piano.name = Name();
    piano.description = "key " + NameOf(chosen);
    return piano;
}

kits::AccessibleThing Piano::DescribePart(std::size_t index) const {
    kits::AccessibleThing part;
    const int key = seen[index];
    part.role = kits::AccessibleRole::Button;
    part.name = NameOf(key);
    part.description = IsLit(key) ? "sounds" : "";
    part.frame = keys.FrameOf(key);
    part.chosen = key == chosen;
    part.action = "Play";
    return part;
}

/// Begins or ends the note of a key.
void Piano::Activate(std::optional<std::size_t> part) {
    const int key = part && *part < seen.size() ? seen[*part] : chosen;
    chosen = key;
    DescriptionChanged();
    // What silences all has released the key too.
    if (played && !mainView.Piano().IsDown(static_cast<uchar>(*played)))
        played.reset();
    Play(played == key ? std::nullopt : std::optional(key), kUsualVelocity);
}

void Piano::ColorsChanged() {
    SetViewColor(Colors().panel);
}

void Piano::DrawKey(int key) {
    const Theme& colors = Colors();
    const bool black = PianoKeys::IsBlack(key);
    const BRect frame = keys.FrameOf(key);
    SetHighColor(IsLit(key) ? colors.soundingKey : black ? colors.blackKey : colors.whiteKey);
    FillRect(frame);
    SetHighColor(black ? colors.blackKey : colors.knobEdge);
    StrokeLine({frame.left, frame.top}, {frame.left, frame.bottom});
    StrokeLine({frame.left, frame.bottom}, {frame.right, frame.bottom});
    StrokeLine({frame.right, frame.top}, {frame.right, frame.bottom});
    if (IsFocus() && key == chosen) {
        SetHighColor(colors.accent);
        StrokeRoundRect(frame.InsetByCopy(1.5F, 1.5F), 1, 2);
    }
    if (key % kKeysInOctave == 0) {
        SetHighColor({90, 90, 96});
        DrawString(NameOf(key), {frame.left + 4, frame.bottom - 4});
    }
}

void Piano::DrawArrow(bool right) {
    const int end = keys.First() + keys.Count();
    const bool more = right ? end < PianoKeys::kWhiteKeys : keys.First() > 0;
    const float x = right ? Bounds().right - kOctaveArrowWidth / 2 + 1 : kOctaveArrowWidth / 2 - 1;
    const float y = Bounds().bottom / 2;
    const float tip = right ? 3.0F : -3.0F;
    SetHighColor(more ? Colors().text : Colors().dimText);
    const BPoint corners[] = {{x - tip, y - 5}, {x + tip, y}, {x - tip, y + 5}};
    FillPolygon(corners);
}

void Piano::Draw(BRect) {
    for (const bool black : {false, true}) {
        for (int key = 0; key < kKeys; key++) {
            if (keys.Has(key) && PianoKeys::IsBlack(key) == black)
                DrawKey(key);
        }
    }
    DrawArrow(false);
    DrawArrow(true);
}

} // namespace vexa
