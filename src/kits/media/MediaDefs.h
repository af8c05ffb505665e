// SPDX-License-Identifier: GPL-3.0-or-later
// The nodes of the media graph and the ends of their connections, by number.
#pragma once

#include "kits/media/MediaFormats.h"
#include "kits/support/SupportDefs.h"

#include <cerrno>
#include <string>

constexpr status_t B_MEDIA_BAD_SOURCE = -10001;
constexpr status_t B_MEDIA_BAD_DESTINATION = -10002;
constexpr status_t B_MEDIA_BAD_FORMAT = -10003;
constexpr status_t B_MEDIA_BAD_NODE = -10004;
constexpr status_t B_MEDIA_ALREADY_CONNECTED = -10005;
constexpr status_t B_MEDIA_NOT_CONNECTED = -10006;
constexpr status_t B_TIMED_OUT = -ETIMEDOUT;

using media_node_id = int32;
using media_buffer_id = int32;

/// The start of a connection: an output of the node with that control port.
struct media_source {
    int32 port = -1;
    int32 id = -1;
    bool operator==(const media_source&) const = default;
    static const media_source null;
};
inline constexpr media_source media_source::null{};

/// The end of a connection: an input of the node with that control port.
struct media_destination {
    int32 port = -1;
    int32 id = -1;
    bool operator==(const media_destination&) const = default;
    static const media_destination null;
};
inline constexpr media_destination media_destination::null{};

enum node_kind : uint32 {
    B_BUFFER_PRODUCER = 1,
    B_BUFFER_CONSUMER = 2,
    B_TIME_SOURCE = 4,
    B_SYSTEM_MIXER = 8,
};

/// A node as the roster knows it.
struct media_node {
    media_node_id node = -1;
    /// The node's control port, which identifies its outputs and inputs.
    int32 port = -1;
    uint32 kind = 0;
    bool operator==(const media_node&) const = default;
};

/// The maximum length of a connection's name in bytes, including its terminating zero.
constexpr std::size_t B_MEDIA_NAME_LENGTH = 64;

struct media_output {
    media_node node;
    media_source source;
    media_destination destination;
    media_format format;
    char name[B_MEDIA_NAME_LENGTH] = {};
};

struct media_input {
    media_node node;
    media_source source;
    media_destination destination;
    media_format format;
    char name[B_MEDIA_NAME_LENGTH] = {};
};

/// The header that describes the content of a buffer.
struct media_header {
    media_type type = B_MEDIA_NO_TYPE;
    /// The number of bytes of content in the buffer.
    std::size_t size_used = 0;
    media_node_id time_source = -1;
    /// Performance time at which the first frame is to be heard, in microseconds.
    bigtime_t start_time = 0;
};

/// The ways in which a node deals with being late.
enum run_mode : int32 {
    B_OFFLINE = 1,
    B_DECREASE_PRECISION,
    B_INCREASE_LATENCY,
    B_DROP_DATA,
    B_RECORDING,
};
