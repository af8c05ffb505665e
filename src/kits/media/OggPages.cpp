// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/media/OggPages.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>

#include <ogg/ogg.h>
#include <unistd.h>

namespace kits {

namespace {

// A page (RFC 3533, section 6): a header of 27 bytes, then a table of up to 255 segment lengths
// of one byte each, then the segments. The header's last byte is the number of segments. The number
// of frames up to the page's end is -1 if none ends in the page. Numbers begin with the lowest
// byte.
constexpr std::size_t kFixedHeader = 27;
constexpr std::size_t kFramesPosition = 6;
constexpr std::size_t kSerialPosition = 14;
constexpr std::size_t kMostSegments = 255;
constexpr std::size_t kLongestSegment = 255;

/// Reads `size` bytes, or fewer at the end of the file. Returns the number read, or -1 on an error.
ssize_t ReadAt(int descriptor, unsigned char* bytes, std::size_t size, off_t offset) {
    std::size_t done = 0;
    while (done < size) {
        const ssize_t count =
            ::pread(descriptor, bytes + done, size - done, offset + static_cast<off_t>(done));
        if (count == 0)
            break;
        if (count > 0)
            done += static_cast<std::size_t>(count);
        else if (errno != EINTR)
            return -1;
    }
    return static_cast<ssize_t>(done);
}

bool WriteAt(int descriptor, const unsigned char* bytes, std::size_t size, off_t offset) {
    while (size > 0) {
        const ssize_t count = ::pwrite(descriptor, bytes, size, offset);
        if (count < 0 && errno != EINTR)
            return false;
        if (count > 0) {
            bytes += count;
            size -= static_cast<std::size_t>(count);
            offset += count;
        }
    }
    return true;
}

} // namespace

Result<std::uint64_t> SetOggSerial(int descriptor, int serial) {
    std::array<unsigned char, kFixedHeader + kMostSegments> header;
    std::array<unsigned char, kMostSegments * kLongestSegment> body;
    std::uint64_t frames = 0;
    for (off_t offset = 0;;) {
        const ssize_t count = ReadAt(descriptor, header.data(), header.size(), offset);
        if (count < 0)
            return Error{std::strerror(errno)};
        if (count == 0)
            return frames;
        const std::size_t segments = header[kFixedHeader - 1];
        const std::size_t headerSize = kFixedHeader + segments;
        if (static_cast<std::size_t>(count) < headerSize ||
            std::memcmp(header.data(), "OggS", 4) != 0)
            return Error{"the encoder wrote a damaged page"};
        std::size_t bodySize = 0;
        for (std::size_t i = 0; i < segments; i++)
            bodySize += header[kFixedHeader + i];
        if (ReadAt(descriptor, body.data(), bodySize, offset + static_cast<off_t>(headerSize)) !=
            static_cast<ssize_t>(bodySize))
            return Error{"the encoder wrote a page without its end"};

        for (std::size_t i = 0; i < 4; i++)
            header[kSerialPosition + i] =
                static_cast<unsigned char>(static_cast<unsigned>(serial) >> (8 * i));
        ogg_page page{header.data(), static_cast<long>(headerSize), body.data(),
                      static_cast<long>(bodySize)};
        ogg_page_checksum_set(&page);
        if (!WriteAt(descriptor, header.data(), headerSize, offset))
            return Error{std::strerror(errno)};
        std::uint64_t end = 0;
        for (std::size_t i = 0; i < sizeof end; i++)
            end |= std::uint64_t(header[kFramesPosition + i]) << (8 * i);
        if (end != UINT64_MAX)
            frames = end;
        offset += static_cast<off_t>(headerSize + bodySize);
    }
}

} // namespace kits
