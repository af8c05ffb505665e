#include "kits/media/MediaFormats.h"

const media_raw_audio_format media_raw_audio_format::wildcard = {};
