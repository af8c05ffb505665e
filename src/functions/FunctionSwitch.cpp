#include "functions/FunctionSwitch.h"

#include "kits/support/Published.h"

#include <iterator>
#include <utility>

namespace vexa {

FunctionSwitch::~FunctionSwitch() {
    Unload(addons);
}

void FunctionSwitch::Install(FunctionAddon next) {
    addons.push_front(std::move(next));
    Install(addons.front().Function());
    Addons old;
    old.splice(old.begin(), addons, std::next(addons.begin()), addons.end());
    Unload(old);
}

void FunctionSwitch::Install(const PlaneFunction& function) {
    for (const Receiver& receiver : receivers)
        receiver(function);
}

void FunctionSwitch::Unload(Addons& old) const {
    if (old.empty())
        return;
    // A plain pointer: what cannot even be retired stays loaded rather than go while it is called.
    auto* gone = new Addons;
    gone->swap(old);
    kits::Retire([gone] { delete gone; });
    kits::WaitForReaders(patience);
}

} // namespace vexa
