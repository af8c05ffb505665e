// SPDX-License-Identifier: GPL-3.0-or-later
// Fails if a command line of either program gives neither options in range nor a message. Arguments
// end at line feeds.

#include "app/AppOptions.h"
#include "fuzz/Fuzzing.h"
#include "render/Options.h"

#include <algorithm>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8* data, std::size_t size) {
    std::vector<std::string> arguments;
    std::string_view rest = fuzz::Text(data, size);
    while (!rest.empty()) {
        const std::string_view argument =
            rest.substr(0, rest.find_first_of(std::string_view("\n\0", 2)));
        arguments.emplace_back(argument);
        rest.remove_prefix(std::min(rest.size(), argument.size() + 1));
    }
    const auto render = vexa::ParseOptions(arguments);
    fuzz::Require(render || !render.Fault().text.empty(), "a refusal says why");
    if (render) {
        fuzz::Require(render->voices.value_or(20) >= 1 && render->voices.value_or(20) <= 20 &&
                          render->channel >= -1 && render->channel < 16 && render->rate >= 8000 &&
                          render->rate <= 768000 && render->gain >= 0 && render->gain <= 1 &&
                          render->tail >= 0 && render->tail <= 3600 && render->block >= 1 &&
                          render->tuning.a4.value_or(440) >= 1 &&
                          render->tuning.a4.value_or(440) <= 20000,
                      "the numbers are in range");
        fuzz::Require(render->action != vexa::Options::Action::Render ||
                          (!render->midi.empty() && !render->output.empty()),
                      "the files are named");
    }
    const auto app = vexa::ParseAppOptions(arguments);
    fuzz::Require(app || !app.Fault().text.empty(), "a refusal says why");
    if (app)
        fuzz::Require(app->voices.value_or(1) >= 1 && app->voices.value_or(1) <= 20 &&
                          app->channel.value_or(0) >= -1 && app->channel.value_or(0) < 16,
                      "the numbers are in range");
    return 0;
}
