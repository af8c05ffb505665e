// SPDX-License-Identifier: GPL-3.0-or-later
// A field for a text of several lines.
#pragma once

#include "kits/interface/Control.h"

#include <string>
#include <string_view>

namespace kits {

/// A text of several lines that can be edited. It sends its message, with the text as string
/// "be:text", when the user leaves the box after a change, or presses Ctrl Enter, which gives the
/// keyboard back to the window. Enter begins a new line and Tab leaves the box. Escape first takes
/// back what was typed, which Ctrl Z restores; if nothing was typed, the window gets the key. It
/// also gets Ctrl Z and Ctrl Shift Z if there is no typing to undo or redo. Window thread.
class TextBox : public BControl {
  public:
    TextBox(BRect frame, const char* name, BMessage* message, uint32 resizingMode = B_FOLLOW_NONE,
            uint32 flags = B_WILL_DRAW | B_NAVIGABLE);
    ~TextBox() override;

    /// Returns the text that was last confirmed or set.
    const std::string& Confirmed() const { return confirmed; }
    /// Returns the text that the box shows, confirmed or not. Lines end with '\n', but a text that
    /// was set and not edited is returned as it is, whatever ends its lines.
    std::string Text() const { return IsEdited() ? Shown() : confirmed; }
    /// Sets the text, which counts as confirmed, without sending a message.
    void SetText(std::string_view text);
    bool IsEdited() const { return Shown() != shown; }
    /// Confirms the text and sends the message.
    void Confirm();
    /// Shows the box as invalid, or as valid again.
    void MarkWrong(bool wrong);

  private:
    class Lines;

    std::string Shown() const;

    Lines* lines;
    std::string confirmed;
    /// What Shown returns while the confirmed text is shown.
    std::string shown;
};

} // namespace kits
