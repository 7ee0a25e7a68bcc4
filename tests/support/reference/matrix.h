// Matrices in plain loops.
#pragma once

#include <mensura/matrix.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <optional>
#include <utility>
#include <vector>

namespace reference {

struct Grid {
    int rows = 0, cols = 0;
    std::vector<double> values = std::vector<double>(static_cast<std::size_t>(std::max(rows, 0) * std::max(cols, 0)));

    double *data() { return values.data(); }
    const double *data() const { return values.data(); }
    double &operator()(int i, int j) { return values[static_cast<std::size_t>(i * cols + j)]; }
    double operator()(int i, int j) const { return values[static_cast<std::size_t>(i * cols + j)]; }
};

Grid grid(int rows, int cols, auto element) {
    Grid x{rows, cols};
    for (int i = 0; i < rows; ++i)
        for (int j = 0; j < cols; ++j) x(i, j) = element(i, j);
    return x;
}

inline Grid identity(int rows, int cols) {
    return grid(rows, cols, [](int i, int j) { return i == j; });
}

inline Grid transposed(const Grid &x) {
    return grid(x.cols, x.rows, [&](int i, int j) { return x(j, i); });
}

inline Grid grid(const RMATRIX &x) {
    return grid(x.rows, x.cols, [&](int i, int j) { return x.data[i * RMATRIX_CAPACITY + j]; });
}

inline Grid grid(const Matrix &x) {
    return grid(x.m, x.n, [&](int i, int j) { return x.v[i][j]; });
}

inline std::vector<double *> rows(Grid &x) {
    std::vector<double *> starts;
    for (int i = 0; i < x.rows; ++i) starts.push_back(x.data() + i * x.cols);
    return starts;
}

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

// x with the identity in its first d rows and columns.
inline Grid minor(const Grid &x, int d) {
    return grid(x.rows, x.cols, [&](int i, int j) { return std::min(i, j) < d ? i == j : x(i, j); });
}

// {Q, R} by Householder's reflections H = I - 2 v v^T, each multiplied out.  Where next to nothing is left to reflect, v
// is the first axis along which there is next to nothing.
inline std::pair<Grid, Grid> householder(const Grid &x) {
    constexpr double kNothingLeft = 1e-10;
    const auto norm = [](const auto &v) { return std::sqrt(std::inner_product(begin(v), end(v), begin(v), 0.0)); };
    const int steps = std::min(x.cols, x.rows - 1);
    Grid z = x, q = identity(x.rows, x.rows);
    for (int k = 0; k < steps; ++k) {
        z = minor(z, k);
        std::vector<double> column, v;
        for (int i = 0; i < x.rows; ++i) column.push_back(z(i, k));
        const double a = x(k, k) > 0 ? -norm(column) : norm(column);
        for (int i = 0; i < x.rows; ++i) v.push_back(z(i, k) + a * (i == k));
        const double length = norm(v);
        const auto tiny = std::ranges::find_if(column, [](double c) { return std::fabs(c) < kNothingLeft; });
        const bool along_axis = !(length >= kNothingLeft) && tiny != column.end();
        for (double &c : v) c = along_axis ? 0 : length >= kNothingLeft ? c / length : c;
        if (along_axis) v[static_cast<std::size_t>(tiny - column.begin())] = 1;
        const Grid h = grid(x.rows, x.rows, [&](int i, int j) {
            const double vv = -2 * v[static_cast<std::size_t>(i)] * v[static_cast<std::size_t>(j)];
            return i == j ? vv + 1 : vv;
        });
        z = product(h, z);
        q = k == 0 ? h : product(h, q);
    }
    return {transposed(q), steps > 0 ? product(q, x) : x};
}

}  // namespace reference
