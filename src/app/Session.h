// SPDX-License-Identifier: GPL-3.0-or-later
// A session manager, which keeps what plays together: the protocol NSM, API 1.0.
#pragma once

#include "kits/network/OscPeer.h"
#include "kits/support/Result.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace vexa {

/// A session manager asks this of the program. Window thread.
class SessionClient {
  public:
    virtual ~SessionClient() = default;
    /// Saves into the project, as a whole; the error says why that failed.
    virtual kits::Result<void> SaveProject() = 0;
    /// True where saving would make another project of it.
    virtual bool ProjectHasChanged() = 0;
    // The following are not called of a program without a window.
    virtual bool WindowIsShown() { return true; }
    virtual void ShowWindow(bool /*shown*/) {}
};

/// A session is the program's part in one that a manager keeps. Window thread.
class Session {
  public:
    /// How long the program waits for the manager's word, first that it takes us and then what to
    /// open.
    struct Patience {
        std::chrono::milliseconds welcome{3000};
        std::chrono::milliseconds project{10000};
        /// A manager that has answered to this and does so no longer for `silence` has gone.
        std::chrono::milliseconds ping{5000};
        std::chrono::milliseconds silence{20000};
    };

    /// Tells the manager at `url` of the program, and waits until it has said what to open. The
    /// error says why there is no session; the manager then expects nothing.
    static kits::Result<std::unique_ptr<Session>> Join(const std::string& url, bool hasWindow,
                                                       const Patience& patience);
    static kits::Result<std::unique_ptr<Session>> Join(const std::string& url, bool hasWindow) {
        return Join(url, hasWindow, Patience());
    }

    /// The folder of the project; there is none yet where it is a new one.
    const std::filesystem::path& Project() const { return project; }
    /// The program's name in the session, which JACK is to know it by.
    const std::string& Name() const { return name; }

    /// Answers what to open: that it is done, or why it is not.
    void TellOpened(const kits::Result<void>& opened, bool isNew);

    /// Does what the manager has asked for since the last call, and tells it what has become of the
    /// project and of the window; to be called some ten times a second.
    void Pulse(SessionClient& client);
    /// The manager was there and does not answer any more.
    bool HasGone() const { return gone; }

  private:
    using Clock = std::chrono::steady_clock;

    Session(std::unique_ptr<kits::OscPeer> manager, bool hasWindow, const Patience& patience);
    kits::Result<void> AwaitWelcome();
    kits::Result<void> AwaitProject();
    std::optional<kits::OscMessage> Next(Clock::time_point end);
    void Take(const kits::OscMessage& message, SessionClient& client);
    void Answer(const std::string& request, const kits::Result<void>& done, int32 fault);
    void Tell(std::optional<bool>& told, bool now, const char* ifTrue, const char* ifFalse);
    void Ping();

    const std::unique_ptr<kits::OscPeer> manager;
    const bool hasWindow;
    const Patience patience;
    std::filesystem::path project;
    std::string name;
    /// The state that the manager knows.
    std::optional<bool> toldChanged, toldShown;
    Clock::time_point pinged;
    /// The moment at which it last answered a ping.
    std::optional<Clock::time_point> answered;
    bool gone = false;
};

} // namespace vexa
