// SPDX-License-Identifier: GPL-3.0-or-later
// Fails if a file gives neither a sample that is finite everywhere, nor a reason.

#include "functions/SampleFunction.h"
#include "fuzz/Fuzzing.h"

#include <cmath>
#include <fstream>

extern "C" int LLVMFuzzerTestOneInput(const uint8* data, std::size_t size) {
    static const fuzz::WorkFolder work;
    const std::string path = (work.path / "sample").string();
    std::ofstream(path, std::ios::binary) << fuzz::Text(data, size);
    const auto loaded = vexa::LoadSample(path);
    if (!loaded) {
        fuzz::Require(loaded.Fault().text.find(path) != std::string::npos,
                      "a fault names the file");
        return 0;
    }
    const auto winding = vexa::WindingFor(loaded->frames->size(), loaded->frameRate, 440);
    const vexa::PlaneFunction spiral =
        std::make_shared<vexa::SampleSpiral>(loaded->frames, winding.value_or(vexa::Winding()));
    for (const float at : {0.0F, 0.01F, -1.7F, 4.9F, 1e9F}) {
        const float value = spiral(at, -at / 2);
        fuzz::Require(std::isfinite(value) && std::abs(value) <= 1.001F, "a sample is in range");
    }
    return 0;
}
