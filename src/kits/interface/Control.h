// SPDX-License-Identifier: GPL-3.0-or-later
// Controls: views that send a message when the user operates them.
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

/// A control sends its message to the window that contains it, until another target is set. Window
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
    /// Fills the view with the toolkit's control.
    void SetContent(QWidget* content);

  private:
    std::string label;
};

/// A push button. It sends its message when it is pressed by mouse or keyboard.
class BButton : public BControl {
  public:
    BButton(BRect frame, const char* name, const char* label, BMessage* message,
            uint32 resizingMode = B_FOLLOW_LEFT | B_FOLLOW_TOP,
            uint32 flags = B_WILL_DRAW | B_NAVIGABLE);

    /// Sets the font size in pixels. Initially it is the largest up to 12 at which the label fits.
    void SetFontSize(float size);
    void SetLabel(const char* next);
    /// Adapts the button to a background that is dark in every set of colours: it has no frame
    /// until the pointer is on it.
    void SetOnDark();
    /// Shows the button as pressed while the action that it has started goes on.
    void SetDown(bool down);
    /// Has the effect of a press by the user.
    void Press();
    /// Marks the button visibly as the one that Enter presses. The key itself is handled by the
    /// window.
    void MakeDefault();

  private:
    QPushButton* button;
};

/// A line of text that can be edited. It sends its message, with the text as string "be:text", when
/// the user confirms the text, either by Enter or by leaving the field after a change. Enter and
/// Escape give the keyboard back to the window, where the next Tab goes on from the field. Escape
/// restores the confirmed text, and then reaches the window as B_KEY_DOWN. Ctrl+Z and Ctrl+Shift+Z
/// undo and redo typing; if there is no typing to undo or redo, the window gets them. A click or
/// Tab into the field selects the text. A field that is left shows the beginning of its text.
class BTextControl : public BControl {
  public:
    /// The height follows from the font; the frame's height is ignored. An empty or missing label
    /// takes no room.
    BTextControl(BRect frame, const char* name, const char* label, const char* text,
                 BMessage* message, uint32 resizingMode = B_FOLLOW_LEFT | B_FOLLOW_TOP,
                 uint32 flags = B_WILL_DRAW | B_NAVIGABLE);
    ~BTextControl() override;

    /// Returns the text that was last confirmed or set.
    const std::string& Confirmed() const { return confirmed; }
    /// Returns the text that the field shows, confirmed or not.
    const char* Text() const;
    /// Sets the text, which counts as confirmed, without sending a message.
    void SetText(const char* text);
    /// Replaces the text as the user's typing does, without confirming it.
    void Type(const char* text);
    void SelectAll();
    /// Sets a hint that the field shows dimly while it is empty.
    void SetPlaceholder(std::string_view text);
    std::string Placeholder() const;
    /// Confirms the text and sends the message, as Enter in the field does.
    void Confirm();

    /// Takes ownership of the message, which is sent to the target whenever the user or Type has
    /// changed the text, even if that restores the confirmed text.
    void SetModificationMessage(BMessage* message);
    /// Returns true if the text differs from the confirmed one.
    bool IsEdited() const;
    /// Returns the number of changes and confirmations of the text so far, by the user or by the
    /// program.
    uint64 Changes() const { return changes; }
    /// Returns the position of the character that starts at `byte` of the text, in pixels from the
    /// left edge. It lies outside the field if the character is scrolled out of view.
    float PositionOf(std::size_t byte) const;

    /// Returns the new text after the user has turned the wheel over the field by `steps`, or
    /// pressed Up (1) or Down (-1) in it. `modifiers` is the sum of B_SHIFT_KEY and the like. The
    /// new text is confirmed at once.
    using Stepping =
        std::function<std::string(const std::string& text, int steps, uint32 modifiers)>;
    void SetStepping(Stepping next);
    /// Sets the text that a click with Ctrl restores and confirms.
    void SetReset(std::string_view text);
    /// Makes Escape empty the field instead of restoring the confirmed text.
    void SetEscapeClears();
    /// Sets what the Down key does in a field without stepping.
    void SetDownAction(std::function<void()> next);
    /// Sets what Escape does in place of restoring the confirmed text, if it returns true.
    void SetEscapeAction(std::function<bool()> next);
    /// Makes Enter and Escape give the keyboard to this view instead of the window.
    void SetKeyboardTo(BView& next) { heir = &next; }
    /// Puts the field behind a view in the order of the Tab key. Both must be in one window.
    void TabAfter(const BView& view);
    /// Takes ownership of the message, which is sent to the target when the field loses the focus.
    void SetEndMessage(BMessage* message);

    void SetEnabled(bool enabled) override;
    bool IsFocus() const override;
    /// Shows the field as invalid, or as valid again.
    void MarkWrong(bool wrong);

    /// Returns the height of all text fields, as BRect::Height counts it.
    static float PreferredHeight();
    /// Returns the distance from the top of a text field to the baseline of its text, in pixels.
    static float BaselineOffset();

  private:
    class Line;

    void Replace(const std::string& next);

    Line* line;
    std::string confirmed;
    std::unique_ptr<BMessage> modification;
    std::unique_ptr<BMessage> end;
    BView* heir = nullptr;
    uint64 changes = 0;
    mutable std::string text;
};

namespace kits {

/// Returns the largest whole font size from 8 to 12 pixels at which the label fits the width, or 8
/// if none does.
float FittingFontSize(std::string_view label, float width);

} // namespace kits
