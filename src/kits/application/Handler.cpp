// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/application/Handler.h"

#include "kits/application/MessageQueue.h"

BHandler::BHandler(const char* name)
    : name(name ? name : ""), target(std::make_shared<kits::HandlerTarget>(this)) {}

BHandler::~BHandler() {
    target->handler = nullptr;
    if (looper)
        looper->RemoveHandler(this);
}

void BHandler::MessageReceived(BMessage*) {}

void BHandler::SetName(const char* next) {
    name = next ? next : "";
}

BMessenger::BMessenger(const BHandler* handler) {
    if (handler)
        target = handler->target;
}

BLooper::BLooper(const char* name) : BHandler(name) {}

BLooper::~BLooper() {
    for (BHandler* handler : handlers)
        handler->looper = nullptr;
}

void BLooper::PostMessage(const BMessage& message) {
    BMessenger(this).SendMessage(message);
}

void BLooper::AddHandler(BHandler* handler) {
    if (handler->looper)
        handler->looper->RemoveHandler(handler);
    handler->looper = this;
    handlers.push_back(handler);
}

bool BLooper::RemoveHandler(BHandler* handler) {
    if (std::erase(handlers, handler) == 0)
        return false;
    handler->looper = nullptr;
    return true;
}
