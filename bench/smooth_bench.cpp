// Smoothers and the derivative against a copy of the record, moving averages against the sum that they need.

#include <mensura/online.h>
#include <mensura/smooth.h>

#include <cmath>
#include <cstring>
#include <numeric>
#include <valarray>
#include <vector>

#include "compare.h"

namespace {

using Numbers = std::valarray<double>;

// ---- whole records, per sample ----

constexpr std::size_t kSamples = 1000000;
constexpr double kStep = 0.125;  // a power of two, so that all samples are exact

Numbers straight_line() {
    Numbers x(kSamples);
    for (std::size_t i = 0; i < kSamples; ++i) x[i] = kStep * static_cast<double>(i);
    return x;
}

// Both write to memory of their own that has been touched before.  `expected` is what a straight line becomes.
template <typename Routine>
void compare_with_copy(benchmark::State &state, Routine routine, const Numbers &expected) {
    const Numbers x = straight_line();
    Numbers y(kSamples), copy(kSamples);
    const auto ours = [&] { routine(&x[0], &y[0], static_cast<int>(kSamples)); };
    bench::compare(state, kSamples, ours, [&] {
        std::memcpy(&copy[0], &x[0], kSamples * sizeof(double));
        benchmark::ClobberMemory();
    });
    ours();
    state.counters["difference"] = std::abs(y - expected).max() / std::abs(expected).max();
}

void cubicSmooth7_against_memcpy(benchmark::State &state) { compare_with_copy(state, cubicSmooth7, straight_line()); }
MENSURA_COMPARE(cubicSmooth7_against_memcpy, 200);

void linearSmooth11_against_memcpy(benchmark::State &state) {
    compare_with_copy(state, linearSmooth11, straight_line());
}
MENSURA_COMPARE(linearSmooth11_against_memcpy, 200);

void central_difference_against_memcpy(benchmark::State &state) {
    compare_with_copy(
        state, [](const double *x, double *dx, int n) { central_difference(x, dx, n, kStep); }, Numbers(1.0, kSamples));
}
MENSURA_COMPARE(central_difference_against_memcpy, 200);

// ---- moving averages, per sample and channel ----

void compare_with_ordered_sum(benchmark::State &state, std::size_t length) {
    constexpr int kCalls = 200;
    std::vector<double> window = bench::noise(length);
    MovingAverageOnline average;
    init_move_average_filter_online(&average, static_cast<int>(length));
    double mean = 0, sum = 0;
    // Every sample is written to the place where it was: the window stays as it is.
    const auto step = [&] {
        mean = move_average_filter_online(&average, window[static_cast<std::size_t>(average.Pos)]);
    };
    for (std::size_t i = 0; i < length; ++i) step();
    bench::compare(
        state, kCalls,
        [&] {
            for (int i = 0; i < kCalls; ++i) step();
        },
        [&] {
            for (int i = 0; i < kCalls; ++i) {
                sum = std::accumulate(window.begin(), window.end(), 0.0);  // each addition waits for the one before
                benchmark::ClobberMemory();
            }
        });
    state.counters["difference"] = std::abs(mean - sum / static_cast<double>(length));
}

void move_average_filter_online_against_ordered_sum(benchmark::State &state) { compare_with_ordered_sum(state, 1000); }
MENSURA_COMPARE(move_average_filter_online_against_ordered_sum, 400);

void move_average_filter_online_of_100_against_ordered_sum(benchmark::State &state) {
    compare_with_ordered_sum(state, 100);
}
MENSURA_COMPARE(move_average_filter_online_of_100_against_ordered_sum, 1000);

void compare_ten_channels_with_one_by_one(benchmark::State &state, int length) {
    constexpr std::size_t kChannels = MOVING_AVERAGE_CHANNELS, kInstants = 20;
    MovingAverageBank bank;
    init_move_average_filter_onlines(&bank, length, kChannels);
    std::vector<MovingAverageOnline> singles(bank.Filters, bank.Filters + kChannels);
    const std::vector<double> in = bench::noise(kChannels * kInstants);
    Numbers ours(in.size()), peer(in.size());
    bench::compare(
        state, static_cast<double>(in.size()),
        [&] {
            for (std::size_t i = 0; i < in.size(); i += kChannels) move_average_filter_onlines(&bank, &in[i], &ours[i]);
        },
        [&] {
            for (std::size_t i = 0; i < in.size(); ++i)
                peer[i] = move_average_filter_online(&singles[i % kChannels], in[i]);
        });
    state.counters["difference"] = std::abs(ours - peer).max();
}

void move_average_filter_onlines_ten_channels_against_one_by_one(benchmark::State &state) {
    compare_ten_channels_with_one_by_one(state, 1000);
}
MENSURA_COMPARE(move_average_filter_onlines_ten_channels_against_one_by_one, 400);

void move_average_filter_onlines_ten_channels_of_100_against_one_by_one(benchmark::State &state) {
    compare_ten_channels_with_one_by_one(state, 100);
}
MENSURA_COMPARE(move_average_filter_onlines_ten_channels_of_100_against_one_by_one, 1000);

}  // namespace

BENCHMARK_MAIN();
