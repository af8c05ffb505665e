// SPDX-License-Identifier: GPL-3.0-or-later
// The extensions: CLAP's tables of functions that a host calls. They forward every call to the
// instance.
#pragma once

#include "plugin/clap/Plugin.h"

namespace vexa::clap {

extern const clap_plugin_descriptor kDescriptor;

clap_plugin FaceOf(Plugin& plugin);

} // namespace vexa::clap
