// SPDX-License-Identifier: GPL-3.0-or-later
// A handler that keeps the messages it receives.
#pragma once

#include "kits/application/Handler.h"

#include <vector>

namespace test {

class MessageLog : public BHandler {
  public:
    void MessageReceived(BMessage* message) override { messages.push_back(*message); }
    std::vector<BMessage> messages;
};

} // namespace test
