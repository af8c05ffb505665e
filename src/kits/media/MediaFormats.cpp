// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/media/MediaFormats.h"

const media_raw_audio_format media_raw_audio_format::wildcard = {};
