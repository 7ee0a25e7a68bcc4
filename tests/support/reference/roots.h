// Polynomials, highest power first, multiplied term by term.
#pragma once

#include <mensura/roots.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <span>
#include <vector>

namespace reference {

template <typename T>
std::vector<T> product(const std::vector<T> &a, const std::vector<T> &b) {
    std::vector<T> ab(a.size() + b.size() - 1);
    for (std::size_t i = 0; i < a.size(); ++i)
        for (std::size_t j = 0; j < b.size(); ++j) ab[i + j] += a[i] * b[j];
    return ab;
}

// How far the polynomial of some roots is from p: max |rebuilt - p / p[0]| / max |p / p[0]|.
inline double rebuilding_error(std::span<const double> p, std::span<const CplxD> roots) {
    using Complex = std::complex<long double>;
    std::vector<Complex> rebuilt{1};
    for (const CplxD z : roots) rebuilt = product(rebuilt, {1, -Complex(z.re, z.im)});
    long double error = 0, size = 0;
    for (std::size_t i = 0; i < p.size(); ++i) {
        const long double c = static_cast<long double>(p[i]) / p[0];
        error = std::max(error, std::abs(rebuilt[i] - c));
        size = std::max(size, std::fabs(c));
    }
    return static_cast<double>(error / size);
}

}  // namespace reference
