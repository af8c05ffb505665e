// SPDX-License-Identifier: GPL-3.0-or-later
// The extensions are what a host calls: CLAP's tables of functions, which pass all on to the
// instance.
#pragma once

#include "plugin/clap/Plugin.h"

namespace vexa::clap {

extern const clap_plugin_descriptor kDescriptor;

clap_plugin FaceOf(Plugin& plugin);

} // namespace vexa::clap
