// The matrices of the tracking model.
#include <mensura/kalman.h>

#include <cmath>

#include "support/expect.h"

// Writes cols columns for each of n states, element (i, j) by its formula, and nothing beyond.
static void expect_written(int n, int cols, auto element, auto build, auto... arguments) {
    std::vector<double> out(200, 77), expected = out;
    const auto width = static_cast<std::size_t>(std::max(cols, 1)), rows = static_cast<std::size_t>(std::max(n, 0));
    for (std::size_t k = 0; k < rows * width; ++k)
        expected[k] = element(static_cast<int>(k / width), static_cast<int>(k % width));
    EXPECT_EQ(build(out.data(), n, arguments...), out.data());
    EXPECT_SAME_BITS(out, expected);
}

TEST(KalmanModel, has_its_formulas_in_an_array_of_its_size) {
    constexpr double kA[3][3] = {{1, 0.1, 0}, {0, 1, 0.1}, {0, 0, 1}};  // position, velocity, acceleration
    constexpr double kQ[3][3] = {{2, 3, 4}, {3, 5, 6}, {4, 6, 7}}, kP[3][3] = {{2, 2, 2}, {2, 2e5, 200}, {2, 200, 2e3}};
    for (int n = -1; n <= 7; ++n) {
        SCOPED_TRACE(testing::Message() << n << " states");
        const auto for_each_axis = [axes = n / 3](auto &part) {
            return [&part, axes](int i, int j) {
                return std::max(i, j) < 3 * axes && i % axes == j % axes ? part[i / axes][j / axes] : 0;
            };
        };
        expect_written(n, n, for_each_axis(kA), getKalmanFilterA, 0.1);
        expect_written(n, n, for_each_axis(kQ), getKalmanFilterQ, 2, 3, 4, 5, 6, 7);
        expect_written(n, n, for_each_axis(kP), getKalmanFilterP, 2);
        expect_written(
            n, n, [](int i, int j) { return i == j ? HUGE_VAL : 0; }, getKalmanFilterR, HUGE_VAL);
        expect_written(
            n, 3 * n, [](int i, int j) { return i == j; }, getKalmanFilterC);
    }
}
