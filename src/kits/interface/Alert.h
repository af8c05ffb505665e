// SPDX-License-Identifier: GPL-3.0-or-later
// A question to the user, or a message.
#pragma once

#include "kits/support/SupportDefs.h"

#include <functional>
#include <string>
#include <vector>

enum button_width { B_WIDTH_AS_USUAL };
enum alert_type { B_INFO_ALERT, B_WARNING_ALERT, B_STOP_ALERT };

/// Asks the user one question. An alert is created by `new`, and Go or Show deletes it. Window
/// thread.
class BAlert {
  public:
    /// The alert has up to three buttons. Enter presses the last of them unless SetDefaultButton
    /// says otherwise.
    BAlert(const char* title, const char* text, const char* button1, const char* button2 = nullptr,
           const char* button3 = nullptr, button_width width = B_WIDTH_AS_USUAL,
           alert_type type = B_INFO_ALERT);

    const std::string& Title() const { return title; }
    const std::string& Text() const { return text; }
    const std::vector<std::string>& Buttons() const { return buttons; }
    alert_type Type() const { return type; }

    /// Sets a sentence that is shown before the alert's text: what the alert means to the user.
    void SetHeading(const std::string& next) { heading = next; }
    const std::string& Heading() const { return heading; }

    /// Sets further text. A short one is shown below the alert's text, or between its heading and
    /// its text; a long one in a box that the user can open.
    void SetDetails(const std::string& next) { details = next; }
    const std::string& Details() const { return details; }

    /// Sets the index of the button that Enter presses; the default is the last one.
    void SetDefaultButton(std::size_t index) { defaultButton = index; }

    /// Shows the alert, waits for the answer and returns the index of the button. Meanwhile no
    /// message is handled, but drawing and pulses go on. If a signal has told the program to end,
    /// the text is written to standard error instead and the result is 0.
    int32 Go();

    /// Shows the alert and returns at once, without waiting for the answer. Does nothing while an
    /// alert with the same text is shown this way.
    void Show();
    /// Closes the alert with this text that Show has opened, because the text no longer holds.
    static void Withdraw(const std::string& text);

    /// Sets a function that answers all alerts in place of the user from now on. An empty function
    /// has them shown to the user again.
    using Responder = std::function<int32(const BAlert&)>;
    static void SetResponder(Responder responder);

  private:
    struct Box;
    Box MakeBox() const;
    bool SaidToNobody() const;
    const std::string& First() const { return heading.empty() ? text : heading; }

    std::string title;
    std::string text;
    std::string heading;
    std::string details;
    std::vector<std::string> buttons;
    std::size_t defaultButton = 0;
    alert_type type;
};
