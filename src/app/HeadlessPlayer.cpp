// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/HeadlessPlayer.h"

#include "audio/AudioGraph.h"
#include "documents/SoundDocument.h"
#include "instrument/DefaultSound.h"
#include "instrument/InitialSound.h"
#include "instrument/Instrument.h"
#include "instrument/Programs.h"
#include "kits/midi/MidiRoster.h"
#include "kits/support/Published.h"
#include "midi/ProgramSelector.h"

#include <chrono>
#include <cstdio>
#include <memory>
#include <semaphore>
#include <utility>

namespace vexa {

namespace {

using Clock = std::chrono::steady_clock;

/// The period at which the window thread polls for events that send no message.
constexpr std::chrono::milliseconds kPulse{100};

void Say(const std::string& text) {
    std::fprintf(stderr, "vexa: %s%s", text.c_str(), text.ends_with('\n') ? "" : "\n");
}

/// Wakes the window thread when MIDI sources have come or gone, alone or with the MIDI system, and
/// when a program change has chosen a sound.
class MidiWatch : public kits::MessageTarget {
  public:
    void Post(const BMessage&) override { arrived.release(); }
    /// Waits up to one pulse; returns whether something was posted.
    bool Wait() { return arrived.try_acquire_for(kPulse); }

  private:
    std::counting_semaphore<> arrived{0};
};

class HeadlessPlayer : private SessionClient {
  public:
    HeadlessPlayer(const AppOptions& options, const kits::ProgramFolders& folders,
                   const Tuning& tuning, JoinedSession* joined)
        : options(options),
          folders(folders),
          joined(joined),
          instrument(folders, Addons::Following) {
        instrument.Engine().consumer.SetTuning(tuning);
        if (options.mpe)
            instrument.Engine().consumer.ExpectMpe();
    }

    int Run(const kits::Interrupt& interrupt, kits::Recording* recording);

  private:
    kits::Result<void> LoadSound();
    void OpenProject(bool isNew);
    Project PresentProject() const;
    kits::Result<void> SaveProject() override;
    bool ProjectHasChanged() override;
    void LoadProgram(int32 number);
    kits::Result<void> Install(const std::filesystem::path& path, const Sound& sound,
                               const Warnings& warnings);
    bool WatchSources();
    void ConnectSource();
    void TellOfDevice();
    void TellOfRecording(const kits::Recording& recording);
    void Report(Clock::duration played) const;

    const AppOptions& options;
    const kits::ProgramFolders& folders;
    /// Null outside a session.
    JoinedSession* const joined;
    /// An audio device has been there at some time.
    bool hadDevice = false;
    /// The graph is being started: what it alerts of is why there is no sound.
    bool starting = false;
    /// True once it was said that the recording has ended by itself.
    bool toldOfRecording = false;
    Instrument instrument;
    /// The name of the sound's file without its ending.
    std::string soundName;
    std::shared_ptr<MidiWatch> watch = std::make_shared<MidiWatch>();
    ProgramSelector programs{instrument.Engine().consumer, BMessenger(watch), 0};
    /// At the end, whether it was started or not, the graph alerts of what it could not disconnect,
    /// which is no news if nothing was ever connected.
    AudioGraph graph{instrument.Engine(), [this](const char* text) {
                         if (starting)
                             Say(text);
                         else if (hadDevice)
                             Say("the audio device could not be disconnected");
                     }};
    /// The ID of the connected source; 0 for none.
    int32 connectedSource = 0;
    bool waitsForSource = false;
};

int HeadlessPlayer::Run(const kits::Interrupt& interrupt, kits::Recording* recording) {
    instrument.Prefer(options.playing);
    instrument.SetUsualVoices(kMostVoices);
    if (options.voices)
        instrument.ChooseVoices(*options.voices);
    const bool isNew = joined && !ProjectExists(joined->session->Project());
    if (const auto loaded = LoadSound(); !loaded) {
        Say(loaded.Fault().text);
        if (joined)
            joined->session->TellOpened(loaded.Fault(), isNew);
        return 1;
    }
    graph.Consumer().SetChannel(options.channel.value_or(-1));
    graph.Record(recording);
    if (options.programs)
        graph.Consumer().Gate()->Watch(&programs);
    starting = true;
    const bool sounds = graph.Start();
    starting = false;
    hadDevice = sounds;
    bool watching = WatchSources();
    if (!watching) {
        std::string reason;
        BMidiRoster::MidiRoster(&reason);
        Say("Where is the MIDI roster?!? " + reason);
    }
    if (!sounds)
        Say("there is no sound: " + graph.DeviceFault());
    else
        std::printf("playing through %s\n", graph.DeviceName().c_str());
    std::fflush(stdout);
    ConnectSource();
    OpenProject(isNew);

    const Clock::time_point start = Clock::now();
    while (!interrupt.Requested()) {
        if (watch->Wait())
            ConnectSource();
        if (const auto number = programs.Take())
            LoadProgram(*number);
        if (!watching && (watching = WatchSources())) {
            Say("the MIDI roster is there");
            ConnectSource();
        }
        kits::CollectRetired();
        if (const FunctionReport addon = instrument.Collect(); !addon && !interrupt.Requested())
            Say(Text(addon));
        TellOfDevice();
        if (recording)
            TellOfRecording(*recording);
        if (joined) {
            instrument.FollowMacros();
            joined->session->Pulse(*this);
        }
    }
    graph.CloseRecording();
    Report(Clock::now() - start);
    // A server that hangs may hold the program until another signal ends it.
    std::fflush(stdout);
    return 0;
}

/// Starts watching for sources. Returns false if there is no MIDI system.
bool HeadlessPlayer::WatchSources() {
    BMidiRoster* roster = BMidiRoster::MidiRoster();
    if (roster)
        roster->StartWatching(BMessenger(watch));
    return roster != nullptr;
}

void HeadlessPlayer::TellOfDevice() {
    switch (graph.Watch()) {
    case AudioGraph::DeviceNews::None:
        break;
    case AudioGraph::DeviceNews::Gone:
        Say("the audio device has disappeared; there is no sound until it is back");
        break;
    case AudioGraph::DeviceNews::There:
        hadDevice = true;
        Say("the audio device is there; playing through " + graph.DeviceName());
        break;
    }
}

/// Says at once, and once, that a recording has ended by itself: a person may play on for hours.
void HeadlessPlayer::TellOfRecording(const kits::Recording& recording) {
    if (toldOfRecording || !recording.HasEnded())
        return;
    toldOfRecording = true;
    if (const std::optional<kits::Error> reason = recording.Ending())
        Say("--record: " + reason->text);
}

/// Loads a sound and prints warnings. The error says why its function does not play.
kits::Result<void> HeadlessPlayer::Install(const std::filesystem::path& path, const Sound& sound,
                                           const Warnings& warnings) {
    for (const kits::Error& warning : warnings)
        Say("warning: " + warning.text);
    soundName = path.empty() ? kInitialSoundName : path.stem().string();
    const FunctionReport loaded = instrument.Load(sound);
    if (!Plays(loaded))
        return FaultIn(path, sound.function, loaded);
    if (IsNews(loaded, sound.function))
        Say("warning: " + FaultIn(path, sound.function, loaded).text);
    return {};
}

/// Loads the sound that the options name, else the default one. The error says why a named sound
/// does not play. A session, which must not lose a sound whose sample is missing for a while, has
/// it with silence instead.
kits::Result<void> HeadlessPlayer::LoadSound() {
    if (!options.sound) {
        const DefaultSound read = ReadDefaultSound(folders);
        if (!read.fault.empty())
            Say(read.fault);
        if (const auto installed = Install(read.path, read.sound, read.warnings); !installed)
            Say(installed.Fault().text);
        return {};
    }
    Warnings warnings;
    const kits::Result<Sound> sound = ReadSound(*options.sound, &warnings);
    if (!sound)
        return sound.Fault();
    auto installed = Install(*options.sound, *sound, warnings);
    if (installed || !joined)
        return installed;
    Say(installed.Fault().text);
    instrument.Silence();
    return {};
}

/// In a session, reports that the project is open; a new project is saved first.
void HeadlessPlayer::OpenProject(bool isNew) {
    if (!joined)
        return;
    if (!isNew)
        soundName = joined->project.soundName;
    joined->project = PresentProject();
    joined->session->TellOpened(isNew ? SaveProject() : kits::Result<void>(), isNew);
}

Project HeadlessPlayer::PresentProject() const {
    Project project = joined->project;
    project.sound = instrument.State();
    project.soundName = soundName;
    return project;
}

kits::Result<void> HeadlessPlayer::SaveProject() {
    Project project = PresentProject();
    if (auto written = WriteProject(joined->session->Project(), project); !written) {
        Say(written.Fault().text);
        return written;
    }
    joined->project = std::move(project);
    return {};
}

bool HeadlessPlayer::ProjectHasChanged() {
    return !AreAlike(PresentProject(), joined->project);
}

/// Loads the sound of a program change. If that fails, the previous sound plays on.
void HeadlessPlayer::LoadProgram(int32 number) {
    Warnings warnings;
    const auto path = FindProgram(folders, number);
    const auto sound =
        path ? ReadWhole(*path, instrument, warnings) : kits::Result<Sound>(path.Fault());
    if (!sound)
        Say(sound.Fault().text);
    else if (const auto installed = Install(*path, *sound, warnings); !installed)
        Say(installed.Fault().text);
    else
        Say("program " + std::to_string(number) + ": " + path->stem().string());
}

/// Connects the source that the options name, if it is there and not connected yet. Says once that
/// it is waited for, and then when it has come.
void HeadlessPlayer::ConnectSource() {
    if (!options.midi || options.midi->empty())
        return;
    BMidiRoster* roster = BMidiRoster::MidiRoster();
    BMidiProducer* source = roster ? roster->FindProducer(*options.midi) : nullptr;
    const std::string named = "the MIDI source \"" + *options.midi + "\"";
    if (!source && !std::exchange(waitsForSource, true))
        Say("waiting for " + named);
    const int32 number = source ? source->ID() : 0;
    if (source && number != connectedSource) {
        const status_t status = source->Connect(&graph.Consumer());
        if (status == B_ERROR)
            Say("could not connect " + named);
        else if (status == B_OK && waitsForSource)
            Say(named + " is there");
        if (status == B_OK || status == B_ERROR)
            waitsForSource = false;
    }
    connectedSource = number;
    if (source)
        source->Release();
}

void HeadlessPlayer::Report(Clock::duration played) const {
    if (!hadDevice) {
        std::printf("ran %.1f s without sound, %lld MIDI events lost\n",
                    std::chrono::duration<double>(played).count(),
                    static_cast<long long>(graph.Consumer().LostMidi()));
        return;
    }
    const kits::MixerCounts counts = graph.Counts();
    std::printf("played %.1f s; %lld late and %lld missing buffers, %lld voices dropped, "
                "%lld MIDI events lost\n",
                std::chrono::duration<double>(played).count(), static_cast<long long>(counts.late),
                static_cast<long long>(counts.missing),
                static_cast<long long>(graph.Producer().DroppedVoices()),
                static_cast<long long>(graph.Consumer().LostMidi()));
}

} // namespace

int PlayWithoutWindow(const AppOptions& options, const kits::ProgramFolders& folders,
                      const Tuning& tuning, const kits::Interrupt& interrupt,
                      kits::Recording* recording, JoinedSession* joined) {
    return HeadlessPlayer(options, folders, tuning, joined).Run(interrupt, recording);
}

int ListDevices() {
    std::printf("audio devices:\n");
    for (const std::string& name : kits::AudioDeviceNames())
        std::printf("  %s\n", name.c_str());
    std::printf("MIDI sources:\n");
    std::string reason;
    BMidiRoster* roster = BMidiRoster::MidiRoster(&reason);
    if (!roster) {
        std::fprintf(stderr, "vexa: %s\n", reason.c_str());
        return 1;
    }
    int32 id = 0;
    while (BMidiProducer* source = roster->NextProducer(&id)) {
        std::printf("  %s\n", source->Name().c_str());
        source->Release();
    }
    return 0;
}

} // namespace vexa
