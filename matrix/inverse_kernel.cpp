// Gauss-Jordan elimination in place.  Step k, with the pivot moved to (k, k) and p = 1 / b(k, k), makes
//
//     row k         q(j) = b(k, j) p, and p itself at j = k
//     other rows    b(i, j) - m(i) q(j) with m(i) = b(i, k), and -p m(i) at j = k
//
// The next pivot is the largest element below and right of (k, k), so those elements are updated at once, and searched
// meanwhile.  The rows above and the columns to the left take no part until the end.  Their updates are deferred: after a
// block of kSteps steps each element gets those of the block together, in the same order, in a register.  When rows or
// columns are exchanged, their m and q are exchanged too, so that a deferred update uses the right ones.

#include "inverse_kernel.h"

#include <mensura/matrix.h>

#include <cstdint>

#include "../internal/target.h"

namespace mensura::matrix::MENSURA_TARGET {
namespace {

constexpr std::size_t kSteps = 8;       // of a block
constexpr std::size_t kUnblocked = 16;  // largest matrix that is one block
constexpr std::size_t kStride =         // of a row: a whole number of blocks
    (RMATRIX_CAPACITY + kSteps - 1) / kSteps * kSteps;

// Element (i, j) is b[i][pad + j].  The padding comes first, so that every block after the first starts at a multiple of
// four columns.
struct Elimination {
    std::size_t n, pad, end;  // end = pad + n, a multiple of kLanes; of kSteps too if there are blocks
    std::size_t step_row[kStride], step_col[kStride];  // where the pivot of each step was found
    alignas(64) double b[RMATRIX_CAPACITY][kStride];
    // Of each step of this block: m(i) at pad + i, q(j) at pad + j.  The first block defers nothing and uses slot 0 only.
    alignas(64) double m[kSteps][kStride];
    alignas(64) double q[kSteps][kStride];
};

struct Pivot {
    double size = 0.0;
    std::size_t row, col;
};

// Masks of the four columns j .. j + 3: which one is column `col`, and which come after it.
LANES_INLINE LaneBits columns_from(std::size_t j) { return LaneBits{0, 1, 2, 3} + static_cast<std::int64_t>(j); }
LANES_INLINE LaneBits is_column(std::size_t col, std::size_t j) {
    return columns_from(j) == static_cast<std::int64_t>(col);
}
LANES_INLINE LaneBits is_behind(std::size_t col, std::size_t j) {
    return columns_from(j) > static_cast<std::int64_t>(col);
}

LANES_INLINE Lanes updated(Lanes b, const double *q, double m) { return b - all(m) * load(q); }

// Columns from .. to of a row; from is a multiple of four.
LANES_INLINE void update(double *row, const double *q, double m, std::size_t from, std::size_t to) {
    for (std::size_t j = from; j < to; j += kLanes) store(row + j, updated(load(row + j), q + j, m));
}

// Columns from .. end of a row.  In column col, q is p, and -0.0 - m q is -p m.  With kSearch it returns the largest
// magnitudes after column col.
template <bool kSearch>
LANES_INLINE Lanes update_around(double *row, const double *q, double m, std::size_t from, std::size_t col,
                                 std::size_t end) {
    const std::size_t at = col / kLanes * kLanes;
    update(row, q, m, from, at);
    const Lanes v = updated(is_column(col, at) ? all(-0.0) : load(row + at), q + at, m);
    store(row + at, v);
    Lanes largest = {};
    if constexpr (kSearch) largest = is_behind(col, at) ? larger(magnitude(v), largest) : largest;
    for (std::size_t j = at + kLanes; j < end; j += kLanes) {
        const Lanes w = updated(load(row + j), q + j, m);
        store(row + j, w);
        if constexpr (kSearch) largest = larger(magnitude(w), largest);
    }
    return largest;
}

LANES_INLINE void take_if_larger(Pivot &pivot, Lanes largest, std::size_t row) {
    const double size = largest_of(largest);
    if (size > pivot.size) {
        pivot.size = size;
        pivot.row = row;
    }
}

LANES_INLINE double absolute(double x) { return x < 0 ? -x : x; }

// The column of a pivot whose size and row are known.
LANES_INLINE void find_column(const Elimination &e, Pivot &pivot, std::size_t first) {
    if (pivot.size == 0.0) return;
    const double *row = e.b[pivot.row] + e.pad;
    pivot.col = first;
    while (pivot.col + 1 < e.n && absolute(row[pivot.col]) != pivot.size) ++pivot.col;
}

LANES_INLINE Pivot copy_and_search(Elimination &e, RecordRows<const double> a) {
    Pivot pivot{0.0, 0, 0};
    for (std::size_t i = 0; i < e.n; ++i) {
        const double *from = a.row(i);
        double *to = e.b[i];
        for (std::size_t j = 0; j < e.pad; ++j) to[j] = 0.0;
        to += e.pad;
        Lanes largest = {};
        std::size_t j = 0;
        for (; j + kLanes <= e.n; j += kLanes) {
            store(to + j, load(from + j));
            largest = larger(magnitude(load(from + j)), largest);
        }
        for (; j < e.n; ++j) {
            to[j] = from[j];
            largest = larger(magnitude(all(from[j])), largest);
        }
        take_if_larger(pivot, largest, i);
    }
    find_column(e, pivot, 0);
    return pivot;
}

LANES_INLINE void exchange(double &a, double &b) {
    const double t = a;
    a = b;
    b = t;
}

// Moves the pivot to (k, k).  The m and q of the s earlier steps of the block, whose updates are deferred, follow.
LANES_INLINE void move_pivot(Elimination &e, const Pivot &pivot, std::size_t k, std::size_t s) {
    e.step_row[k] = pivot.row;
    e.step_col[k] = pivot.col;
    if (pivot.row != k) {
        double *a = e.b[k], *b = e.b[pivot.row];
        for (std::size_t j = 0; j < e.end; j += kLanes) {
            const Lanes t = load(a + j);
            store(a + j, load(b + j));
            store(b + j, t);
        }
        for (std::size_t t = 0; t < s; ++t) exchange(e.m[t][e.pad + k], e.m[t][e.pad + pivot.row]);
    }
    if (pivot.col != k) {
        for (std::size_t i = 0; i < e.n; ++i) exchange(e.b[i][e.pad + k], e.b[i][e.pad + pivot.col]);
        for (std::size_t t = 0; t < s; ++t) exchange(e.q[t][e.pad + k], e.q[t][e.pad + pivot.col]);
    }
}

// Step k needs row k and column k up to date: they get the deferred updates of the block's s earlier steps.  The column
// is copied to m.
LANES_INLINE void catch_up(Elimination &e, std::size_t k, std::size_t block, std::size_t s) {
    const std::size_t pad = e.pad, col = pad + k;
    for (std::size_t t = 0; t < s; ++t) update(e.b[k], e.q[t], e.m[t][col], 0, pad + block);
    for (std::size_t i = 0; i < pad; ++i) e.m[s][i] = 0.0;
    for (std::size_t i = 0; i < block; ++i) e.m[s][pad + i] = e.b[i][col];
    for (std::size_t t = 0; t < s; ++t) update(e.m[s], e.m[t], e.q[t][col], 0, pad + block);
}

// Step k, the s-th of the block that starts at step `block`; returns the next pivot.
LANES_INLINE Pivot step(Elimination &e, std::size_t k, std::size_t block, std::size_t s) {
    const std::size_t pad = e.pad, col = pad + k;
    double *row = e.b[k], *m = e.m[s] + pad, *q = e.q[s];
    if (block > 0) catch_up(e, k, block, s);

    const double p = 1.0 / row[col];
    for (std::size_t j = 0; j < e.end; j += kLanes) {
        const Lanes v = (is_column(col, j) ? all(1.0) : load(row + j)) * all(p);
        store(row + j, v);
        store(q + j, v);
    }
    for (std::size_t i = 0; i < block; ++i) e.b[i][col] = -p * m[i];

    Pivot next{0.0, k + 1, k + 1};
    const std::size_t from = (pad + block) / kLanes * kLanes;
    for (std::size_t i = block; i < k; ++i) {
        m[i] = e.b[i][col];
        update_around<false>(e.b[i], q, m[i], from, col, e.end);
    }
    for (std::size_t i = k + 1; i < e.n; ++i) {
        m[i] = e.b[i][col];
        take_if_larger(next, update_around<true>(e.b[i], q, m[i], from, col, e.end), i);
    }
    find_column(e, next, k + 1);
    return next;
}

// The deferred updates of a block on columns from .. to of row i.
LANES_INLINE void all_steps(Elimination &e, std::size_t i, std::size_t from, std::size_t to) {
    Lanes m[kSteps];
    for (std::size_t s = 0; s < kSteps; ++s) m[s] = all(e.m[s][e.pad + i]);
    for (std::size_t j = from; j < to; j += kLanes) {
        Lanes v = load(e.b[i] + j);
        for (std::size_t s = 0; s < kSteps; ++s) v -= m[s] * load(e.q[s] + j);
        store(e.b[i] + j, v);
    }
}

// The deferred updates on the block's own columns of row i: on each column those of the steps after its own.
LANES_INLINE void later_steps(Elimination &e, std::size_t i, std::size_t left) {
    for (std::size_t j = 0; j < kSteps; j += kLanes) {
        Lanes v = load(e.b[i] + left + j);
        for (std::size_t s = j + 1; s < kSteps; ++s)
            v = is_behind(s - 1, j) ? v : updated(v, e.q[s] + left + j, e.m[s][e.pad + i]);
        store(e.b[i] + left + j, v);
    }
}

// The deferred updates of a block: of the rows above it and the columns left of it.  The block's own rows and columns
// have had the steps up to their own.
LANES_INLINE void finish_block(Elimination &e, std::size_t block) {
    const std::size_t left = e.pad + block, right = left + kSteps;
    for (std::size_t i = 0; i < block; ++i) {
        all_steps(e, i, 0, left);
        later_steps(e, i, left);
        all_steps(e, i, right, e.end);
    }
    for (std::size_t t = 0; t < kSteps; ++t)
        for (std::size_t s = t + 1; s < kSteps; ++s) update(e.b[block + t], e.q[s], e.m[s][left + t], 0, left);
    for (std::size_t i = block + kSteps; i < e.n; ++i) all_steps(e, i, 0, left);
}

// Undoes the exchanges, last first, as one permutation of rows and one of columns.
LANES_INLINE void copy_back(const Elimination &e, RecordRows<double> out) {
    std::size_t row[kStride], col[kStride];
    for (std::size_t i = 0; i < e.n; ++i) row[i] = col[i] = i;
    for (std::size_t k = e.n; k-- > 0;) {
        const std::size_t r = row[k], c = col[k];
        row[k] = row[e.step_col[k]];
        row[e.step_col[k]] = r;
        col[k] = col[e.step_row[k]];
        col[e.step_row[k]] = c;
    }
    for (std::size_t i = 0; i < e.n; ++i) {
        const double *from = e.b[row[i]] + e.pad;
        double *to = out.row(i);
        for (std::size_t j = 0; j < e.n; ++j) to[j] = from[col[j]];
    }
}

}  // namespace

bool invert(RecordRows<const double> a, RecordRows<double> out, std::size_t n) {
    Elimination e;
    e.n = n;
    const std::size_t unit = n <= kUnblocked ? kLanes : kSteps;
    e.end = (n + unit - 1) / unit * unit;
    e.pad = e.end - n;
    Pivot pivot = copy_and_search(e, a);
    std::size_t block = 0;
    std::size_t block_end = n <= kUnblocked ? n : kSteps - e.pad;
    for (std::size_t k = 0; k < n; ++k) {
        if (pivot.size + 1.0 == 1.0) return false;         // singular, by the rule of rmatrix_inverse_ptr
        const std::size_t s = block == 0 ? 0 : k - block;  // the first block defers nothing
        move_pivot(e, pivot, k, s);
        pivot = step(e, k, block, s);
        if (k + 1 == block_end) {
            if (block > 0) finish_block(e, block);
            block = block_end;
            block_end += kSteps;
        }
    }
    copy_back(e, out);
    return true;
}

}  // namespace mensura::matrix::MENSURA_TARGET
