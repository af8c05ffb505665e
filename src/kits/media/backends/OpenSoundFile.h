// SPDX-License-Identifier: GPL-3.0-or-later
// An open file of libsndfile that is closed with its owner.
#pragma once

#include <memory>

#include <sndfile.h>

namespace kits {

struct CloseSoundFile {
    void operator()(SNDFILE* file) const { sf_close(file); }
};

using OpenSoundFile = std::unique_ptr<SNDFILE, CloseSoundFile>;

} // namespace kits
