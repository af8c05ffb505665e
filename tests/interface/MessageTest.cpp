// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/application/Handler.h"
#include "kits/application/MessageQueue.h"
#include "support/WindowStage.h"

#include <QApplication>
#include <memory>
#include <new>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;

class MessageListener : public BHandler {
  public:
    void MessageReceived(BMessage* message) override {
        codes.push_back(message->what);
        if (message->what == 3)
            throw std::bad_alloc();
        if (message->what != 1)
            return;
        // As an alert does that waits for the user.
        kits::MessageQueue::Instance().Deliver();
        codes.push_back(100);
    }
    std::vector<uint32> codes;
};

TEST(MessageQueue, DeliversOneMessageAtATimeInOrder) {
    MessageListener listener;
    const BMessenger messenger(&listener);
    messenger.SendMessage(BMessage(1));
    std::thread([&] { messenger.SendMessage(BMessage(2)); }).join();
    EXPECT_THAT(listener.codes, ElementsAre());
    kits::MessageQueue::Instance().Deliver();
    EXPECT_THAT(listener.codes, ElementsAre(1, 100, 2));
}

TEST(MessageQueue, AHandlerWithoutMemoryIsReportedAndTheNextMessageComes) {
    const test::AlertLog alerts;
    MessageListener listener;
    const BMessenger messenger(&listener);
    messenger.SendMessage(BMessage(3));
    messenger.SendMessage(BMessage(2));
    const auto deliver = [] { kits::MessageQueue::Instance().Deliver(); };
    QMetaObject::invokeMethod(qApp, deliver, Qt::QueuedConnection);
    QApplication::processEvents();
    EXPECT_THAT(alerts.texts, ElementsAre("There is not enough memory for that."));
    test::Settle();
    EXPECT_THAT(listener.codes, ElementsAre(3, 2));
}

/// A key or a pulse may have opened it.
TEST(MessageQueue, NothingIsDeliveredWhileAnAlertWaits) {
    test::AlertLog alerts;
    MessageListener listener;
    alerts.meanwhile = [&] {
        BMessenger(&listener).SendMessage(BMessage(2));
        test::Settle();
        EXPECT_THAT(listener.codes, ElementsAre());
    };
    (new BAlert("Vexa", "Well?", "Ok"))->Go();
    test::Settle();
    EXPECT_THAT(listener.codes, ElementsAre(2));
}

TEST(MessageQueue, WhatIsForAHandlerThatHasGoneIsDropped) {
    auto listener = std::make_unique<MessageListener>();
    const BMessenger messenger(listener.get());
    EXPECT_EQ(messenger.SendMessage(BMessage(2)), B_OK);
    listener.reset();
    kits::MessageQueue::Instance().Deliver();
    EXPECT_EQ(messenger.SendMessage(BMessage(2)), B_NO_INIT);
    EXPECT_FALSE(messenger.IsValid());
}

} // namespace
