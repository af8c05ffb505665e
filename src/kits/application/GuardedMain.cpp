#include "kits/application/GuardedMain.h"

#include <csignal>
#include <cstdio>
#include <exception>
#include <new>

namespace kits {

int GuardedMain(const char* program, const std::function<int()>& work) {
    // A write beyond the size that the user's limit allows is to fail, as on a full disk.
    std::signal(SIGXFSZ, SIG_IGN);
    try {
        return work();
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "%s: there is not enough memory\n", program);
    } catch (const std::exception& fault) {
        std::fprintf(stderr, "%s: %s\n", program, fault.what());
    }
    return 1;
}

} // namespace kits
