// Ours and a peer, timed in turn in one run: counters `ours_ns`, `peer_ns` (best round, per item) and their ratio.
//
// The machine may be shared and change its speed from second to second.  A round takes both within some hundred
// microseconds, and the best of many rounds is what either needs when nobody interferes.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <limits>
#include <random>
#include <vector>

namespace bench {

// Uniform in [-1, 1).
inline std::vector<double> noise(std::size_t n, unsigned seed = 1) {
    std::mt19937_64 bits(seed);
    std::uniform_real_distribution<double> uniform(-1, 1);
    std::vector<double> samples(n);
    for (double &x : samples) x = uniform(bits);
    return samples;
}

template <typename F>
double seconds(F &&f) {
    const auto start = std::chrono::steady_clock::now();
    f();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

struct Nothing {
    void operator()() const {}
};

// One iteration of the benchmark is one round; each callable does `items` items of work.  `prepare` runs before either,
// untimed: work in place needs its data back.
template <typename Ours, typename Peer, typename Prepare = Nothing>
void compare(benchmark::State &state, double items, Ours &&ours, Peer &&peer, Prepare &&prepare = {}) {
    double best_ours = std::numeric_limits<double>::infinity(), best_peer = best_ours;
    for (auto _ : state) {
        prepare();
        const double t = seconds(ours);
        best_ours = std::min(best_ours, t);
        prepare();
        best_peer = std::min(best_peer, seconds(peer));
        state.SetIterationTime(t);
    }
    state.counters["ours_ns"] = best_ours / items * 1e9;
    state.counters["peer_ns"] = best_peer / items * 1e9;
    state.counters["ratio"] = best_ours / best_peer;
}

}  // namespace bench

// Registers `void name(benchmark::State &)` as such a comparison.
#define MENSURA_COMPARE(name, rounds) \
    BENCHMARK(name)->UseManualTime()->Iterations(rounds)->Unit(benchmark::kMicrosecond)
