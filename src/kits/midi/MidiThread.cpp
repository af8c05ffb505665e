// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/midi/MidiThread.h"

#include "kits/support/RealtimePriority.h"
#include "kits/support/Trace.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>

namespace kits {

namespace {

/// The default priority of a JACK client's own thread, above the media thread: handling a note is
/// short work, and the next buffer should contain it.
constexpr int kPriority = 5;

/// The longest wait for a delivery, and the pause between two checks.
constexpr std::chrono::seconds kMostPatience{1};
constexpr std::chrono::microseconds kDeliveryPause{50};

} // namespace

MidiThread::Inlet::Inlet(MidiThread& thread, BMidiLocalConsumer& consumer)
    : thread(thread), decoder(consumer) {}

void MidiThread::Inlet::Put(std::span<const uint8> bytes, bigtime_t time) noexcept {
    const Header header{time, static_cast<uint32>(bytes.size()), gap};
    std::array<uint8, sizeof header> head;
    std::memcpy(head.data(), &header, sizeof header);
    if (ring.Write({head, bytes})) {
        gap = false;
        put++;
        ::sem_post(&thread.arrived);
    } else {
        Lose();
    }
}

void MidiThread::Inlet::Lose() noexcept {
    gap = true;
    lostPieces++;
    EndNotes();
}

void MidiThread::Inlet::AwaitDelivery() const noexcept {
    const auto end = std::chrono::steady_clock::now() + kMostPatience;
    while (done < put && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(kDeliveryPause);
}

void MidiThread::Inlet::EndNotes() noexcept {
    lost = true;
    ::sem_post(&thread.arrived);
}

void MidiThread::Inlet::Drain() {
    // Asked before draining, so that the notes that came in before the loss are ended too.
    const bool endNotes = lost.exchange(false);
    Header header{};
    std::array<uint8, sizeof header> head;
    std::array<uint8, 4096> bytes;
    while (ring.Read(head.data(), head.size()) > 0) {
        std::memcpy(&header, head.data(), sizeof header);
        if (header.gap)
            decoder.Reset();
        decoder.BeginMessage();
        if (header.time != 0)
            header.time = latest = std::max(latest, header.time);
        for (std::size_t left = header.size; left > 0;) {
            const std::size_t count = std::min(left, bytes.size());
            ring.Read(bytes.data(), count);
            decoder.Decode({bytes.data(), count}, header.time);
            left -= count;
        }
        done++;
    }
    if (endNotes)
        decoder.EndNotes(header.time);
}

MidiThread::MidiThread(BMidiLocalConsumer& consumer) : consumer(consumer) {
    ::sem_init(&arrived, 0, 0);
}

MidiThread::~MidiThread() {
    quitting = true;
    ::sem_post(&arrived);
    if (thread.joinable())
        thread.join();
    ::sem_destroy(&arrived);
}

MidiThread::Inlet& MidiThread::NewInlet() {
    return inlets.emplace_back(*this, consumer);
}

int64 MidiThread::LostPieces() const {
    int64 sum = 0;
    for (const Inlet& inlet : inlets)
        sum += inlet.lostPieces;
    return sum;
}

void MidiThread::Start() {
    thread = std::thread([this] { Run(); });
}

void MidiThread::EndNotes() noexcept {
    for (Inlet& inlet : inlets)
        inlet.EndNotes();
}

void MidiThread::Run() {
    if (!TakeRealtimePriority(kPriority))
        FPRINTF(stderr, "MidiThread: no real-time priority\n");
    while (true) {
        while (::sem_wait(&arrived) != 0 && errno == EINTR) {
        }
        // Read before draining, so that what came before the end is delivered.
        const bool last = quitting;
        for (Inlet& inlet : inlets)
            inlet.Drain();
        if (last)
            return;
    }
}

} // namespace kits
