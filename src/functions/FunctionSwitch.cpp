#include "functions/FunctionSwitch.h"

#include "kits/support/Published.h"

#include <utility>

namespace vexa {

FunctionSwitch::~FunctionSwitch() {
    Unload(std::move(addon));
}

void FunctionSwitch::Install(FunctionAddon next) {
    Install(next.Function());
    Unload(std::exchange(addon, std::make_shared<FunctionAddon>(std::move(next))));
}

void FunctionSwitch::Install(const PlaneFunction& function) {
    for (const Receiver& receiver : receivers)
        receiver(function);
}

void FunctionSwitch::Unload(std::shared_ptr<FunctionAddon> old) const {
    if (!old)
        return;
    kits::Retire([old = std::move(old)]() mutable { old.reset(); });
    kits::WaitForReaders(patience);
}

} // namespace vexa
