#include <gtest/gtest.h>
#include <mensura/smooth.h>

#include <algorithm>
#include <cfloat>
#include <climits>
#include <cmath>
#include <random>
#include <valarray>
#include <vector>

#include "allocations.h"

namespace {

using Long = std::valarray<long double>;
using Numbers = std::vector<double>;
using Size = Numbers::size_type;

constexpr struct Smoother {
    void (*run)(const double *x, double *y, int n);
    Size degree, window;
} kSmoothers[] = {{linearSmooth3, 1, 3},    {linearSmooth5, 1, 5},   {linearSmooth7, 1, 7},
                  {linearSmooth9, 1, 9},    {linearSmooth11, 1, 11}, {quadraticSmooth5, 2, 5},
                  {quadraticSmooth7, 2, 7}, {cubicSmooth5, 3, 5},    {cubicSmooth7, 3, 7}};

// Least squares: the value of the polynomial at sample i is a sum of weights times samples.  They come from a basis of
// orthonormal polynomials, here as the smallest whole numbers after their divisor.
Numbers divisor_and_weights(const Smoother &s, Size i) {
    Long position(s.window), p(1, s.window), weights(s.window);
    for (Size k = 0; k < s.window; ++k) position[k] = static_cast<long double>(k);
    std::vector<Long> basis;
    for (Size d = 0; d <= s.degree; ++d, p *= position) {
        for (const Long &q : basis) p -= (p * q).sum() * q;
        p /= std::sqrt((p * p).sum());
        weights += p[i] * p;
        basis.push_back(p);
    }
    Numbers row{1};
    const auto off = [](long double w) { return std::fabs(std::remainder(w, 1.0L)); };
    while ((weights * static_cast<long double>(row[0])).apply(off).max() > 1e-14L) ++row[0];
    for (const long double w : weights) row.push_back(std::round(static_cast<double>(w) * row[0]));
    return row;
}

// A copy, or such a sum for each sample, towards the end from right to left.
Numbers smoothed(const Smoother &s, const double *x, Size n) {
    std::vector<Numbers> rows;
    for (Size i = 0; i <= s.window / 2; ++i) rows.push_back(divisor_and_weights(s, i));
    Numbers y(x, x + n);
    for (Size j = 0; n >= s.window && j < n; ++j) {
        const Size after = n - 1 - j, i = std::min({j, after, s.window / 2});
        const bool right = after < std::min(j, s.window / 2), fractions = s.window == 11 && i < 5;
        const Numbers &row = rows[i];
        y[j] = 0;
        for (Size k = 0; k < s.window; ++k)
            y[j] += (fractions ? row[k + 1] / row[0] : row[k + 1]) * (right ? x[n - 1 - k] : x[j - i + k]);
        y[j] /= fractions ? 1 : row[0];
    }
    return y;
}

// Noise with a NaN here and there, short and beyond the caches; or whole numbers from a polynomial of the degree, whose
// sums are exact but for the fractions: there 11 products, sums and weights round, the weights at most 2 in all.
TEST(Smooth, values_are_least_squares_sums_between_untouched_cells_and_a_polynomial_comes_back) {
    std::mt19937_64 source(1);
    const auto same = [](double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); };
    for (const Smoother &s : kSmoothers)
        for (Size n = 0; n <= 3000001; n += n < 60 ? 1 : 2999941)
            for (Size shift = n > 60 ? 16 : 0; shift < 17; ++shift) {
                Numbers memory(n + shift % 4), out(n + 8, 77), expected = out;
                double *const x = memory.data() + shift % 4, *const y = &out[1 + shift / 4];
                for (double &v : memory)
                    v = source() % 64 == 0 ? std::nan("") : static_cast<double>(source()) * 0x1p-60 - 8;
                for (Size t = 0; t < n && shift == 0; ++t) x[t] = 5 - std::pow(static_cast<double>(t) - 7, s.degree);
                std::ranges::copy(smoothed(s, x, n), &expected[1 + shift / 4]);
                const int allocated = allocations;
                for (const int size : {INT_MIN, -1, static_cast<int>(n)}) s.run(x, y, size);
                EXPECT_EQ(allocations, allocated);
                ASSERT_TRUE(std::ranges::equal(out, expected, same)) << s.degree << ", " << s.window << ", " << n;
                for (Size t = 0; t < n && shift == 0; ++t)
                    EXPECT_NEAR(y[t], x[t], s.window == 11 ? 7 * 2 * 60 * DBL_EPSILON : 0) << s.degree << ", " << n;
            }
}

}  // namespace
