// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/support/Room.h"

#include "kits/support/Descriptor.h"

#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/mman.h>

namespace kits {

Result<void> CheckRoom(std::size_t descriptors, std::size_t bytes) {
    std::vector<Descriptor> taken;
    while (taken.size() < descriptors) {
        taken.emplace_back(::open("/dev/null", O_RDONLY | O_CLOEXEC));
        if (!taken.back())
            return Error{
                "there is not enough room for open files: " + std::to_string(descriptors) +
                " descriptors more are needed (ulimit -n shows how many a program may have)"};
    }
    void* space = ::mmap(nullptr, bytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (space == MAP_FAILED)
        return Error{"there is not enough memory: " + std::to_string(bytes >> 20) +
                     " MB more are needed (ulimit -v shows how many kB a program may have)"};
    ::munmap(space, bytes);
    return {};
}

} // namespace kits
