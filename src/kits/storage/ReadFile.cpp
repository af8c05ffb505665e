// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/storage/ReadFile.h"

#include "kits/storage/FileKind.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kits {

namespace {

Error NotRead(const std::filesystem::path& path, const std::string& reason) {
    return {"could not read " + path.string() + ": " + reason};
}

Result<void> ReadPieces(const Descriptor& file, const std::filesystem::path& path, std::size_t most,
                        const std::function<void(std::string_view)>& take) {
    const auto tooLong = [&] {
        return NotRead(path, "it is larger than " + std::to_string(most >> 20) + " MB");
    };
    struct stat status {};
    if (::fstat(file.Number(), &status) == 0 && static_cast<std::size_t>(status.st_size) > most)
        return tooLong();

    std::size_t length = 0;
    std::array<char, 65536> buffer;
    while (true) {
        const ssize_t count = ::read(file.Number(), buffer.data(), buffer.size());
        if (count == 0)
            return {};
        if (count < 0 && errno != EINTR)
            return NotRead(path, std::strerror(errno));
        const std::string_view piece(buffer.data(),
                                     static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        length += piece.size();
        if (length > most)
            return tooLong();
        take(piece);
    }
}

Result<std::string> ReadAll(const Descriptor& file, const std::filesystem::path& path,
                            std::size_t most) {
    std::string content;
    const auto append = [&content](std::string_view piece) { content += piece; };
    if (const auto read = ReadPieces(file, path, most, append); !read)
        return read.Fault();
    return content;
}

} // namespace

Result<Descriptor> OpenRegularFile(const std::filesystem::path& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0)
        return NotRead(path, std::strerror(errno));
    if (!S_ISREG(status.st_mode))
        return NotRead(path, WhatItIs(status.st_mode));
    // O_NONBLOCK, and the type checked again, because the file may have become a pipe in between.
    Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file || ::fstat(file.Number(), &status) != 0)
        return NotRead(path, std::strerror(errno));
    if (!S_ISREG(status.st_mode))
        return NotRead(path, WhatItIs(status.st_mode));
    return file;
}

Result<std::string> ReadFile(const std::filesystem::path& path, std::size_t most) {
    const Result<Descriptor> file = OpenRegularFile(path);
    return file ? ReadAll(*file, path, most) : file.Fault();
}

Result<void> ReadFileInPieces(const std::filesystem::path& path,
                              const std::function<void(std::string_view)>& take) {
    const Result<Descriptor> file = OpenRegularFile(path);
    return file ? ReadPieces(*file, path, kMostFileBytes, take) : file.Fault();
}

Result<std::string> ReadStream(const std::filesystem::path& path, std::size_t most) {
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
    return file ? ReadAll(file, path, most) : NotRead(path, std::strerror(errno));
}

} // namespace kits
