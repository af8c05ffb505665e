// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/kernel/Image.h"

#include "kits/support/Descriptor.h"

#include <cstring>
#include <map>
#include <mutex>

#include <dlfcn.h>
#include <fcntl.h>

namespace {

struct Image {
    void* handle;
    /// For a path that it has seen, the loader returns the object that it loaded from there before,
    /// even if the file was replaced. A path through an open descriptor is unique as long as that
    /// is open.
    kits::Descriptor file;
};

/// All loaded add-ons.
struct Images {
    std::mutex mutex;
    std::map<image_id, Image> loaded;
    image_id last = 0;
};

/// Never destroyed: add-ons may be unloaded by the destructor of any static object.
Images& TheImages() {
    static auto* images = new Images;
    return *images;
}

std::string& Fault() {
    thread_local std::string text;
    return text;
}

} // namespace

image_id load_add_on(const char* path) {
    kits::Descriptor file(::open(path, O_RDONLY | O_CLOEXEC));
    if (!file) {
        const int number = errno;
        Fault() = std::string(path) + ": " + std::strerror(number);
        return -number;
    }
    const std::string unique = "/proc/self/fd/" + std::to_string(file.Number());
    void* handle = ::dlopen(unique.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle) {
        const char* reason = ::dlerror();
        Fault() = std::string(path) + ": " + (reason ? reason : "not a shared object");
        return B_ERROR;
    }
    Images& images = TheImages();
    const std::lock_guard lock(images.mutex);
    images.loaded.emplace(++images.last, Image{handle, std::move(file)});
    return images.last;
}

status_t get_image_symbol(image_id image, const char* name, int32, void** address) {
    Images& images = TheImages();
    const std::lock_guard lock(images.mutex);
    const auto found = images.loaded.find(image);
    if (found == images.loaded.end())
        return B_BAD_VALUE;
    *address = ::dlsym(found->second.handle, name);
    return *address ? B_OK : B_NAME_NOT_FOUND;
}

status_t unload_add_on(image_id image) {
    Images& images = TheImages();
    const std::lock_guard lock(images.mutex);
    const auto found = images.loaded.find(image);
    if (found == images.loaded.end())
        return B_BAD_VALUE;
    const bool closed = ::dlclose(found->second.handle) == 0;
    images.loaded.erase(found);
    return closed ? B_OK : B_ERROR;
}

const std::string& kits::AddOnFault() {
    return Fault();
}
