#include "kits/storage/ReadFile.h"

#include "kits/support/Descriptor.h"

#include <array>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kits {

Result<std::string> ReadFile(const std::filesystem::path& path) {
    const auto failure = [&path](int number) {
        return Error{"could not read " + path.string() + ": " + std::strerror(number)};
    };
    // O_NONBLOCK: to open a pipe must not wait for its writer.
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status {};
    if (!file || ::fstat(file.Number(), &status) != 0)
        return failure(errno);
    if (!S_ISREG(status.st_mode))
        return failure(S_ISDIR(status.st_mode) ? EISDIR : EINVAL);

    std::string content;
    std::array<char, 65536> buffer;
    while (true) {
        const ssize_t count = ::read(file.Number(), buffer.data(), buffer.size());
        if (count > 0)
            content.append(buffer.data(), static_cast<std::size_t>(count));
        else if (count == 0)
            return content;
        else if (errno != EINTR)
            return failure(errno);
    }
}

} // namespace kits
