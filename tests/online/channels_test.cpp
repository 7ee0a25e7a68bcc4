// The forms for many channels.
#include <mensura/online.h>

#include <array>

#include "samples.h"
#include "support/expect.h"

using samples::sample;

// A call for count channels does to each what run does to it alone, in place or not.  On the way some go on from where
// they were in an earlier call of this, perhaps with another length.
static void expect_each_alone(auto &all, auto init_all, auto run_all, auto init, auto run, auto argument) {
    support::Noise noise(10);
    init_all(all, 10, 3);
    for (int count = -1; count <= 10; ++count) {
        SCOPED_TRACE(testing::Message() << count << " channels, argument " << argument);
        const auto former = std::to_array(all);
        auto alone = former;
        init_all(all, count, argument);
        for (int i = 0; i < count; ++i) init(alone.data() + i, argument);
        for (int t = 0; t < 60; ++t) {
            const int k = noise.below(10);
            if (t > 30 && k < count) all[k] = alone.data()[k] = former.data()[k];
            std::array<double, 11> x, separate{}, &out = t % 2 == 0 ? x : separate;
            for (double &level : x) level = sample(noise);
            auto expected = out;
            for (int i = 0; i < count; ++i) expected.data()[i] = run(alone.data() + i, x.data()[i]);
            run_all(all, x.data(), out.data(), count);
            ASSERT_SAME_BITS(out, expected) << "at sample " << t;
        }
        for (std::size_t i = 0; i < 10; ++i) EXPECT_SAME_BITS(run(&all[i], 1), run(&alone[i], 1)) << "channel " << i;
    }
}

TEST(Channels, are_each_as_if_alone) {
    CentralDiffOnline differences[10]{};
    AmplitudeLimitOnline limiters[10]{};
    MovingAverageBank bank{};
    LimitAverageOnline both[10]{};
    expect_each_alone(differences, init_central_difference_onlines, central_difference_onlines,
                      init_central_difference_online, central_difference_online, 0.7);
    expect_each_alone(limiters, init_amlitude_limit_filer_onlines, amlitude_limit_filer_onlines,
                      init_amlitude_limit_filer_online, amlitude_limit_filer_online, 5.0);
    for (const int length : samples::kLengths) {
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
