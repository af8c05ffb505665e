// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Alerts.h"

#include "kits/interface/Alert.h"

#include <cstdio>

namespace vexa {

namespace {

BAlert* NewErrorAlert(const std::string& text, const std::string& details,
                      const std::string& heading = "") {
    auto* alert =
        new BAlert("Error", text.c_str(), "Ok", nullptr, nullptr, B_WIDTH_AS_USUAL, B_STOP_ALERT);
    alert->SetDetails(details);
    alert->SetHeading(heading);
    return alert;
}

/// Returns the details below an alert, in which its own sentence is not repeated.
std::string Without(const std::string& alert, std::string details) {
    const std::string sentence = alert + ' ';
    if (const std::size_t place = details.find(sentence); place != details.npos)
        details.erase(place, sentence.size());
    return details;
}

} // namespace

void ErrorAlert(const std::string& text, const std::string& details) {
    NewErrorAlert(text, details)->Go();
}

void ShowErrorAlert(const std::string& text, const std::string& details,
                    const std::string& heading) {
    NewErrorAlert(text, details, heading)->Show();
}

void ShowError(const kits::Error& error, const std::string& heading) {
    Print(error);
    if (error.alerts.empty())
        ErrorAlert(error.text);
    for (const std::string& alert : error.alerts) {
        const bool isLast = &alert == &error.alerts.back();
        NewErrorAlert(alert, isLast ? Without(alert, error.text) : "", isLast ? heading : "")->Go();
    }
}

void Print(const kits::Error& error) {
    if (!error.text.empty())
        std::fprintf(stderr, "vexa: %s\n", error.text.c_str());
}

} // namespace vexa
