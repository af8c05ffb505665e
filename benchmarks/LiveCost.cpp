// SPDX-License-Identifier: GPL-3.0-or-later
// What do oversampling and stereo cost when a sound is played live?
//
// LiveCost [SECONDS [ROUNDS [PERIOD [SOUND]]]] plays the chord of LiveSoak on a JACK server of its
// own. It plays the given sound ("pad" by default) in turns plain, in stereo, oversampled, and
// both. It prints the percentage of a core that each takes: per round, the median of the rounds,
// and the median of the differences from the first in the same round.
#include "CostTable.h"
#include "LiveChord.h"

#include <array>
#include <cstdio>
#include <cstdlib>

namespace {

struct Way {
    const char* name;
    std::vector<std::string> options;
    std::vector<double> percent{};
};

/// Returns the load in percent of a core.
double Cost(const std::string& sound, const std::vector<std::string>& options,
            std::uint32_t seconds, int period) {
    test::LivePlay play(period, 48000, sound, options);
    std::vector<test::Player::Message> script = bench::Chord(seconds);
    // The work after the start, such as compiling, is over by now.
    play.Play({script.begin(), script.begin() + 20});
    play.Play({{96000, {0xB0, 1, 1}}});
    const double before = bench::Look(play.Vexa().Process()).processor;
    play.Play(std::move(script));
    const double after = bench::Look(play.Vexa().Process()).processor;
    play.Vexa().End(SIGTERM);
    return 100 * (after - before) / seconds;
}

} // namespace

int main(int count, char** arguments) {
    const auto number = [&](int index, int otherwise) {
        return count > index ? std::atoi(arguments[index]) : otherwise;
    };
    const auto seconds = std::uint32_t(number(1, 20));
    const int rounds = number(2, 5);
    const int period = number(3, 64);
    const std::string sound =
        test::Contents(count > 4 ? arguments[4] : VEXA_PROGRAM_FOLDER "/sounds/pad.xml");
    std::array<Way, 4> ways{{{"1 x", {"--spread", "0", "--oversample", "1"}},
                             {"stereo", {"--spread", "60", "--oversample", "1"}},
                             {"4 x", {"--spread", "0", "--oversample", "4"}},
                             {"4 x and stereo", {"--oversample", "4", "--spread", "60"}}}};
    for (int round = 0; round < rounds; round++) {
        for (Way& way : ways) {
            way.percent.push_back(Cost(sound, way.options, seconds, period));
            std::printf("%s %.2f%s", way.name, way.percent.back(),
                        &way == &ways.back() ? "\n" : ", ");
            std::fflush(stdout);
        }
    }
    vexa::benchmark::PrintCosts(std::span<const Way>(ways));
}
