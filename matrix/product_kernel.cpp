// Matrix products by tiles: some rows and columns of results stay in registers while k runs over the terms of their
// sums, each of which is added in order.

#include "product_kernel.h"

#include "../internal/target.h"

namespace mensura::matrix::MENSURA_TARGET {
namespace {

// Lanes of sums in a tile: with three lanes of a row of b and one element of a they fill the 16 registers.
#ifdef __AVX__
constexpr std::size_t kSums = 12;
#else
constexpr std::size_t kSums = 6;  // a register holds half of Lanes
#endif
constexpr std::size_t kMostColumns = 3;  // of a tile, in lanes of four

// The columns of a tile: kCount lanes, of which each starts at a column at[c].  The last lane may overlap the one before,
// and computes the same values again.
template <std::size_t kCount>
struct Columns {
    static constexpr std::size_t count = kCount, height = kCount == 3 ? kSums / 4 : kSums / 2;
    std::size_t at[kCount];

    LANES_INLINE Lanes get(const double *row, std::size_t c) const { return load(row + at[c]); }
    LANES_INLINE void put(double *row, std::size_t c, Lanes v) const { store(row + at[c], v); }
};

// All columns of a matrix that has fewer than four.
template <std::size_t kCount>
struct NarrowColumns {
    static constexpr std::size_t count = 1, height = kSums / 2;

    LANES_INLINE Lanes get(const double *row, std::size_t) const {
        constexpr std::size_t second = kCount > 1 ? 1 : 0,
                              third = kCount > 2 ? 2 : 0;  // the other lanes are not stored
        return Lanes{row[0], row[second], row[third], row[second]};
    }
    LANES_INLINE void put(double *row, std::size_t, Lanes v) const {
        for (std::size_t j = 0; j < kCount; ++j) row[j] = v[j];
    }
};

// A tile reads lane c of row k of b straight from a matrix of fixed capacity.
template <typename C>
struct InRecord {
    RecordRows<const double> b;
    C columns;
    [[nodiscard]] LANES_INLINE Lanes get(std::size_t k, std::size_t c) const { return columns.get(b.row(k), c); }
};

// A tile reads lane c of row k of b in a copy that has the tile's columns next to each other, kDepth rows at a time: at
// most 23 KB, which stay in the first cache.
constexpr std::size_t kDepth = 240;
template <typename C>
struct Packed {
    const Lanes *b;
    [[nodiscard]] LANES_INLINE Lanes get(std::size_t k, std::size_t c) const { return b[k * C::count + c]; }
};

// Rows i .. i + kRows - 1 of out.  The sums begin at +0.0, or with `more` at what out holds.
template <std::size_t kRows, typename Source, typename ColumnsOfB, typename Target, typename C>
LANES_INLINE void tile(Source a, const ColumnsOfB &b, Target out, std::size_t i, C columns, std::size_t inner,
                       bool more) {
    Lanes sum[kRows][C::count] = {};
    if (more) {
#pragma GCC unroll 6
        for (std::size_t r = 0; r < kRows; ++r)
#pragma GCC unroll 3
            for (std::size_t c = 0; c < C::count; ++c) sum[r][c] = columns.get(out.row(i + r), c);
    }
#pragma GCC unroll 2
    for (std::size_t k = 0; k < inner; ++k) {
        Lanes bk[C::count];
        for (std::size_t c = 0; c < C::count; ++c) bk[c] = b.get(k, c);
        for (std::size_t r = 0; r < kRows; ++r) {
            const Lanes x = all(a.row(i + r)[k]);
            for (std::size_t c = 0; c < C::count; ++c) sum[r][c] += x * bk[c];
        }
    }
#pragma GCC unroll 6
    for (std::size_t r = 0; r < kRows; ++r)
#pragma GCC unroll 3
        for (std::size_t c = 0; c < C::count; ++c) columns.put(out.row(i + r), c, sum[r][c]);
}

// A tile of `rows` rows, at most kRows.
template <std::size_t kRows, typename Source, typename ColumnsOfB, typename Target, typename C>
LANES_INLINE void tile_of(std::size_t rows, Source a, const ColumnsOfB &b, Target out, std::size_t i, C columns,
                          std::size_t inner, bool more) {
    if constexpr (kRows > 0) {
        if (rows == kRows)
            tile<kRows>(a, b, out, i, columns, inner, more);
        else
            tile_of<kRows - 1>(rows, a, b, out, i, columns, inner, more);
    }
}

// All rows, in tiles of about the same height.
template <typename Source, typename ColumnsOfB, typename Target, typename C>
LANES_INLINE void all_rows(Source a, const ColumnsOfB &b, Target out, C columns, std::size_t rows, std::size_t inner,
                           bool more) {
    for (std::size_t i = 0, tiles = (rows + C::height - 1) / C::height; tiles > 0; --tiles) {
        const std::size_t left = rows - i, height = tiles == 1 ? left : (left + tiles - 1) / tiles;
        tile_of<C::height>(height, a, b, out, i, columns, inner, more);
        i += height;
    }
}

// All columns, in panels of two lanes, with which tiles fill the registers best.  The last panel takes what is left: up
// to three lanes.
template <typename Panel>
LANES_INLINE void for_columns(std::size_t cols, Panel panel) {
    if (cols == 1) return panel(NarrowColumns<1>{});
    if (cols == 2) return panel(NarrowColumns<2>{});
    if (cols == 3) return panel(NarrowColumns<3>{});
    std::size_t j = 0;
    for (; cols - j > kMostColumns * kLanes; j += 2 * kLanes) panel(Columns<2>{{j, j + kLanes}});
    const std::size_t left = cols - j, last = cols - kLanes;
    if (left > 2 * kLanes) return panel(Columns<3>{{j, j + kLanes, last}});
    if (left > kLanes) return panel(Columns<2>{{j, last}});
    if (left > 0) return panel(Columns<1>{{last}});
}

}  // namespace

void multiply_records(RecordRows<const double> a, RecordRows<const double> b, RecordRows<double> out, std::size_t rows,
                      std::size_t inner, std::size_t cols) {
    for_columns(cols, [&]<typename C>(C columns) LANES_LAMBDA {
        all_rows(a, InRecord<C>{b, columns}, out, columns, rows, inner, false);
    });
}

void multiply_rows(RowPointers a, RowPointers b, RowPointers out, std::size_t rows, std::size_t inner,
                   std::size_t cols) {
    alignas(64) Lanes packed[kDepth * kMostColumns];
    for_columns(cols, [&]<typename C>(C columns) LANES_LAMBDA {
        std::size_t from = 0;
        do {
            const std::size_t depth = inner - from < kDepth ? inner - from : kDepth;
            for (std::size_t k = 0; k < depth; ++k)
                for (std::size_t c = 0; c < C::count; ++c) packed[k * C::count + c] = columns.get(b.row(from + k), c);
            all_rows(RowPointers{a.rows, a.first_col + from}, Packed<C>{packed}, out, columns, rows, depth, from > 0);
            from += depth;
        } while (from < inner);
    });
}

}  // namespace mensura::matrix::MENSURA_TARGET
