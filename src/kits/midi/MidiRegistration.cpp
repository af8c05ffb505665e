// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/midi/MidiConnection.h"
#include "kits/midi/MidiLocalConsumer.h"
#include "kits/midi/MidiSystems.h"
#include "kits/midi/MidiThread.h"

#include <memory>

namespace kits {

namespace {

/// A registered consumer's ports and thread. Destroyed in reverse order: first no input arrives any
/// more, then the input that has arrived is delivered.
class SystemConnection final : public MidiConnection {
  public:
    explicit SystemConnection(BMidiLocalConsumer& consumer)
        : systems(MidiSystems::Open()), gate(consumer), thread(gate) {
        systems->Register(consumer.Name(), thread);
        thread.Start();
    }
    ~SystemConnection() override { systems->Unregister(); }

    void EndNotes() noexcept override { thread.EndNotes(); }
    status_t Connect(int32 source, bool connected) override {
        return systems->Connect(source, connected);
    }
    int64 LostPieces() const override { return thread.LostPieces(); }
    EventGate& Gate() override { return gate; }

  private:
    std::shared_ptr<MidiSystems> systems;
    EventGate gate;
    MidiThread thread;
};

} // namespace

} // namespace kits

status_t BMidiLocalConsumer::Register() {
    if (!connection)
        connection = std::make_unique<kits::SystemConnection>(*this);
    return B_OK;
}
