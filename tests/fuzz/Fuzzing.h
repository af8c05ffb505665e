// SPDX-License-Identifier: GPL-3.0-or-later
// Helpers that the fuzzers share.
#pragma once

#include "kits/support/SupportDefs.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

namespace fuzz {

/// Ends the program if a promise is broken, so that the fuzzer keeps the input.
inline void Require(bool kept, std::string_view promise) {
    if (kept)
        return;
    std::fprintf(stderr, "broken: %.*s\n", static_cast<int>(promise.size()), promise.data());
    std::abort();
}

inline std::string_view Text(const uint8* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

/// A folder for the files of a fuzzer.
struct WorkFolder {
    WorkFolder() {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "vexa-fuzz-XXXXXX").string();
        Require(::mkdtemp(pattern.data()) != nullptr, "there is a temporary folder");
        path = pattern;
    }
    ~WorkFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    std::filesystem::path path;
};

} // namespace fuzz
