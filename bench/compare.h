// Ours and a peer, timed in turn in one run: counters `ours_ns`, `peer_ns` (per item), their ratio, and `quiet`, the
// share of rounds in which nobody interfered.
//
// The machine may be shared and change its speed from second to second.  A round takes ours and the peer one after the
// other, with a probe before, between and after them (quiet.h); where one of the three is disturbed, the round is
// repeated.  On a machine that does not get quiet a row ends after kSpare seconds of repetition.
//
// Of the quiet rounds the medians are taken, of the ratio as of either time.  In a round ours and the peer have the
// same clock, so that the ratio repeats within 1 % or 2 % from run to run; a best of each would compare lucky moments
// of different rounds, and misses by 3 % to 7 % where work on wide vectors lowers the clock.  Memory that is shared
// with others is seen by no probe: rows that move megabytes repeat within 5 %.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <iterator>
#include <vector>

#include "noise.h"
#include "quiet.h"

namespace bench {

constexpr double kSpare = 2.0;
constexpr std::size_t kMostRounds = 20000;

struct Nothing {
    void operator()() const {}
};

// Seconds of one round, and its probes.
struct Round {
    double ours = 0, peer = 0;
    std::array<double, 3> probes{};

    bool quiet() const {
        return std::ranges::all_of(probes, [](double ratio) { return probe().quiet(ratio); });
    }
    double ratio() const { return ours / peer; }
};

template <typename Value>
double median(const std::vector<Round> &rounds, Value value) {
    std::vector<double> values;
    for (const Round &round : rounds) values.push_back(std::invoke(value, round));
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

template <typename Ours, typename Peer, typename Prepare>
Round take_turns(Ours &ours, Peer &peer, Prepare &prepare) {
    Round round;
    prepare();
    round.probes[0] = probe().now();
    round.ours = seconds(ours);
    round.probes[1] = probe().now();
    prepare();
    round.peer = seconds(peer);
    round.probes[2] = probe().now();
    return round;
}

inline void report(benchmark::State &state, double items, const std::vector<Round> &rounds) {
    std::vector<Round> quiet;  // by what is usual, which the first rounds may not have known
    std::ranges::copy_if(rounds, std::back_inserter(quiet), &Round::quiet);
    state.counters["quiet"] = static_cast<double>(quiet.size()) / static_cast<double>(rounds.size());
    const std::vector<Round> &counted = quiet.empty() ? rounds : quiet;
    state.counters["ours_ns"] = median(counted, &Round::ours) / items * 1e9;
    state.counters["peer_ns"] = median(counted, &Round::peer) / items * 1e9;
    state.counters["ratio"] = median(counted, &Round::ratio);
}

// One iteration of the benchmark is one round; each callable does `items` items of work.  `prepare` runs before either,
// untimed: work in place needs its data back.
template <typename Ours, typename Peer, typename Prepare = Nothing>
void compare(benchmark::State &state, double items, Ours &&ours, Peer &&peer, Prepare &&prepare = {}) {
    std::vector<Round> rounds;
    rounds.reserve(kMostRounds);  // to grow would move the top of the heap, where large transforms have their memory
    double spare = kSpare;
    for (auto _ : state) {
        rounds.push_back(take_turns(ours, peer, prepare));
        while (!rounds.back().quiet() && spare > 0 && rounds.size() < kMostRounds)
            spare -= seconds([&] { rounds.push_back(take_turns(ours, peer, prepare)); });
        state.SetIterationTime(rounds.back().ours);
    }
    report(state, items, rounds);
}

}  // namespace bench

// Registers `void name(benchmark::State &)` as such a comparison.
#define MENSURA_COMPARE(name, rounds) \
    BENCHMARK(name)->UseManualTime()->Iterations(rounds)->Unit(benchmark::kMicrosecond)
