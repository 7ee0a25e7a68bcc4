// Matrices in plain loops.
#pragma once

#include <cmath>
#include <cstddef>
#include <numeric>
#include <optional>
#include <utility>
#include <vector>

namespace reference {

struct Grid {
    int rows = 0, cols = 0;
    std::vector<double> values = std::vector<double>(static_cast<std::size_t>(rows) * static_cast<std::size_t>(cols));

    double &operator()(int i, int j) { return values[static_cast<std::size_t>(i * cols + j)]; }
    double operator()(int i, int j) const { return values[static_cast<std::size_t>(i * cols + j)]; }
};

// Sums in the order of the inner index.
inline Grid product(const Grid &a, const Grid &b) {
    Grid sums{a.rows, b.cols};
    for (int i = 0; i < a.rows; ++i)
        for (int j = 0; j < b.cols; ++j)
            for (int k = 0; k < a.cols; ++k) sums(i, j) += a(i, k) * b(k, j);
    return sums;
}

// Gauss-Jordan elimination with complete pivoting; nothing if the matrix is singular.
inline std::optional<Grid> inverse(const Grid &a) {
    const int n = a.rows;
    Grid b = a;
    std::vector<int> row(static_cast<std::size_t>(n));  // element (k, l) is in row row[k], column col[l]
    std::iota(row.begin(), row.end(), 0);
    std::vector<int> col = row;
    const auto at = [&](int k, int l) -> double & {
        return b(row[static_cast<std::size_t>(k)], col[static_cast<std::size_t>(l)]);
    };
    for (int k = 0; k < n; ++k) {
        double largest = 0;
        auto r = static_cast<std::size_t>(k), c = r;
        for (int i = k; i < n; ++i)
            for (int j = k; j < n; ++j) {
                if (!(std::fabs(at(i, j)) > largest)) continue;
                largest = std::fabs(at(i, j));
                r = static_cast<std::size_t>(i);
                c = static_cast<std::size_t>(j);
            }
        if (largest + 1.0 == 1.0) return std::nullopt;
        std::swap(row[static_cast<std::size_t>(k)], row[r]);
        std::swap(col[static_cast<std::size_t>(k)], col[c]);
        const double p = 1 / at(k, k);
        for (int j = 0; j < n; ++j) at(k, j) = j == k ? p : at(k, j) * p;
        for (int i = 0; i < n; ++i) {
            const double factor = at(i, k);
            for (int j = 0; j < n && i != k; ++j) at(i, j) = j == k ? -p * factor : at(i, j) - factor * at(k, j);
        }
    }
    Grid inverse{n, n};
    for (int k = 0; k < n; ++k)
        for (int l = 0; l < n; ++l)
            inverse(col[static_cast<std::size_t>(k)], row[static_cast<std::size_t>(l)]) = at(k, l);
    return inverse;
}

}  // namespace reference
