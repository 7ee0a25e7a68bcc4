// The amplitude limit, the moving average, and both in a row.
#include <mensura/online.h>

#include <cfloat>
#include <cstring>

#include "samples.h"
#include "support/expect.h"
#include "support/reference/online.h"

TEST(LimitAverage, is_its_two_filters_in_a_row_and_each_of_them_its_rule) {
    constexpr double kLevels[] = {0, 1, 1 + DBL_EPSILON, -1, 7, HUGE_VAL, -HUGE_VAL, NAN};
    support::Noise noise(9);
    for (const int length : samples::kLengths)
        for (const double limit : {1.0, 5.0, 0.0, -1.0, HUGE_VAL, static_cast<double>(NAN)}) {
            AmplitudeLimitOnline limiter{9, 9, 9};
            MovingAverageOnline average;
            LimitAverageOnline both;
            std::memset(&average, 0xff, sizeof average);
            std::memset(&both, 0xff, sizeof both);
            init_amlitude_limit_filer_online(&limiter, limit);
            init_move_average_filter_online(&average, length);
            init_amlitude_limit_move_average_filter_online(&both, length, limit);
            reference::AmplitudeLimit kept(limit);
            reference::MovingAverage mean(length);
            double x = 0;
            for (int t = 0; t < 2 * length + 1000; ++t) {
                SCOPED_TRACE(testing::Message() << "sample " << t << ", limit " << limit << ", length " << length);
                if (t < 7 || noise.one_in(12)) x = length < 9 ? noise.pick(kLevels) : samples::sample(noise);
                const double last = kept(x), y = mean(last);
                ASSERT_SAME_BITS(amlitude_limit_filer_online(&limiter, x), last);
                ASSERT_EQ(limiter.Count, kept.count());
                ASSERT_SAME_BITS(move_average_filter_online(&average, last), y);
                ASSERT_SAME_BITS(amlitude_limit_move_average_filter_online(&both, x), y);
            }
        }
}
