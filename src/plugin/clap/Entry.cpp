// SPDX-License-Identifier: GPL-3.0-or-later
// The entry point, the only symbol that a host sees.
#include "plugin/clap/Extensions.h"

#include <cstdio>
#include <cstring>
#include <exception>

#include <clap/entry.h>
#include <clap/plugin-factory.h>
#include <dlfcn.h>

namespace vexa::clap {

namespace {

/// Returns the folder "vexa" beside this shared object, independently of the path that a host
/// gives.
std::filesystem::path Content() {
    Dl_info info{};
    if (dladdr(&clap_entry, &info) == 0 || !info.dli_fname)
        return {};
    std::error_code ignored;
    const std::filesystem::path file = std::filesystem::absolute(info.dli_fname, ignored);
    return file.parent_path() / "vexa";
}

const clap_plugin* Create(const clap_plugin_factory*, const clap_host* host, const char* id) try {
    if (!host || !clap_version_is_compatible(host->clap_version) ||
        std::strcmp(id, kDescriptor.id) != 0)
        return nullptr;
    return (new Plugin(*host, Content()))->Face();
} catch (const std::exception& fault) {
    std::fprintf(stderr, "vexa: %s\n", fault.what());
    return nullptr;
}

constexpr clap_plugin_factory kFactory{
    [](const clap_plugin_factory*) -> uint32_t { return 1; },
    [](const clap_plugin_factory*, uint32_t index) { return index == 0 ? &kDescriptor : nullptr; },
    Create};

} // namespace

} // namespace vexa::clap

const clap_plugin_entry clap_entry{CLAP_VERSION, [](const char*) { return true; }, [] {},
                                   [](const char* id) -> const void* {
                                       return std::strcmp(id, CLAP_PLUGIN_FACTORY_ID) == 0
                                                  ? &vexa::clap::kFactory
                                                  : nullptr;
                                   }};
