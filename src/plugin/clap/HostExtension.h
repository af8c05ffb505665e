// SPDX-License-Identifier: GPL-3.0-or-later
// The extensions that a host offers to an instance.
#pragma once

#include <clap/host.h>

namespace vexa::clap {

/// Returns the host's extension with that name; null if it has none.
template<class Extension>
const Extension* Find(const clap_host& host, const char* id) {
    return static_cast<const Extension*>(host.get_extension(&host, id));
}

} // namespace vexa::clap
