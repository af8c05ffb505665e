// SPDX-License-Identifier: GPL-3.0-or-later
// The connection to a session manager, which saves programs that play together: the protocol NSM,
// API 1.0.
#pragma once

#include "kits/network/OscPeer.h"
#include "kits/support/Result.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace vexa {

/// The requests of a session manager to the program. Window thread.
class SessionClient {
  public:
    virtual ~SessionClient() = default;
    /// Saves the whole project; the error says why that failed.
    virtual kits::Result<void> SaveProject() = 0;
    /// True if saving would change the project.
    virtual bool ProjectHasChanged() = 0;
    // The following are called only for a program with a window.
    virtual bool WindowIsShown() { return true; }
    virtual void ShowWindow(bool /*shown*/) {}
};

/// The program's part in a session. Window thread.
class Session {
  public:
    /// How long the program waits for the manager: first for its welcome, then for the project to
    /// open.
    struct Patience {
        std::chrono::milliseconds welcome{3000};
        std::chrono::milliseconds project{10000};
        /// The time between pings. A manager that has answered a ping, but none since one that was
        /// sent `silence` ago, has gone.
        std::chrono::milliseconds ping{5000};
        std::chrono::milliseconds silence{20000};
    };

    /// Announces the program to the manager at `url` and waits until it has said which project to
    /// open. The error says why there is no session; the manager then expects nothing of the
    /// program.
    static kits::Result<std::unique_ptr<Session>> Join(const std::string& url, bool hasWindow,
                                                       const Patience& patience);
    static kits::Result<std::unique_ptr<Session>> Join(const std::string& url, bool hasWindow) {
        return Join(url, hasWindow, Patience());
    }

    /// The folder of the project, which may be absent if the project is new.
    const std::filesystem::path& Project() const { return project; }
    /// The program's name in the session, which is to be its name in JACK too.
    const std::string& Name() const { return name; }

    /// Answers the request to open the project: that it is open, or why it cannot be opened or, if
    /// `isNew`, created. After that fault it counts as changed until it is saved.
    void TellOpened(const kits::Result<void>& opened, bool isNew);

    /// Fulfils the requests that the manager has sent since the last call, and tells it when the
    /// project has changed or the window is shown or hidden. To be called about ten times a second.
    void Pulse(SessionClient& client);
    /// True if the manager has answered pings and does not answer any more.
    bool HasGone() const { return gone; }

  private:
    using Clock = std::chrono::steady_clock;

    Session(std::unique_ptr<kits::OscPeer> manager, bool hasWindow, const Patience& patience);
    kits::Result<void> AwaitWelcome();
    kits::Result<void> AwaitProject();
    std::optional<kits::OscMessage> Next(Clock::time_point end);
    void Take(const kits::OscMessage& message, SessionClient& client);
    void Answer(const std::string& request, const kits::Result<void>& done, int32 fault);
    void Tell(std::optional<bool>& reported, bool now, const char* ifTrue, const char* ifFalse);
    void Ping();

    const std::unique_ptr<kits::OscPeer> manager;
    const bool hasWindow;
    const Patience patience;
    std::filesystem::path project;
    std::string name;
    /// True once the project is in its folder.
    bool kept = false;
    /// The states that the manager was told last.
    std::optional<bool> toldChanged, toldShown;
    Clock::time_point pinged;
    bool answersPings = false;
    /// The moment of the first ping since its last answer.
    std::optional<Clock::time_point> unanswered;
    bool gone = false;
};

} // namespace vexa
