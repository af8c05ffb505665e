// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Session.h"

#include "kits/storage/ProgramFolder.h"

#include <cstdio>
#include <utility>

#include <unistd.h>

namespace vexa {

namespace {

using kits::OscMessage;
using kits::Result;

constexpr const char* kAnnounce = "/nsm/server/announce";
constexpr const char* kOpen = "/nsm/client/open";
constexpr const char* kSave = "/nsm/client/save";
constexpr const char* kShow = "/nsm/client/show_optional_gui";
constexpr const char* kHide = "/nsm/client/hide_optional_gui";
constexpr const char* kPing = "/osc/ping";
constexpr const char* kReply = "/reply";
constexpr const char* kError = "/error";

// The lowest version of the protocol that has all messages used here.

constexpr int32 kMajor = 1;
constexpr int32 kMinor = 0;

// The protocol's error codes.

constexpr int32 kNotNow = -8;
constexpr int32 kBadProject = -9;
constexpr int32 kNotCreated = -10;

} // namespace

Result<std::unique_ptr<Session>> Session::Join(const std::string& url, bool hasWindow,
                                               const Patience& patience) {
    auto manager = kits::OscPeer::Open(url);
    if (!manager)
        return manager.Fault();
    std::unique_ptr<Session> session(new Session(*std::move(manager), hasWindow, patience));
    if (const Result<void> welcome = session->AwaitWelcome(); !welcome)
        return kits::Error{"the session manager at " + url + ' ' + welcome.Fault().text};
    if (const Result<void> open = session->AwaitProject(); !open)
        return kits::Error{"the session manager at " + url + ' ' + open.Fault().text};
    return session;
}

Session::Session(std::unique_ptr<kits::OscPeer> peer, bool hasWindow, const Patience& patience)
    : manager(std::move(peer)), hasWindow(hasWindow), patience(patience) {}

std::optional<OscMessage> Session::Next(Clock::time_point end) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
    return manager->Receive(std::max(left, std::chrono::milliseconds(0)));
}

Result<void> Session::AwaitWelcome() {
    const std::string program = kits::ProgramFile().filename();
    manager->Send({kAnnounce,
                   {"Vexa", hasWindow ? ":dirty:optional-gui:" : ":dirty:", program, kMajor, kMinor,
                    static_cast<int32>(::getpid())}});
    const auto end = Clock::now() + patience.welcome;
    while (const auto message = Next(end)) {
        const std::string* request = message->Text(0);
        if (!request || *request != kAnnounce)
            continue;
        if (message->path == kReply)
            return {};
        const std::string* reason = message->Text(2);
        if (message->path == kError)
            return kits::Error{"refuses the program: " +
                               (reason ? *reason : "it does not say why")};
    }
    return kits::Error{"does not answer"};
}

Result<void> Session::AwaitProject() {
    const auto end = Clock::now() + patience.project;
    while (const auto message = Next(end)) {
        if (message->path != kOpen)
            continue;
        const std::string* path = message->Text(0);
        const std::string* id = message->Text(2);
        if (!path || !std::filesystem::path(*path).is_absolute() || !id || id->empty())
            return kits::Error{"does not say what to open"};
        project = *path;
        name = *id;
        return {};
    }
    return kits::Error{"does not say what to open"};
}

void Session::Answer(const std::string& request, const Result<void>& done, int32 fault) {
    if (done)
        manager->Send({kReply, {request, "done"}});
    else
        manager->Send({kError, {request, fault, done.Fault().text}});
}

void Session::TellOpened(const Result<void>& opened, bool isNew) {
    kept = bool(opened);
    Answer(kOpen, opened, isNew ? kNotCreated : kBadProject);
}

void Session::Pulse(SessionClient& client) {
    while (const auto message = manager->Receive(std::chrono::milliseconds(0)))
        Take(*message, client);
    Tell(toldChanged, !kept || client.ProjectHasChanged(), "/nsm/client/is_dirty",
         "/nsm/client/is_clean");
    if (hasWindow)
        Tell(toldShown, client.WindowIsShown(), "/nsm/client/gui_is_shown",
             "/nsm/client/gui_is_hidden");
    Ping();
}

void Session::Take(const OscMessage& message, SessionClient& client) {
    const std::string& path = message.path;
    if (path == kSave) {
        const Result<void> saved = client.SaveProject();
        kept = kept || saved;
        Answer(path, saved, kNotCreated);
    } else if (path == kOpen)
        Answer(path, kits::Error{"Vexa keeps to one project until it ends"}, kNotNow);
    else if (hasWindow && (path == kShow || path == kHide))
        client.ShowWindow(path == kShow);
    else if (const std::string* request = message.Text(0);
             path == kReply && request && *request == kPing) {
        answersPings = true;
        unanswered.reset();
    }
}

void Session::Tell(std::optional<bool>& reported, bool now, const char* ifTrue,
                   const char* ifFalse) {
    if (reported == now)
        return;
    reported = now;
    manager->Send({now ? ifTrue : ifFalse, {}});
}

/// Pings the manager, as nothing else shows whether it still runs. Not every manager answers a
/// ping, so only one that has answered before counts as gone when it is silent. Silence counts from
/// a ping, as this program may have stood still and asked nothing.
void Session::Ping() {
    const auto now = Clock::now();
    if (now - pinged >= patience.ping) {
        pinged = now;
        unanswered = unanswered.value_or(now);
        manager->Send({kPing, {}});
    }
    gone = answersPings && unanswered && now - *unanswered > patience.silence;
}

} // namespace vexa
