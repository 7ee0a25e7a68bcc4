// Least-squares smoothing: the value of the fitted polynomial is a sum of weights times samples.
#pragma once

#include <mensura/smooth.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <valarray>
#include <vector>

namespace reference {

struct Smoother {
    void (*run)(const double *x, double *y, int n);
    std::size_t degree, window;
};

inline constexpr Smoother kSmoothers[] = {{linearSmooth3, 1, 3},    {linearSmooth5, 1, 5},   {linearSmooth7, 1, 7},
                                          {linearSmooth9, 1, 9},    {linearSmooth11, 1, 11}, {quadraticSmooth5, 2, 5},
                                          {quadraticSmooth7, 2, 7}, {cubicSmooth5, 3, 5},    {cubicSmooth7, 3, 7}};

// The weights for sample i of a window come from a basis of orthonormal polynomials; here as the smallest whole numbers,
// after their divisor.
inline std::vector<double> divisor_and_weights(const Smoother &s, std::size_t i) {
    using Values = std::valarray<long double>;
    Values position(s.window), p(1, s.window), weights(s.window);
    for (std::size_t k = 0; k < s.window; ++k) position[k] = static_cast<long double>(k);
    std::vector<Values> basis;
    for (std::size_t d = 0; d <= s.degree; ++d, p *= position) {
        for (const Values &q : basis) p -= (p * q).sum() * q;
        p /= std::sqrt((p * p).sum());
        weights += p[i] * p;
        basis.push_back(p);
    }
    std::vector<double> row{1};
    const auto off = [](long double w) { return std::fabs(std::remainder(w, 1.0L)); };
    while ((weights * static_cast<long double>(row[0])).apply(off).max() > 1e-14L) ++row[0];
    for (const long double w : weights) row.push_back(std::round(static_cast<double>(w) * row[0]) + 0.0);  // no -0
    return row;
}

// A copy of a record shorter than the window; else a sum for each sample, towards the end from right to left.
inline std::vector<double> smoothed(const Smoother &s, const double *x, std::size_t n) {
    std::vector<std::vector<double>> rows;
    for (std::size_t i = 0; i <= s.window / 2; ++i) rows.push_back(divisor_and_weights(s, i));
    std::vector<double> y(x, x + n);
    for (std::size_t j = 0; n >= s.window && j < n; ++j) {
        const std::size_t after = n - 1 - j, i = std::min({j, after, s.window / 2});
        const bool right = after < std::min(j, s.window / 2), fractions = s.window == 11 && i < 5;
        const std::vector<double> &row = rows[i];
        for (std::size_t k = 0; k < s.window; ++k) {
            const double weight = fractions ? row[k + 1] / row[0] : row[k + 1];
            const double term = weight * (right ? x[n - 1 - k] : x[j - i + k]);
            y[j] = k == 0 ? term : y[j] + term;
        }
        y[j] /= fractions ? 1 : row[0];
    }
    return y;
}

}  // namespace reference
