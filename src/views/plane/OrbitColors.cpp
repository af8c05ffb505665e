// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/plane/OrbitColors.h"

namespace vexa {

// Seven hues in three tints, each only as light as its contrast to red requires.
constexpr std::array<rgb_color, kVoiceSlots> kOrbitColors = {
    {{255, 234, 0},   {84, 255, 113},  {110, 243, 255}, {255, 218, 181}, {255, 212, 255},
     {128, 255, 0},   {5, 255, 172},   {238, 255, 0},   {148, 255, 182}, {194, 241, 255},
     {255, 230, 184}, {255, 224, 250}, {167, 255, 120}, {117, 255, 230}, {218, 255, 84},
     {186, 255, 218}, {224, 243, 255}, {255, 241, 184}, {255, 235, 249}, {200, 255, 186},
     {171, 255, 252}}};

} // namespace vexa
