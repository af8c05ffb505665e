// Which plane function is heard and seen, and the add-on behind it.
#pragma once

#include "functions/FunctionAddon.h"
#include "synth/PlaneFunction.h"

#include <chrono>
#include <functional>
#include <list>
#include <vector>

namespace vexa {

/// Hands a new function to all who call it, and keeps the code that they call loaded. The window
/// thread.
///
/// A receiver's threads call a function that they were given only inside a kits::Reader::Section,
/// or on the window thread, and in each section fetch it anew; so an add-on is unloaded when no
/// section can have it any more.
class FunctionSwitch {
  public:
    /// Takes the function that is from now on to be called.
    using Receiver = std::function<void(const PlaneFunction&)>;

    /// `patience`: how long to wait for threads that execute a function that was replaced. A block
    /// of sound takes a few milliseconds.
    explicit FunctionSwitch(std::chrono::milliseconds patience = std::chrono::seconds(1))
        : patience(patience) {}
    /// Unloads the add-on: no receiver may call its function any more.
    ~FunctionSwitch();
    FunctionSwitch(const FunctionSwitch&) = delete;
    FunctionSwitch& operator=(const FunctionSwitch&) = delete;

    /// Receivers are called in the order in which they were added.
    void AddReceiver(Receiver receiver) { receivers.push_back(std::move(receiver)); }

    /// Installs the function of an add-on, then waits until no thread executes that of the previous
    /// add-on, and unloads it. What takes longer than patience is unloaded by a later Retire or
    /// CollectRetired. Where a receiver throws, both stay loaded until the next one is installed.
    void Install(FunctionAddon next);

    /// Installs a function of the program. An add-on stays loaded until the next one replaces it.
    void Install(const PlaneFunction& function);

  private:
    using Addons = std::list<FunctionAddon>;
    void Unload(Addons& old) const;

    std::chrono::milliseconds patience;
    std::vector<Receiver> receivers;
    /// First the one that was installed last.
    Addons addons;
};

} // namespace vexa
