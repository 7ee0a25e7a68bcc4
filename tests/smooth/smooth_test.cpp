// The nine smoothers.
#include <climits>

#include "support/noise.h"
#include "support/reference/smooth.h"
#include "support/written.h"

using reference::kSmoothers, reference::Smoother;

static std::vector<double> noise_with_gaps(int n) {
    support::Noise noise(static_cast<unsigned>(n));
    std::vector<double> x(static_cast<std::size_t>(n));
    for (double &sample : x) sample = noise.one_in(64) ? NAN : 8 * noise();
    return x;
}

TEST(Smooth, values_are_least_squares_sums) {
    for (const Smoother &s : kSmoothers) {
        SCOPED_TRACE(testing::Message() << "degree " << s.degree << ", window " << s.window);
        const auto run = [&](const double *x, double *y, int n) {
            for (const int size : {INT_MIN, -1, n}) s.run(x, y, size);
        };
        const auto expect = [&](int n, const std::vector<int> &shifts) {
            const std::vector<double> x = noise_with_gaps(n);
            support::expect_written(x, reference::smoothed(s, x.data(), x.size()), run, shifts);
        };
        for (int n = 0; n <= 60 && !HasFailure(); ++n) expect(n, {0, 1, 2, 3});
        expect(3000001, {0});  // beyond the caches
    }
}
