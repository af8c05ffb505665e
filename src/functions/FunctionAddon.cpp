#include "functions/FunctionAddon.h"

#include <utility>

namespace vexa {

namespace {

template<class Function>
Function Find(image_id image, const char* name) {
    void* address = nullptr;
    if (get_image_symbol(image, name, B_SYMBOL_TYPE_TEXT, &address) != B_OK)
        return nullptr;
    return reinterpret_cast<Function>(address);
}

} // namespace

FunctionAddon::FunctionAddon(image_id loaded)
    : image(loaded),
      function{Find<PointFunction>(image, "r2rfun"), Find<BlockFunction>(image, "r2rfunblock")} {
    if (auto* const text = Find<const char* (*)()>(image, "r2rfunstr")) {
        const char* const returned = text();
        expression = returned ? returned : "";
    }
}

FunctionAddon::FunctionAddon(FunctionAddon&& other) noexcept
    : image(std::exchange(other.image, 0)),
      function(std::exchange(other.function, {})),
      expression(std::move(other.expression)) {}

FunctionAddon::~FunctionAddon() {
    if (image > 0)
        unload_add_on(image);
}

} // namespace vexa
