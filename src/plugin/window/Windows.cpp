// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/window/Windows.h"

#include "attach/Link.h"
#include "attach/Moment.h"
#include "documents/SoundDocument.h"

#include <atomic>
#include <bitset>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <exception>
#include <system_error>

#include <sys/socket.h>
#include <unistd.h>

namespace vexa {

namespace {

using Clock = std::chrono::steady_clock;

/// The interval at which a window is shown the playing state, if it changes.
constexpr std::chrono::milliseconds kMomentInterval{30};

template<class T>
std::string_view BytesOf(const T& value) {
    return {reinterpret_cast<const char*>(&value), sizeof value};
}

/// The plug-in's side of the connection to one window. Session thread.
class Conversation {
  public:
    Conversation(HostedInstrument& instrument, int socket)
        : instrument(instrument), link(socket, attach::End::Plugin) {}
    /// Releases the keys that the window holds.
    ~Conversation() {
        for (std::size_t i = 0; i < held.size(); i++) {
            if (held[i])
                instrument.PostMidi(
                    {static_cast<uint8>(0x80 | i / 128), static_cast<uint8>(i % 128), 64});
        }
    }
    Conversation(const Conversation&) = delete;
    Conversation& operator=(const Conversation&) = delete;

    /// Returns why the window was given up; empty if it was closed or `stop` was requested. What
    /// the window sent before is taken.
    std::string Run(const std::stop_token& stop) {
        while (!stop.stop_requested() && link.IsOpen()) {
            link.Wait(kMomentInterval);
            TakeLetters();
            // Nothing is sent to a window that does not read.
            if (link.HasBegun() && link.IsIdle())
                Show();
        }
        TakeLetters();
        return link.Fault();
    }

  private:
    void TakeLetters() {
        link.Pump();
        while (const std::optional<attach::Letter> letter = link.Next())
            Take(*letter);
    }

    void Take(const attach::Letter& letter) {
        if (letter.kind == attach::Kind::Midi)
            return Play({static_cast<uint8>(letter.body[0]), static_cast<uint8>(letter.body[1]),
                         static_cast<uint8>(letter.body[2])});
        const attach::SoundLetter edit = attach::ReadSoundLetter(letter);
        if (edit.serial != serial)
            return;
        const kits::Result<Sound> next = SoundOfText(edit.document);
        if (!next)
            return link.Refuse(next.Fault().text);
        if (const auto now = instrument.Edit(shown, *next))
            shown = *now;
    }

    void Play(const std::array<uint8, 3>& message) {
        const std::size_t kind = message[0] >> 4, key = message[1] & 127;
        const std::size_t place = (message[0] & 15U) * 128 + key;
        if (kind == 9)
            held[place] = message[2] > 0;
        if (kind == 8)
            held[place] = false;
        instrument.PostMidi(message);
    }

    void Show() {
        if (auto now = instrument.ShownSince(shown.changes)) {
            const std::string document = SoundText(now->sound);
            if (document.size() > attach::kMostSound)
                return link.Refuse("the sound has " + std::to_string(document.size()) +
                                   " bytes, and a window takes " +
                                   std::to_string(attach::kMostSound));
            shown = *std::move(now);
            link.PutSound(attach::Kind::Sound, ++serial, document);
        }
        if (Clock::now() < next)
            return;
        attach::Moment moment = attach::MomentOf(instrument.Records());
        moment.hostsPlaying = instrument.HostsPlaying();
        moment.hostsMacros = instrument.HostsMacros();
        for (std::size_t i = 0; i < kPlayingRows; i++) {
            if ((moment.hostsPlaying >> i & 1) != 0)
                moment.playing[i] = instrument.Records().playing.*PlayingRows()[i].target;
        }
        if (moment == last)
            return;
        last = moment;
        next = Clock::now() + kMomentInterval;
        link.Put(attach::Kind::Moment, BytesOf(moment));
    }

    HostedInstrument& instrument;
    attach::Link link;
    /// The sound that the window was last shown, including its own edits since, and the serial
    /// number of that letter.
    HostedInstrument::Shown shown;
    uint32 serial = 0;
    attach::Moment last{};
    Clock::time_point next{};
    /// The keys that the window holds down, by channel and note.
    std::bitset<16 * 128> held;
};

} // namespace

struct Windows::Session {
    std::atomic<bool> ended{false};
    std::jthread thread;
};

Windows::Windows(HostedInstrument& instrument, Tell tell)
    : instrument(instrument), tell(std::move(tell)) {}

Windows::~Windows() {
    Close();
}

void Windows::Close() {
    const std::lock_guard lock(mutex);
    for (Session& session : sessions)
        session.thread.request_stop();
    sessions.clear();
}

kits::Result<int> Windows::Open() try {
    const std::lock_guard lock(mutex);
    sessions.remove_if([](const Session& session) { return bool(session.ended); });
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        return kits::Error{std::string("no connection to a window: ") + std::strerror(errno)};
    auto conversation = std::make_shared<Conversation>(instrument, ends[0]);
    Session& session = sessions.emplace_back();
    try {
        session.thread = std::jthread([this, &session, conversation](const std::stop_token& stop) {
            try {
                const std::string fault = conversation->Run(stop);
                if (!fault.empty())
                    tell("the window is closed: " + fault);
            } catch (const std::exception& fault) {
                tell(std::string("the window is closed: ") + fault.what());
            }
            session.ended = true;
        });
    } catch (const std::system_error&) {
        sessions.pop_back();
        ::close(ends[1]);
        throw;
    }
    return ends[1];
} catch (const std::exception& fault) {
    return kits::Error{std::string("no connection to a window: ") + fault.what()};
}

} // namespace vexa
