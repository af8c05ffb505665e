// SPDX-License-Identifier: GPL-3.0-or-later
// The list has the registered consumers, as media threads look them up to send buffers.
#pragma once

#include "kits/media/MediaDefs.h"
#include "kits/support/RealtimeMark.h"

class BBufferConsumer;

namespace kits {

/// Returns the consumer that a destination belongs to; null where it is not listed. Media thread.
VEXA_REALTIME BBufferConsumer* ConsumerOf(const media_destination& destination) noexcept;

/// Lists a consumer by its control port; false where there are too many. Window thread.
bool ListConsumer(int32 port, BBufferConsumer* consumer);
/// Takes a consumer off the list, if it is there. Window thread.
void UnlistConsumer(const BBufferConsumer* consumer);

} // namespace kits
