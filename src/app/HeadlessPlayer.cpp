#include "app/HeadlessPlayer.h"

#include "audio/AudioGraph.h"
#include "documents/ApplySound.h"
#include "documents/FunctionSource.h"
#include "documents/SoundDocument.h"
#include "kits/application/Interrupt.h"
#include "kits/midi/MidiRoster.h"
#include "kits/support/Published.h"

#include <chrono>
#include <cstdio>
#include <memory>
#include <semaphore>

namespace vexa {

namespace {

using Clock = std::chrono::steady_clock;

/// How often the window thread looks at what others cannot tell it.
constexpr std::chrono::milliseconds kPulse{100};

void Say(const std::string& text) {
    std::fprintf(stderr, "vexa: %s%s", text.c_str(), text.ends_with('\n') ? "" : "\n");
}

/// Wakes the window thread when MIDI sources have come or gone.
class SourceWatch : public kits::MessageTarget {
  public:
    void Post(const BMessage&) override { arrived.release(); }
    /// True when something was posted within the pulse.
    bool Wait() { return arrived.try_acquire_for(kPulse); }

  private:
    std::counting_semaphore<> arrived{0};
};

class HeadlessPlayer {
  public:
    HeadlessPlayer(const AppOptions& options, const std::filesystem::path& programFolder)
        : options(options), programFolder(programFolder) {
        receivers.AddReceiver([this](const PlaneFunction& f) { graph.SetFunction(f); });
    }

    int Run();

  private:
    bool LoadSound();
    void ConnectSource();
    void Watch();
    void Report(Clock::duration played) const;

    const AppOptions& options;
    const std::filesystem::path& programFolder;
    SoundRecords records;
    // Outlives the graph, whose threads call an add-on's function to their end.
    FunctionSwitch receivers;
    AudioGraph graph{records.controllers, records.parameters, records.voices, Say};
    std::shared_ptr<SourceWatch> watch = std::make_shared<SourceWatch>();
    bool sourceWasThere = false;
};

int HeadlessPlayer::Run() {
    const kits::Interrupt interrupt;
    if (!LoadSound())
        return 1;
    graph.Consumer().ReduceToMaxVox(options.voices.value_or(kMostVoices));
    graph.Consumer().SetChannel(options.channel.value_or(-1));
    const bool sounds = graph.Start();
    if (BMidiRoster* roster = BMidiRoster::MidiRoster())
        roster->StartWatching(BMessenger(watch));
    else
        Say("Where is the MIDI roster?!?");
    if (!sounds)
        Say("there is no sound: " + kits::SystemMixer::LastFault());
    else
        std::printf("playing through %s\n", graph.DeviceName().c_str());
    std::fflush(stdout);
    ConnectSource();

    const Clock::time_point start = Clock::now();
    bool deviceWasThere = sounds;
    while (!interrupt.Requested()) {
        if (watch->Wait())
            ConnectSource();
        kits::CollectRetired();
        if (deviceWasThere && graph.DeviceHasGone()) {
            Say("the audio device has disappeared; there is no sound any more");
            deviceWasThere = false;
        }
    }
    Report(Clock::now() - start);
    return 0;
}

/// Only a sound that was asked for must be there.
bool HeadlessPlayer::LoadSound() {
    const auto path = options.sound.value_or(programFolder / "sounds" / "default.xml");
    ReadReport report;
    const kits::Result<Sound> sound = ReadSound(path, Sound(), report);
    for (const std::string& warning : report.warnings)
        Say("warning: " + warning);
    if (!sound) {
        Say(report.reason);
        return !options.sound;
    }
    for (const std::string& fault : ApplyParameters(*sound, records.parameters))
        Say("warning: " + fault);
    ApplyEnvelopes(*sound, records.parameters);
    const auto installed = InstallFunction(sound->function, programFolder, receivers);
    if (!installed)
        Say(installed.Fault().text);
    return installed || !options.sound;
}

/// Connects the source that the options name, if it is there and was not before.
void HeadlessPlayer::ConnectSource() {
    BMidiRoster* roster = options.midi ? BMidiRoster::MidiRoster() : nullptr;
    if (!roster)
        return;
    BMidiProducer* source = roster->FindProducer(*options.midi);
    if (!source && !sourceWasThere)
        Say("waiting for the MIDI source \"" + *options.midi + "\"");
    if (source && !sourceWasThere && source->Connect(&graph.Consumer()) != B_OK)
        Say("could not connect the MIDI source \"" + *options.midi + "\"");
    sourceWasThere = source != nullptr;
    if (source)
        source->Release();
}

void HeadlessPlayer::Report(Clock::duration played) const {
    const kits::MixerCounts counts = graph.Counts();
    std::printf("played %.1f s; %lld late and %lld missing buffers, %lld voices dropped\n",
                std::chrono::duration<double>(played).count(), static_cast<long long>(counts.late),
                static_cast<long long>(counts.missing),
                static_cast<long long>(graph.Producer().DroppedVoices()));
}

} // namespace

int PlayWithoutWindow(const AppOptions& options, const std::filesystem::path& programFolder) {
    return HeadlessPlayer(options, programFolder).Run();
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
