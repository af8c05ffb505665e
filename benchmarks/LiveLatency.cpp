// SPDX-License-Identifier: GPL-3.0-or-later
// How long is it from a note's MIDI event to its first sample, by a JACK server's clock?
//
// LiveLatency [PERIOD [NOTES]] prints the median and the maximum in frames at 48000 Hz, and for
// comparison three periods and one buffer of the producer.
#include "live/LivePlay.h"

#include <cstdio>
#include <cstdlib>

int main(int count, char** arguments) {
    const int period = count > 1 ? std::atoi(arguments[1]) : 128;
    const int notes = count > 2 ? std::atoi(arguments[2]) : 1000;
    if (notes < 1) {
        std::fprintf(stderr, "LiveLatency: NOTES is a number from 1\n");
        return 2;
    }
    test::LivePlay play(period, std::size_t(notes + 10) * 3200 + 48000);
    std::vector<std::uint32_t> noteOns;
    play.Play(test::ShortNotes(notes, noteOns));
    play.Listen(4800);
    std::vector<int> latencies = play.Latencies(noteOns, 3000);
    std::sort(latencies.begin(), latencies.end());
    std::printf("%d notes at %d frames: median %d, 99 %% %d, worst %d frames\n", notes, period,
                latencies[latencies.size() / 2], latencies[latencies.size() * 99 / 100],
                latencies.back());
    play.Vexa().End(SIGTERM);
    std::printf("%s", play.Log().c_str());
}
