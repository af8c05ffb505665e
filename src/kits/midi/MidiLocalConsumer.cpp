#include "kits/midi/MidiLocalConsumer.h"

#include "kits/midi/EventGate.h"
#include "kits/midi/MidiSystems.h"

#include <utility>

namespace kits {

/// A registered consumer's ports and thread. Taken down in the opposite order: first nothing comes
/// in any more, then what came in is delivered.
class MidiConnection {
  public:
    explicit MidiConnection(BMidiLocalConsumer& consumer)
        : systems(MidiSystems::Open()), gate(consumer), thread(gate) {
        systems->Register(consumer.Name(), thread);
        thread.Start();
    }
    ~MidiConnection() { systems->Unregister(); }
    MidiConnection(const MidiConnection&) = delete;
    MidiConnection& operator=(const MidiConnection&) = delete;

    void EndNotes() noexcept { thread.EndNotes(); }
    status_t Connect(int32 source, bool connected) { return systems->Connect(source, connected); }
    int64 LostPieces() const { return thread.LostPieces(); }
    EventGate& Gate() { return gate; }

  private:
    std::shared_ptr<MidiSystems> systems;
    EventGate gate;
    MidiThread thread;
};

} // namespace kits

BMidiEndpoint::BMidiEndpoint(std::string name) : name(std::move(name)) {}

status_t BMidiEndpoint::GetProperties(BMessage* into) const {
    if (!into)
        return B_BAD_VALUE;
    *into = properties;
    return B_OK;
}

status_t BMidiEndpoint::SetProperties(const BMessage* next) {
    if (!next)
        return B_BAD_VALUE;
    properties = *next;
    return B_OK;
}

BMidiLocalConsumer::BMidiLocalConsumer(std::string name) : BMidiEndpoint(std::move(name)) {}

BMidiLocalConsumer::~BMidiLocalConsumer() = default;

status_t BMidiLocalConsumer::Register() {
    if (!connection)
        connection = std::make_unique<kits::MidiConnection>(*this);
    return B_OK;
}

void BMidiLocalConsumer::EndNotes() {
    if (connection)
        connection->EndNotes();
}

status_t BMidiLocalConsumer::Unregister() {
    connection.reset();
    return B_OK;
}

kits::EventGate* BMidiLocalConsumer::Gate() {
    return connection ? &connection->Gate() : nullptr;
}

int64 BMidiLocalConsumer::LostMidi() const {
    return connection ? connection->LostPieces() : 0;
}

status_t BMidiLocalConsumer::ConnectSource(int32 source, bool connected) {
    return connection ? connection->Connect(source, connected) : B_NO_INIT;
}

void BMidiLocalConsumer::NoteOff(uchar, uchar, uchar, bigtime_t) {}
void BMidiLocalConsumer::NoteOn(uchar, uchar, uchar, bigtime_t) {}
void BMidiLocalConsumer::KeyPressure(uchar, uchar, uchar, bigtime_t) {}
void BMidiLocalConsumer::ControlChange(uchar, uchar, uchar, bigtime_t) {}
void BMidiLocalConsumer::ProgramChange(uchar, uchar, bigtime_t) {}
void BMidiLocalConsumer::ChannelPressure(uchar, uchar, bigtime_t) {}
void BMidiLocalConsumer::PitchBend(uchar, uchar, uchar, bigtime_t) {}
void BMidiLocalConsumer::SystemExclusive(const void*, std::size_t, bigtime_t) {}
void BMidiLocalConsumer::SystemCommon(uchar, uchar, uchar, bigtime_t) {}
void BMidiLocalConsumer::SystemRealTime(uchar, bigtime_t) {}
void BMidiLocalConsumer::TempoChange(int32, bigtime_t) {}
void BMidiLocalConsumer::SourceEnded(uchar, bigtime_t) {}
void BMidiLocalConsumer::AllNotesOff(bool, bigtime_t) {}
