// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/storage/Digest.h"

#include "kits/storage/ReadFile.h"

#include <array>
#include <cstdint>

#include <sha2.h>

namespace kits {

namespace {

const std::uint8_t* BytesOf(std::string_view text) {
    return reinterpret_cast<const std::uint8_t*>(text.data());
}

} // namespace

std::string Digest(std::string_view bytes) {
    std::array<char, SHA256_DIGEST_STRING_LENGTH> text{};
    ::SHA256Data(BytesOf(bytes), bytes.size(), text.data());
    return text.data();
}

Result<std::string> DigestOfFile(const std::filesystem::path& path) {
    SHA2_CTX state;
    ::SHA256Init(&state);
    const auto read = ReadFileInPieces(path, [&state](std::string_view piece) {
        ::SHA256Update(&state, BytesOf(piece), piece.size());
    });
    if (!read)
        return read.Fault();
    std::array<char, SHA256_DIGEST_STRING_LENGTH> text{};
    ::SHA256End(&state, text.data());
    return std::string(text.data());
}

} // namespace kits
