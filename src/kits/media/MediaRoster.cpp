// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/media/MediaRoster.h"

#include "kits/media/ConsumerList.h"
#include "kits/media/SystemMixer.h"

#include <map>

struct BMediaRoster::Records {
    struct Connection {
        media_source source;
        media_destination destination;
    };

    template<class Node>
    Node* Find(media_node_id id) const {
        const auto found = nodes.find(id);
        return found == nodes.end() ? nullptr : dynamic_cast<Node*>(found->second);
    }
    template<class Node>
    Node* FindByPort(int32 port) const {
        for (const auto& [id, node] : nodes) {
            if (node->ControlPort() == port)
                return dynamic_cast<Node*>(node);
        }
        return nullptr;
    }

    std::map<media_node_id, BMediaNode*> nodes;
    media_node_id lastId = 0;
    kits::SystemMixer* mixer = nullptr;
    /// Why there was no mixer when it was last asked for.
    std::string mixerFault;
    std::vector<Connection> connections;
};

BMediaRoster::BMediaRoster(std::unique_ptr<Records> records) : records(std::move(records)) {}
BMediaRoster::~BMediaRoster() = default;

BMediaRoster* BMediaRoster::Roster() {
    static auto* roster = new BMediaRoster(std::make_unique<Records>());
    return roster;
}

status_t BMediaRoster::RegisterNode(BMediaNode* node) {
    if (!node || node->ID() >= 0)
        return B_BAD_VALUE;
    if (auto* consumer = dynamic_cast<BBufferConsumer*>(node)) {
        if (!kits::ListConsumer(node->ControlPort(), consumer))
            return B_NO_MEMORY;
    }
    node->id = ++records->lastId;
    records->nodes[node->id] = node;
    node->Call([node] { node->NodeRegistered(); });
    return B_OK;
}

status_t BMediaRoster::GetNodeFor(media_node_id id, media_node* node) {
    auto* found = records->Find<BMediaNode>(id);
    if (!found)
        return B_MEDIA_BAD_NODE;
    found->references++;
    *node = found->Node();
    return B_OK;
}

status_t BMediaRoster::ReleaseNode(const media_node& node) {
    auto* found = records->Find<BMediaNode>(node.node);
    if (!found)
        return B_MEDIA_BAD_NODE;
    if (--found->references > 0)
        return B_OK;
    records->nodes.erase(node.node);
    if (auto* consumer = dynamic_cast<BBufferConsumer*>(found))
        kits::UnlistConsumer(consumer);
    if (found == records->mixer)
        records->mixer = nullptr;
    delete found;
    return B_OK;
}

status_t BMediaRoster::GetAudioMixer(media_node* mixer) {
    if (!records->mixer) {
        auto opened = kits::SystemMixer::Open(kits::AudioSystemsToTry());
        if (!opened) {
            records->mixerFault = opened.Fault().text;
            return B_NAME_NOT_FOUND;
        }
        if (const status_t status = RegisterMixer(*std::move(opened)); status != B_OK)
            return status;
    }
    return GetNodeFor(records->mixer->ID(), mixer);
}

const std::string& BMediaRoster::MixerFault() const {
    return records->mixerFault;
}

status_t BMediaRoster::RegisterMixer(std::unique_ptr<kits::SystemMixer> mixer) {
    if (records->mixer)
        return B_BAD_VALUE;
    const status_t status = RegisterNode(mixer.get());
    if (status == B_OK) {
        kits::ChooseAudioSystem(mixer->System());
        records->mixer = mixer.release();
    }
    return status;
}

status_t BMediaRoster::GetTimeSource(media_node* timeSource) {
    *timeSource = records->mixer ? records->mixer->Node() : BTimeSource::System()->Node();
    return B_OK;
}

status_t BMediaRoster::SetTimeSourceFor(media_node_id node, media_node_id timeSource) {
    auto* found = records->Find<BMediaNode>(node);
    if (!found)
        return B_MEDIA_BAD_NODE;
    found->timeSource = records->Find<BTimeSource>(timeSource);
    return B_OK;
}

BTimeSource* BMediaRoster::MakeTimeSourceFor(const media_node& node) {
    auto* found = records->Find<BMediaNode>(node.node);
    return found ? found->TimeSource() : nullptr;
}

status_t BMediaRoster::GetFreeOutputsFor(const media_node& node, media_output* outputs, int32 room,
                                         int32* count, media_type type) {
    *count = 0;
    auto* producer = records->Find<BBufferProducer>(node.node);
    if (!producer)
        return B_MEDIA_BAD_NODE;
    producer->Call([&] {
        int32 cookie = 0;
        media_output output;
        while (*count < room && producer->GetNextOutput(&cookie, &output) == B_OK) {
            const bool fits = type == B_MEDIA_UNKNOWN_TYPE || output.format.type == type;
            if (fits && output.destination == media_destination::null)
                outputs[(*count)++] = output;
        }
        producer->DisposeOutputCookie(cookie);
    });
    return *count > 0 ? B_OK : B_ERROR;
}

status_t BMediaRoster::GetFreeInputsFor(const media_node& node, media_input* inputs, int32 room,
                                        int32* count, media_type type) {
    *count = 0;
    auto* consumer = records->Find<BBufferConsumer>(node.node);
    if (!consumer)
        return B_MEDIA_BAD_NODE;
    consumer->Call([&] {
        int32 cookie = 0;
        media_input input;
        while (*count < room && consumer->GetNextInput(&cookie, &input) == B_OK) {
            if (type == B_MEDIA_UNKNOWN_TYPE || input.format.type == type)
                inputs[(*count)++] = input;
        }
    });
    return *count > 0 ? B_OK : B_ERROR;
}

status_t BMediaRoster::Connect(const media_source& from, const media_destination& to,
                               media_format* format, media_output* output, media_input* input) {
    auto* producer = records->FindByPort<BBufferProducer>(from.port);
    if (!producer)
        return B_MEDIA_BAD_SOURCE;
    auto* consumer = records->FindByPort<BBufferConsumer>(to.port);
    if (!consumer)
        return B_MEDIA_BAD_DESTINATION;

    status_t status = B_OK;
    const auto asked = [&status](BMediaNode* node, const std::function<status_t()>& hook) {
        node->Call([&] { status = hook(); });
        return status == B_OK;
    };
    if (!asked(producer, [&] { return producer->FormatProposal(from, format); }) ||
        !asked(consumer, [&] { return consumer->AcceptFormat(to, format); }))
        return status;
    media_source source = from;
    char name[B_MEDIA_NAME_LENGTH] = {};
    if (!asked(producer,
               [&] { return producer->PrepareToConnect(from, to, format, &source, name); }))
        return status;
    asked(consumer, [&] { return consumer->Connected(producer, source, to, *format); });
    producer->Call([&] { producer->Connect(status, source, to, *format, name); });
    if (status != B_OK)
        return status;
    records->connections.push_back({source, to});
    *output = {producer->Node(), source, to, *format, {}};
    *input = {consumer->Node(), source, to, *format, {}};
    std::copy(std::begin(name), std::end(name), output->name);
    std::copy(std::begin(name), std::end(name), input->name);
    return B_OK;
}

status_t BMediaRoster::Disconnect(media_node_id from, const media_source& source, media_node_id to,
                                  const media_destination& destination) {
    auto* producer = records->Find<BBufferProducer>(from);
    auto* consumer = records->Find<BBufferConsumer>(to);
    if (!producer || !consumer)
        return B_MEDIA_BAD_NODE;
    const auto same = [&](const Records::Connection& connection) {
        return connection.source == source && connection.destination == destination;
    };
    if (std::erase_if(records->connections, same) == 0)
        return B_MEDIA_NOT_CONNECTED;
    producer->Call([&] { producer->Disconnect(source, destination); });
    consumer->Call([&] { consumer->Disconnected(source, destination); });
    return B_OK;
}

status_t BMediaRoster::SetRunModeNode(const media_node& node, run_mode mode) {
    auto* found = records->Find<BMediaNode>(node.node);
    if (!found)
        return B_MEDIA_BAD_NODE;
    found->Call([&] {
        found->mode = mode;
        found->SetRunMode(mode);
    });
    return B_OK;
}

status_t BMediaRoster::GetLatencyFor(const media_node& node, bigtime_t* latency) {
    auto* producer = records->Find<BBufferProducer>(node.node);
    if (!producer)
        return B_MEDIA_BAD_NODE;
    status_t status = B_OK;
    producer->Call([&] { status = producer->GetLatency(latency); });
    return status;
}

status_t BMediaRoster::StartNode(const media_node& node, bigtime_t performanceTime) {
    auto* found = records->Find<BMediaNode>(node.node);
    if (!found)
        return B_MEDIA_BAD_NODE;
    found->Call([&] { found->Start(performanceTime); });
    return B_OK;
}

status_t BMediaRoster::StopNode(const media_node& node, bigtime_t performanceTime, bool immediate) {
    auto* found = records->Find<BMediaNode>(node.node);
    if (!found)
        return B_MEDIA_BAD_NODE;
    found->Call([&] { found->Stop(performanceTime, immediate); });
    // With a later stop the producer still sends until then, so missing buffers still count.
    if (!immediate)
        return B_OK;
    for (const Records::Connection& connection : records->connections) {
        if (connection.source.port == found->ControlPort()) {
            if (BBufferConsumer* consumer = kits::ConsumerOf(connection.destination))
                consumer->Call([&] { consumer->ProducerStopped(connection.destination); });
        }
    }
    return B_OK;
}
