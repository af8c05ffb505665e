// A compiled expression that is loaded.
#pragma once

#include "kits/kernel/Image.h"
#include "synth/PlaneFunction.h"

#include <optional>
#include <string>

namespace vexa {

/// Owns a loaded add-on and knows what it exports; unloads it when destroyed, when no thread may
/// execute its function any more. The window thread, or wherever the compiler runs.
class FunctionAddon {
  public:
    /// Takes over `image`, which is loaded.
    explicit FunctionAddon(image_id image);
    FunctionAddon(FunctionAddon&& other) noexcept;
    FunctionAddon& operator=(FunctionAddon&&) = delete;
    ~FunctionAddon();

    /// The plane function. Its point form is null if the add-on has no r2rfun, its block form if
    /// it has no r2rfunblock.
    const PlaneFunction& Function() const { return function; }
    /// What r2rfunstr returns: the expression; nothing if the add-on has no such function.
    const std::optional<std::string>& Expression() const { return expression; }

  private:
    image_id image;
    PlaneFunction function;
    std::optional<std::string> expression;
};

} // namespace vexa
