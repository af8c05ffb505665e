// SPDX-License-Identifier: GPL-3.0-or-later
// A question or a message that waits for a person.
#pragma once

#include "kits/support/SupportDefs.h"

#include <functional>
#include <string>
#include <vector>

enum button_width { B_WIDTH_AS_USUAL };
enum alert_type { B_INFO_ALERT, B_WARNING_ALERT, B_STOP_ALERT };

/// An alert asks a person one question. It is made by new, and Go or Show deletes it. Window
/// thread.
class BAlert {
  public:
    /// An alert has up to three buttons; Enter presses the last of them.
    BAlert(const char* title, const char* text, const char* button1, const char* button2 = nullptr,
           const char* button3 = nullptr, button_width width = B_WIDTH_AS_USUAL,
           alert_type type = B_INFO_ALERT);

    const std::string& Title() const { return title; }
    const std::string& Text() const { return text; }
    const std::vector<std::string>& Buttons() const { return buttons; }
    alert_type Type() const { return type; }

    /// More about the text: below it, or where it is long in a box that the person can open.
    void SetDetails(const std::string& next) { details = next; }
    const std::string& Details() const { return details; }

    /// Sets the button that Enter presses, by its index; it is the last one at first.
    void SetDefaultButton(std::size_t index) { defaultButton = index; }

    /// Shows the alert, waits for an answer and returns the index of the button. Meanwhile no
    /// message is handled; drawing and pulses go on. In a program that was told to end by a signal
    /// it goes to standard error, and the answer is 0.
    int32 Go();

    /// Shows the alert and returns; nothing waits for the answer. Nothing is shown while one of the
    /// same text is.
    void Show();
    /// Closes what Show has shown of this text, as what it says holds no longer.
    static void Withdraw(const std::string& text);

    /// Answers alerts in a person's stead, from now on; an empty function gives them back.
    using Responder = std::function<int32(const BAlert&)>;
    static void SetResponder(Responder responder);

  private:
    struct Box;
    Box MakeBox() const;
    bool SaidToNobody() const;

    std::string title;
    std::string text;
    std::string details;
    std::vector<std::string> buttons;
    std::size_t defaultButton = 0;
    alert_type type;
};
