// SPDX-License-Identifier: GPL-3.0-or-later
// What do oversampling and stereo cost where a sound is played live?
//
// LiveCost [SECONDS [ROUNDS [PERIOD [SOUND]]]] plays the chord of LiveSoak on a JACK server of its
// own, by turns with the sound of that file ("pad") plain, in stereo, oversampled, and both, and
// prints what each takes of a core: in each round, the median of the rounds, and that of the
// differences from the first in the same round.
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

/// Percent of a core.
double Cost(const std::string& sound, const std::vector<std::string>& options,
            std::uint32_t seconds, int period) {
    test::LivePlay play(period, 48000, sound, options);
    std::vector<test::Player::Message> script = bench::Chord(seconds);
    // What follows the start, such as the compiler, is over.
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
