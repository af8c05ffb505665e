// SPDX-License-Identifier: GPL-3.0-or-later
// The list of registered consumers, in which media threads look up where to send buffers.
#pragma once

#include "kits/media/MediaDefs.h"
#include "kits/support/RealtimeMark.h"

class BBufferConsumer;

namespace kits {

/// Returns the consumer that a destination belongs to; null if it is not listed. Media thread.
VEXA_REALTIME BBufferConsumer* ConsumerOf(const media_destination& destination) noexcept;

/// Lists a consumer by its control port; returns false if the list is full. Window thread.
bool ListConsumer(int32 port, BBufferConsumer* consumer);
/// Removes a consumer from the list if it is listed. Window thread.
void UnlistConsumer(const BBufferConsumer* consumer);

} // namespace kits
