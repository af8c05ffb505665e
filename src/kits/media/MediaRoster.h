// SPDX-License-Identifier: GPL-3.0-or-later
// The roster knows all nodes and connections of the process.
#pragma once

#include "kits/media/MediaNode.h"

#include <memory>
#include <string>

namespace kits {
class SystemMixer;
}

/// Brings nodes together: it keeps the references, drives the negotiation of a connection in its
/// order (the producer's proposal, the consumer's acceptance, PrepareToConnect, Connected, Connect)
/// and starts and stops. Every hook is called in its node's own thread. Window thread.
class BMediaRoster {
  public:
    static BMediaRoster* Roster();

    /// The node is the roster's from now on. Nobody has a reference yet.
    status_t RegisterNode(BMediaNode* node);
    /// Looks up a registered node, which counts as a reference.
    status_t GetNodeFor(media_node_id id, media_node* node);
    /// Gives a reference back; with the last one the node is deleted.
    status_t ReleaseNode(const media_node& node);

    /// The node that mixes what it gets into the audio device; counts as a reference.
    /// B_NAME_NOT_FOUND where there is no device, and MixerFault says why. Opens the device unless
    /// it is open.
    status_t GetAudioMixer(media_node* mixer);
    const std::string& MixerFault() const;
    /// Makes a mixer that somebody else has opened the one of GetAudioMixer, which there must not
    /// be yet.
    status_t RegisterMixer(std::unique_ptr<kits::SystemMixer> mixer);
    /// Returns the mixer's clock, or without a mixer the system's.
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
    /// Tells a producer's latency in microseconds.
    status_t GetLatencyFor(const media_node& node, bigtime_t* latency);
    status_t StartNode(const media_node& node, bigtime_t performanceTime);
    status_t StopNode(const media_node& node, bigtime_t performanceTime, bool immediate);

    struct Records;

  private:
    explicit BMediaRoster(std::unique_ptr<Records> records);
    ~BMediaRoster();
    std::unique_ptr<Records> records;
};
