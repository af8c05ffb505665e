// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Attachment.h"

#include "documents/SoundDocument.h"
#include "instrument/SoundParts.h"
#include "kits/support/NumberText.h"

#include <chrono>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace vexa {

namespace {

using std::chrono::milliseconds;

/// The longest time that a plug-in may take to send its sound.
constexpr std::chrono::seconds kPatience{5};
/// The longest time in which the plug-in may take what is still to be sent when the window closes.
constexpr std::chrono::seconds kFarewell{1};
/// The longest wait before the window looks again whether it has something to offer.
constexpr milliseconds kLook{15};

} // namespace

kits::Result<std::unique_ptr<Attachment>> Attachment::Begin(int descriptor) {
    const std::string place = "descriptor " + std::to_string(descriptor);
    int type = 0;
    socklen_t size = sizeof type;
    if (::getsockopt(descriptor, SOL_SOCKET, SO_TYPE, &type, &size) != 0 || type != SOCK_STREAM)
        return kits::Error{place + " is no socket from a plug-in; hosts start this by themselves"};
    std::unique_ptr<Attachment> attachment(new Attachment(descriptor));
    attach::Link& link = attachment->link;
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (!attachment->fresh) {
        attachment->Read();
        if (!link.Fault().empty())
            return kits::Error{place + ": " + link.Fault()};
        if (!link.IsOpen())
            return kits::Error{place + ": the plug-in has gone"};
        if (std::chrono::steady_clock::now() > end)
            return kits::Error{place + ": the other side says nothing"};
        if (!attachment->fresh)
            link.Wait(kLook);
    }
    return attachment;
}

Attachment::Attachment(int descriptor)
    : link(descriptor, attach::End::Window), watched(::fcntl(descriptor, F_DUPFD_CLOEXEC, 3)) {}

Attachment::~Attachment() {
    thread = {};
    // A document may be longer than what the socket holds.
    const auto end = std::chrono::steady_clock::now() + kFarewell;
    while (link.IsOpen() && !link.IsIdle() && std::chrono::steady_clock::now() < end) {
        link.Wait(kLook);
        link.Pump();
    }
    ::close(watched);
}

void Attachment::Watch(const BMessenger& target, uint32 code) {
    // Take may have released it before.
    (void)taken.try_acquire();
    taken.release();
    thread = std::jthread(
        [this, target, code](const std::stop_token& stop) { WatchUntil(stop, target, code); });
}

void Attachment::WatchUntil(const std::stop_token& stop, const BMessenger& target, uint32 code) {
    while (!stop.stop_requested()) {
        if (!taken.try_acquire_for(kLook))
            continue;
        pollfd entry{watched, POLLIN, 0};
        ::poll(&entry, 1, kLook.count());
        target.SendMessage(BMessage(code));
    }
}

std::optional<Sound> Attachment::Take() {
    Read();
    taken.release();
    if (!std::exchange(fresh, false))
        return std::nullopt;
    return known;
}

void Attachment::Show(SoundRecords& records) {
    if (std::exchange(moved, false))
        attach::Show(moment, records);
    for (std::size_t i = 0; i < kMacros; i++) {
        const float value = moment.macros[i];
        if (HostSetsMacro(i) && value >= 0 && value <= 1)
            records.macros[i].value = value;
    }
}

PlayingTexts Attachment::HostsPlaying() const {
    PlayingTexts playing;
    for (std::size_t i = 0; i < kPlayingRows; i++) {
        const PlayingRow& row = PlayingRows()[i];
        const double value = moment.playing[i];
        if ((moment.hostsPlaying >> i & 1) == 0 || !(value >= row.minimum && value <= row.maximum))
            continue;
        playing.texts[i] =
            row.words.empty() ? kits::ShortText(value) : std::string(row.words[std::size_t(value)]);
    }
    return playing;
}

void Attachment::Read() {
    link.Pump();
    while (const std::optional<attach::Letter> letter = link.Next()) {
        if (letter->kind == attach::Kind::Moment) {
            moment = attach::ReadMoment(letter->body);
            moved = true;
            continue;
        }
        const attach::SoundLetter news = attach::ReadSoundLetter(*letter);
        kits::Result<Sound> sound = SoundOfText(news.document);
        if (!sound)
            return link.Refuse(sound.Fault().text);
        serial = news.serial;
        known = *std::move(sound);
        fresh = true;
    }
}

bool Attachment::Offer(const Sound& sound) {
    if (AreAlike(sound, known) && sound.author == known.author)
        return true;
    const std::string document = SoundText(sound);
    if (document.size() > attach::kMostSound)
        return false;
    link.PutSound(attach::Kind::Edit, serial, document);
    known = sound;
    return true;
}

void Attachment::Play(uint8 status, uint8 first, uint8 second) {
    const char bytes[] = {static_cast<char>(status), static_cast<char>(first),
                          static_cast<char>(second)};
    link.Put(attach::Kind::Midi, {bytes, sizeof bytes});
}

} // namespace vexa
