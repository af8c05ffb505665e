// SPDX-License-Identifier: GPL-3.0-or-later
#include "render/FloatStore.h"

#include <array>
#include <cerrno>
#include <cstring>

#include <unistd.h>

namespace vexa {

kits::Result<FloatStore> FloatStore::Create(const std::filesystem::path& beside) {
    auto file = kits::FileReplacement::Create(beside);
    if (!file)
        return file.Fault();
    return FloatStore(*std::move(file), beside);
}

kits::Result<void> FloatStore::Append(std::span<const float> samples) {
    return file.Write({reinterpret_cast<const char*>(samples.data()), samples.size_bytes()});
}

kits::Result<void> FloatStore::Replay(const Sink& sink) const {
    std::array<float, 16384> samples;
    off_t position = 0;
    while (true) {
        const ssize_t bytes = ::pread(file.Descriptor(), samples.data(), sizeof samples, position);
        if (bytes < 0 && errno == EINTR)
            continue;
        if (bytes < 0)
            return kits::Error{"could not read what was kept beside " + beside.string() + ": " +
                               std::strerror(errno)};
        const auto count = static_cast<std::size_t>(bytes) / sizeof(float);
        if (count == 0)
            return {};
        if (kits::Result<void> taken = sink({samples.data(), count}); !taken)
            return taken;
        position += static_cast<off_t>(count * sizeof(float));
    }
}

} // namespace vexa
