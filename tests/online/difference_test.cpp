// The central difference of a record, and of a stream.
#include <mensura/online.h>

#include "samples.h"
#include "support/reference/online.h"
#include "support/written.h"

static void expect_differences(int n, const std::vector<int> &shifts) {
    support::Noise noise(static_cast<unsigned>(n));
    std::vector<double> x(static_cast<std::size_t>(n)), expected;
    for (double &sample : x) sample = samples::sample(noise);
    for (std::size_t i = 0; n > 1 && i < x.size(); ++i) expected.push_back(reference::central_difference(x, i, 0.7));
    const auto run = [](const double *in, double *out, int size) {
        for (const int length : {-1, size}) central_difference(in, out, length, 0.7);
    };
    support::expect_written(x, expected, run, shifts);
    CentralDiffOnline s{1, 2, 3, 4};
    init_central_difference_online(&s, 0.7);
    for (std::size_t i = 0; i < x.size(); ++i)
        ASSERT_SAME_BITS(central_difference_online(&s, x[i]), i < 2 ? 0 : expected[i - 1]) << "at sample " << i;
}

TEST(CentralDifference, is_its_formula_and_that_of_a_stream_the_same_a_sample_late) {
    for (int n = 0; n <= 40; ++n) expect_differences(n, {0, 1, 2, 3});
    expect_differences(4000003, {0, 3});  // beyond the caches
}
