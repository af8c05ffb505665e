// SPDX-License-Identifier: GPL-3.0-or-later
// The roster knows all nodes and connections of the process.
#pragma once

#include "kits/media/MediaNode.h"

#include <memory>
#include <string>

namespace kits {
class SystemMixer;
}

/// Brings nodes together: counts references, conducts the negotiation of a connection in its order
/// (the producer's proposal, the consumer's acceptance, PrepareToConnect, Connected, Connect), and
/// starts and stops nodes. Every hook is called in its node's own thread. Window thread.
class BMediaRoster {
  public:
    static BMediaRoster* Roster();

    /// Takes ownership of the node. Nobody has a reference to it yet.
    status_t RegisterNode(BMediaNode* node);
    /// Looks up a registered node and counts a reference to it.
    status_t GetNodeFor(media_node_id id, media_node* node);
    /// Releases a reference; the node is deleted with the last one.
    status_t ReleaseNode(const media_node& node);

    /// Finds the node that mixes its inputs into the audio device, and counts a reference to it.
    /// Opens the device unless it is open. Returns B_NAME_NOT_FOUND if there is no device;
    /// MixerFault then says why.
    status_t GetAudioMixer(media_node* mixer);
    const std::string& MixerFault() const;
    /// Registers a mixer that the caller has opened as the one that GetAudioMixer finds. There must
    /// be none yet.
    status_t RegisterMixer(std::unique_ptr<kits::SystemMixer> mixer);
    /// Returns the mixer's clock, or the system's if there is no mixer.
    status_t GetTimeSource(media_node* timeSource);
    status_t SetTimeSourceFor(media_node_id node, media_node_id timeSource);
    /// Returns the clock of a node, which the caller releases; null for an unknown node.
    BTimeSource* MakeTimeSourceFor(const media_node& node);

    status_t GetFreeOutputsFor(const media_node& producer, media_output* outputs, int32 room,
                               int32* count, media_type type = B_MEDIA_UNKNOWN_TYPE);
    status_t GetFreeInputsFor(const media_node& consumer, media_input* inputs, int32 room,
                              int32* count, media_type type = B_MEDIA_UNKNOWN_TYPE);

    /// Connects a producer's output to a consumer's input. On success the format is the one that
    /// both have agreed on, and output and input are filled in.
    status_t Connect(const media_source& from, const media_destination& to, media_format* format,
                     media_output* output, media_input* input);
    status_t Disconnect(media_node_id producer, const media_source& source, media_node_id consumer,
                        const media_destination& destination);

    status_t SetRunModeNode(const media_node& node, run_mode mode);
    /// Returns a producer's latency in microseconds.
    status_t GetLatencyFor(const media_node& node, bigtime_t* latency);
    status_t StartNode(const media_node& node, bigtime_t performanceTime);
    status_t StopNode(const media_node& node, bigtime_t performanceTime, bool immediate);

    struct Records;

  private:
    explicit BMediaRoster(std::unique_ptr<Records> records);
    ~BMediaRoster();
    std::unique_ptr<Records> records;
};
