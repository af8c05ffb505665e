// SPDX-License-Identifier: GPL-3.0-or-later
#include "functions/FunctionAddon.h"

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
      point(Find<PointForm>(image, "r2rfun")),
      block(Find<BlockForm>(image, "r2rfunblock")) {
    if (auto* const text = Find<const char* (*)()>(image, "r2rfunstr")) {
        const char* const returned = text();
        expression = returned ? returned : "";
    }
}

FunctionAddon::~FunctionAddon() {
    unload_add_on(image);
}

void FunctionAddon::Evaluate(const float* x, const float* y, const float* const* inputs,
                             float* values, std::size_t count) const noexcept {
    if (block)
        block(x, y, values, count);
    else
        PlaneSource::Evaluate(x, y, inputs, values, count);
}

} // namespace vexa
