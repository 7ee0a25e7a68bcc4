// A tile of results stays in registers while k runs over its sums, side by side and each in order.

#include "product_kernel.h"

#include "../internal/target.h"

namespace mensura::matrix::MENSURA_TARGET {
namespace {

using Size = std::size_t;

#ifdef __AVX__
constexpr Size kTall = 6;  // by 8: 12 sums, 2 of b and 1 of a fill the 16 registers
#else
constexpr Size kTall = 3;  // the registers are half as wide
#endif

// A column of a tile is four neighbouring columns, or one.
template <typename T>
LANES_INLINE T get(const double *p) {
    if constexpr (sizeof(T) == sizeof(Lanes))
        return load(p);
    else
        return *p;
}
template <typename T>
LANES_INLINE T splat(double x) {
    if constexpr (sizeof(T) == sizeof(Lanes))
        return all(x);
    else
        return x;
}
LANES_INLINE void put(double *p, Lanes v) { store(p, v); }
LANES_INLINE void put(double *p, double x) { *p = x; }

template <Size kColumns>
struct Columns {
    Size at[kColumns];
};

template <Size kRows, typename T, typename Source, typename Target, Size kColumns>
LANES_INLINE void tile(const Source &a, const Source &b, const Target &out, Size i, Columns<kColumns> columns,
                       Size inner) {
    T sum[kRows][kColumns] = {};
    for (Size k = 0; k < inner; ++k) {
        T bk[kColumns];
        for (Size c = 0; c < kColumns; ++c) bk[c] = get<T>(b.row(k) + columns.at[c]);
        for (Size r = 0; r < kRows; ++r) {
            const T x = splat<T>(a.row(i + r)[k]);
            for (Size c = 0; c < kColumns; ++c) sum[r][c] += x * bk[c];
        }
    }
    for (Size r = 0; r < kRows; ++r)
        for (Size c = 0; c < kColumns; ++c) put(out.row(i + r) + columns.at[c], sum[r][c]);
}

// The rows from i on that do not fill a tall tile.
template <Size kRows, typename T, typename Source, typename Target, Size kColumns>
LANES_INLINE void last_rows(const Source &a, const Source &b, const Target &out, Size i, Columns<kColumns> columns,
                            ProductSize size) {
    if constexpr (kRows > 0) {
        if (size.rows - i == kRows)
            tile<kRows, T>(a, b, out, i, columns, size.inner);
        else
            last_rows<kRows - 1, T>(a, b, out, i, columns, size);
    }
}

template <typename T, typename Source, typename Target, Size kColumns>
LANES_INLINE void panel(const Source &a, const Source &b, const Target &out, Columns<kColumns> columns,
                        ProductSize size) {
    Size i = 0;
    for (; i + kTall <= size.rows; i += kTall) tile<kTall, T>(a, b, out, i, columns, size.inner);
    last_rows<kTall - 1, T>(a, b, out, i, columns, size);
}

// The last four columns may overlap those before: they get the same values again.
template <typename Source, typename Target>
LANES_INLINE void product(const Source &a, const Source &b, const Target &out, ProductSize size) {
    if (size.cols < kLanes) {
        for (Size j = 0; j < size.cols; ++j) panel<double>(a, b, out, Columns<1>{{j}}, size);
        return;
    }
    const Size last = size.cols - kLanes;
    Size j = 0;
    for (; j < last; j += 2 * kLanes)
        panel<Lanes>(a, b, out, Columns<2>{{j, j + kLanes < last ? j + kLanes : last}}, size);
    if (j < size.cols) panel<Lanes>(a, b, out, Columns<1>{{last}}, size);
}

}  // namespace

void multiply(Strided<const double> a, Strided<const double> b, Strided<double> out, ProductSize size) {
    product(a, b, out, size);
}

void multiply_rows(RowPointers a, RowPointers b, RowPointers out, ProductSize size) { product(a, b, out, size); }

}  // namespace mensura::matrix::MENSURA_TARGET
