// SPDX-License-Identifier: GPL-3.0-or-later
// Controls: views that send a message when they are used.
#pragma once

#include "kits/application/Invoker.h"
#include "kits/interface/View.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

class QWidget;
class QPushButton;

/// A control sends its message to the window that it is in, until another target is set. Window
/// thread.
class BControl : public BView, public BInvoker {
  public:
    BControl(BRect frame, const char* name, const char* label, BMessage* message,
             uint32 resizingMode, uint32 flags);

    void AttachedToWindow() override;

    const char* Label() const { return label.c_str(); }
    virtual void SetEnabled(bool enabled);
    bool IsEnabled() const;

  protected:
    void NoteLabel(const char* next) { label = next; }
    /// Puts the toolkit's control into the view.
    void SetContent(QWidget* content);

  private:
    std::string label;
};

/// A push button; sends its message when pressed by mouse or keyboard.
class BButton : public BControl {
  public:
    BButton(BRect frame, const char* name, const char* label, BMessage* message,
            uint32 resizingMode = B_FOLLOW_LEFT | B_FOLLOW_TOP,
            uint32 flags = B_WILL_DRAW | B_NAVIGABLE);

    /// Sets the size of the font in pixels; it is 12 at first.
    void SetFontSize(float size);
    void SetLabel(const char* next);
    /// Fits the button to a place that is dark in every set of colours: it has no frame until the
    /// pointer is on it.
    void SetOnDark();
    /// Stays down, as what it began goes on.
    void SetDown(bool down);
    /// Does what a press by a person does.
    void Press();
    /// Shows that Enter has the button's effect; what the key does is the window's affair.
    void MakeDefault();

  private:
    QPushButton* button;
};

/// A line of text that can be edited. Sends its message, with the text as string "be:text", when
/// the user confirms the text: with Enter, or by leaving the field after a change. Enter and Escape
/// give the keyboard back to the window; Escape takes back what was not confirmed, and then goes to
/// the window as B_KEY_DOWN. Ctrl+Z and Ctrl+Shift+Z take typing back and do it again; where there
/// is none they are the window's. A click or Tab into the field selects the text.
class BTextControl : public BControl {
  public:
    /// The height follows from the font, whatever the frame says. An empty or missing label takes
    /// no room.
    BTextControl(BRect frame, const char* name, const char* label, const char* text,
                 BMessage* message, uint32 resizingMode = B_FOLLOW_LEFT | B_FOLLOW_TOP,
                 uint32 flags = B_WILL_DRAW | B_NAVIGABLE);
    ~BTextControl() override;

    /// The text that was confirmed or set last.
    const std::string& Confirmed() const { return confirmed; }
    /// The text that the field shows, confirmed or not.
    const char* Text() const;
    /// Counts as confirmed, and sends nothing.
    void SetText(const char* text);
    /// Replaces the text as a person's typing does, without confirming it.
    void Type(const char* text);
    void SelectAll();
    /// Sets the words that the field shows dimly while it is empty.
    void SetPlaceholder(std::string_view text);
    std::string Placeholder() const;
    /// Does what Enter in the field does.
    void Confirm();

    /// Takes the message over, which is sent to the target whenever the user has changed the text,
    /// also back to the confirmed one.
    void SetModificationMessage(BMessage* message);
    /// True where the text differs from the one that was confirmed.
    bool IsEdited() const;
    /// Counts how often the text has changed, whoever changed it, or was confirmed.
    uint64 Changes() const { return changes; }
    /// Returns where the character at that byte of the text is shown, in pixels from the left; it
    /// lies beyond an edge where the character is scrolled out of the field.
    float PositionOf(std::size_t byte) const;

    /// Says what the text becomes when a person turns the wheel over the field, or presses Up or
    /// Down in it, by so many steps, with B_SHIFT_KEY and so on held. It is confirmed at once.
    using Stepping =
        std::function<std::string(const std::string& text, int steps, uint32 modifiers)>;
    void SetStepping(Stepping next);
    /// Sets the text that a click with Ctrl brings back, and confirms.
    void SetReset(std::string_view text);
    /// Takes the message over, which is sent to the target when the field loses the keyboard.
    void SetEndMessage(BMessage* message);

    void SetEnabled(bool enabled) override;
    bool IsFocus() const override;
    /// Shows that the text is not valid.
    void MarkWrong(bool wrong);

    /// Returns the height of all text fields, as BRect::Height counts it.
    static float PreferredHeight();
    /// Returns the pixels from the top of a text field down to the baseline of its text.
    static float BaselineOffset();

  private:
    class Line;

    void Replace(const std::string& next);

    Line* line;
    std::string confirmed;
    std::unique_ptr<BMessage> modification;
    std::unique_ptr<BMessage> end;
    uint64 changes = 0;
    mutable std::string text;
};

namespace kits {

/// Returns the largest font size, at most 12 and at least 8 pixels, at which the label fits the
/// width.
float FittingFontSize(std::string_view label, float width);

} // namespace kits
