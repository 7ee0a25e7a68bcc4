#include <gtest/gtest.h>
#include <mensura/online.h>

#include <algorithm>
#include <array>
#include <cfloat>
#include <cmath>
#include <cstring>
#include <numeric>
#include <random>
#include <vector>

#include "allocations.h"

namespace {

using Size = std::size_t;
constexpr int kLengths[] = {1, 2, 3, 4, 5, 8, 31, 2000};

// The same bits, or both NaN.
bool same(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0 || (std::isnan(a) && std::isnan(b)); }

std::mt19937_64 source(9);
double sample() {  // up to 8 in size; rarely one that spreads, overflows or vanishes
    const double kSpecial[] = {-0.0, 0.0, DBL_TRUE_MIN, DBL_MAX, -DBL_MAX, HUGE_VAL, -HUGE_VAL, std::nan("")};
    return source() % 512 == 0 ? kSpecial[source() % 8] : static_cast<double>(source()) * 0x1p-60 - 8;
}

TEST(central_difference, is_its_formula_and_the_one_of_streams_the_same_a_sample_late) {
    for (int n = -1; n <= 4000003; n += n < 40 ? 1 : 3999963)
        for (Size shift = 0; shift < 16; shift += n <= 40 ? 1 : 7) {
            const Size size = n > 1 ? static_cast<Size>(n) : 0, start = 1 + shift / 4;
            std::vector<double> memory(size + shift % 4), out(size + 8, 77), expected = out;
            std::ranges::generate(memory, sample);
            const double *const x = memory.data() + shift % 4;
            CentralDiffOnline s{1, 2, 3, 4};
            init_central_difference_online(&s, 0.7);
            for (Size i = 0; i < size; ++i) {
                const double before = i == 0 ? x[0] + x[0] - x[1] : x[i - 1];
                const double after = i + 1 == size ? x[i] + x[i] - x[i - 1] : x[i + 1];
                expected[start + i] = (after - before) / (2 * 0.7);
                ASSERT_TRUE(same(central_difference_online(&s, x[i]), i < 2 ? 0 : expected[start + i - 1])) << i;
            }
            const int allocated = allocations;
            central_difference(x, &out[start], n, 0.7);
            EXPECT_EQ(allocations, allocated);
            ASSERT_TRUE(std::ranges::equal(out, expected, same)) << n << " samples, shift " << shift;
        }
}

// Spikes: 18 samples in a row at most, after the first six.  Average: a sum in the order of the slots.
TEST(amlitude_limit_move_average_filter_online, is_its_two_filters_in_a_row_and_each_of_them_its_rule) {
    const double levels[] = {0, 1, 1 + DBL_EPSILON, -1, 7, HUGE_VAL, -HUGE_VAL, std::nan("")};
    for (const int length : kLengths)
        for (const double limit : {1.0, 5.0, 0.0, -1.0, HUGE_VAL, std::nan("")}) {
            AmplitudeLimitOnline limiter{9, 9, 9};
            MovingAverageOnline average;
            LimitAverageOnline both;
            std::memset(&average, 0xff, sizeof average);
            std::memset(&both, 0xff, sizeof both);
            init_amlitude_limit_filer_online(&limiter, limit);
            init_move_average_filter_online(&average, length);
            init_amlitude_limit_move_average_filter_online(&both, length, limit);
            double x = 0, last = 0, slots[2000] = {};
            for (int t = 0, rejected = 0; t < 2 * length + 1000; ++t) {
                if (t < 7 || source() % 12 == 0) x = length < 9 ? levels[source() % 8] : sample();
                const bool rejects = t >= 6 && std::fabs(x - last) > limit && rejected < 18;
                rejected = rejects ? rejected + 1 : 0;
                slots[t % length] = last = rejects ? last : x;
                const double mean = std::accumulate(slots, slots + length, 0.0) / std::min(t + 1, length);
                EXPECT_TRUE(same(amlitude_limit_filer_online(&limiter, x), last)) << t << ", limit " << limit;
                EXPECT_EQ(limiter.Count, std::min(t + 1, 6) + rejected) << t << ", limit " << limit;
                EXPECT_TRUE(same(move_average_filter_online(&average, last), mean)) << t << ", length " << length;
                EXPECT_TRUE(same(amlitude_limit_move_average_filter_online(&both, x), mean)) << t << ' ' << length;
            }
        }
}

// A call for count channels does to each what run does to it alone, in place or not.  On the way some go on from where
// they were in an earlier call of this, perhaps with another length.
void expect_each_alone(auto &all, auto init_all, auto run_all, auto init, auto run, auto argument) {
    init_all(all, 10, 3);
    for (int count = -1; count <= 10; ++count) {
        const auto former = std::to_array(all);
        auto alone = former;
        init_all(all, count, argument);
        for (int i = 0; i < count; ++i) init(alone.data() + i, argument);
        for (Size t = 0; t < 60; ++t) {
            const Size k = source() % 10;
            if (t > 30 && static_cast<int>(k) < count) all[k] = alone[k] = former[k];
            double x[11], separate[11] = {}, *const out = t % 2 == 0 ? x : separate, expected[11];
            std::ranges::generate(x, sample);
            std::copy_n(out, 11, expected);
            for (int i = 0; i < count; ++i) expected[i] = run(alone.data() + i, x[i]);
            const int allocated = allocations;
            run_all(all, x, out, count);
            EXPECT_EQ(allocations, allocated);
            ASSERT_TRUE(std::equal(out, out + 11, expected, same)) << count << " channels";
        }
        for (Size i = 0; i < 10; ++i) EXPECT_TRUE(same(run(&all[i], 1), run(&alone[i], 1))) << i << " of " << count;
    }
}

TEST(Onlines, treat_each_channel_as_if_alone) {
    CentralDiffOnline differences[10]{};
    AmplitudeLimitOnline limiters[10]{};
    MovingAverageBank bank{};
    LimitAverageOnline both[10]{};
    expect_each_alone(differences, init_central_difference_onlines, central_difference_onlines,
                      init_central_difference_online, central_difference_online, 0.7);
    expect_each_alone(limiters, init_amlitude_limit_filer_onlines, amlitude_limit_filer_onlines,
                      init_amlitude_limit_filer_online, amlitude_limit_filer_online, 5.0);
    for (const int length : kLengths) {
        expect_each_alone(
            bank.Filters, [&](auto, int n, int m) { init_move_average_filter_onlines(&bank, m, n); },
            [&](auto, auto x, auto out, int n) { EXPECT_EQ(move_average_filter_onlines(&bank, x, out), n); },
            init_move_average_filter_online, move_average_filter_online, length);
        expect_each_alone(
            both, [](auto s, int n, int m) { init_amlitude_limit_move_average_filter_onlines(s, m, n, 5); },
            amlitude_limit_move_average_filter_onlines,
            [](auto s, int m) { init_amlitude_limit_move_average_filter_online(s, m, 5); },
            amlitude_limit_move_average_filter_online, length);
    }
}

}  // namespace
