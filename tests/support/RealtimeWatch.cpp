// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/RealtimeWatch.h"

#include "synth/Realtime.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

#include <dlfcn.h>
#include <pthread.h>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define WATCH_C_LIBRARY 0
#else
#define WATCH_C_LIBRARY 1
#endif

namespace {

std::atomic<bool> watching = false;
std::atomic<int> faults = 0;

void Note() {
    if (watching.load(std::memory_order_relaxed) && vexa::RealtimeSection::Inside())
        faults++;
}

} // namespace

namespace test {

RealtimeWatch::RealtimeWatch() {
    faults = 0;
    watching = true;
}
RealtimeWatch::~RealtimeWatch() {
    watching = false;
}
int RealtimeWatch::Faults() const {
    return faults;
}

} // namespace test

#if WATCH_C_LIBRARY

// The C library's own names of the functions that those below replace.
extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void __libc_free(void*);

void* malloc(std::size_t size) {
    Note();
    return __libc_malloc(size);
}
void* calloc(std::size_t count, std::size_t size) {
    Note();
    return __libc_calloc(count, size);
}
void* realloc(void* block, std::size_t size) {
    Note();
    return __libc_realloc(block, size);
}
void free(void* block) {
    if (block)
        Note();
    __libc_free(block);
}
int pthread_mutex_lock(pthread_mutex_t* mutex) {
    Note();
    using Lock = int (*)(pthread_mutex_t*);
    static const auto lock = reinterpret_cast<Lock>(dlsym(RTLD_NEXT, "pthread_mutex_lock"));
    return lock(mutex);
}
}

#else

// A sanitizer replaces the C library's functions itself; those of C++ remain.
void* operator new(std::size_t size) {
    Note();
    if (void* block = std::malloc(size))
        return block;
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    Note();
    return std::malloc(size);
}
void operator delete(void* block) noexcept {
    Note();
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    operator delete(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
    operator delete(block);
}

#endif
