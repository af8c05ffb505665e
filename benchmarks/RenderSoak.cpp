// SPDX-License-Identifier: GPL-3.0-or-later
// Does rendering use more and more resources, leak, hang or drift over hours?
//
// RenderSoak [HOURS] plays the given time, faster than real time. Each minute another of the
// shipped sounds, its function compiled anew, is played by random notes and controllers; then all
// notes are released. Meanwhile a second instrument holds one sine of 440 Hz. Exits with 1 if
// memory, descriptors, threads or add-ons grow after the first quarter, if a note hangs, or if the
// sine is a tenth of a turn off at the end (after four hours, 3 hundred-thousandths of a cent).
#include "documents/SoundDocument.h"
#include "instrument/Instrument.h"
#include "kits/support/Published.h"
#include "support/Sounds.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <numbers>
#include <random>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr int kRate = 44100;
constexpr std::size_t kPiece = 441;
constexpr int kPiecesPerMinute = 60 * kRate / static_cast<int>(kPiece);

/// The resources of this process that must not grow.
struct Usage {
    /// Anonymous memory only: the system maps and drops pages of files at its own discretion.
    long kilobytes = 0;
    long threads = 0;
    long descriptors = 0;
    long mappedObjects = 0;
};

Usage Look() {
    Usage usage;
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        if (word == "RssAnon:")
            status >> usage.kilobytes;
        else if (word == "Threads:")
            status >> usage.threads;
    }
    usage.descriptors = std::distance(fs::directory_iterator("/proc/self/fd"), {});
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);)
        usage.mappedObjects += line.find('/') != std::string::npos ? 1 : 0;
    return usage;
}

void Print(int minute, const Usage& usage) {
    std::printf("minute %4d: %ld kB, %ld threads, %ld descriptors, %ld mappings of files\n", minute,
                usage.kilobytes, usage.threads, usage.descriptors, usage.mappedObjects);
    std::fflush(stdout);
}

/// The instrument under test, and the events that it is played with.
class Tour {
  public:
    Tour() {
        for (const auto& entry : fs::directory_iterator(VEXA_PROGRAM_FOLDER "/sounds"))
            sounds.push_back(entry.path());
        std::sort(sounds.begin(), sounds.end());
        instrument.renderer.SetGain(0.25F);
        instrument.consumer.ReduceToMaxVox(20);
    }

    /// Plays one minute of the next sound; returns false if something is wrong.
    bool Minute(int minute) {
        const fs::path& path = sounds[static_cast<std::size_t>(minute) % sounds.size()];
        const auto sound = vexa::ReadSound(path);
        if (!sound)
            return Fail(path, sound.Fault().text);
        if (const vexa::FunctionReport loaded = whole.Load(*sound); !loaded)
            return Fail(path, vexa::Text(loaded));
        for (int piece = 0; piece < kPiecesPerMinute; piece++) {
            if (piece % 20 == 0 && piece < kPiecesPerMinute * 5 / 6)
                PlaySomething();
            if (piece == kPiecesPerMinute * 5 / 6)
                ReleaseAll();
            instrument.renderer.Render(buffer.data(), buffer.size());
            for (const float sample : buffer) {
                if (!std::isfinite(sample))
                    return Fail(path, "a sample is not finite");
            }
        }
        kits::CollectRetired();
        // A released voice keeps its slot until another note needs it.
        for (const vexa::voice& slot : instrument.voices) {
            if (slot.state.Look().Active() && !slot.released)
                return Fail(path, "a note hangs");
        }
        instrument.consumer.AllNotesOff(false, 0);
        return instrument.consumer.CountVox() == 0 || Fail(path, "a voice is stuck");
    }

  private:
    static bool Fail(const fs::path& path, const std::string& reason) {
        std::printf("%s: %s\n", path.c_str(), reason.c_str());
        return false;
    }
    void PlaySomething() {
        const auto note = static_cast<uchar>(30 + random() % 60);
        if (random() % 3 == 0)
            instrument.consumer.ControlChange(0, static_cast<uchar>(random() % 120),
                                              static_cast<uchar>(random() % 128), 0);
        else if (random() % 2 == 0)
            instrument.consumer.NoteOn(0, note, static_cast<uchar>(1 + random() % 127), 0);
        else
            instrument.consumer.NoteOff(0, note, 64, 0);
    }
    void ReleaseAll() {
        for (int note = 0; note < 128; note++)
            instrument.consumer.NoteOff(0, static_cast<uchar>(note), 64, 0);
    }

    std::vector<fs::path> sounds;
    vexa::Instrument whole{fs::path(VEXA_PROGRAM_FOLDER), vexa::Addons::Awaited};
    vexa::Engine& instrument = whole.Engine();
    std::vector<float> buffer = std::vector<float>(kPiece);
    std::mt19937 random{1};
};

/// A sine of 440 Hz that is never released.
class LongNote {
  public:
    LongNote() {
        test::MakeSine(instrument);
        instrument.consumer.NoteOn(0, 69, 100, 0);
        Second(); // the note begins
        before = Second();
    }

    void Minute() {
        for (int i = 0; i < 60; i++)
            now = Second();
    }
    /// Returns the turns by which the phase has drifted since the start, which is a whole number of
    /// seconds ago.
    double Drift() const { return std::arg(now / before) / (2 * std::numbers::pi); }

  private:
    /// Renders a second and returns the sine's amplitude and phase in it.
    std::complex<double> Second() {
        const std::vector<float> samples = test::Render(instrument, kRate);
        std::complex<double> sum = 0;
        for (std::size_t i = 0; i < samples.size(); i++)
            sum += double(samples[i]) *
                   std::polar(1.0, -2 * std::numbers::pi * 440 * double(i) / kRate);
        return sum;
    }

    vexa::Engine instrument;
    std::complex<double> before;
    std::complex<double> now;
};

} // namespace

int main(int count, char** arguments) {
    const double hours = count > 1 ? std::atof(arguments[1]) : 4;
    const int minutes = std::max(4, static_cast<int>(std::lround(hours * 60)));
    Tour tour;
    LongNote note;
    Usage settled;
    for (int minute = 0; minute < minutes; minute++) {
        if (!tour.Minute(minute))
            return 1;
        note.Minute();
        const int quarter = minutes / 4;
        if (minute == quarter)
            settled = Look();
        if (minute > 0 && minute % quarter == 0)
            Print(minute, Look());
    }
    const Usage end = Look();
    Print(minutes - 1, end);
    std::printf("%d minutes, drift of the sine %.2g turns\n", minutes, note.Drift());
    const bool grown = end.kilobytes > settled.kilobytes + 4096 || end.threads > settled.threads ||
                       end.descriptors > settled.descriptors ||
                       end.mappedObjects > settled.mappedObjects;
    if (grown)
        std::printf("something has grown\n");
    return grown || std::abs(note.Drift()) > 0.1 ? 1 : 0;
}
