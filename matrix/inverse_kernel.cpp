// Step k of the elimination, with the pivot in (k, k) and p = 1 / b(k, k):
//     row k         q(j) = b(k, j) p, and p itself at j = k
//     other rows    b(i, j) - m(i) q(j) with m(i) = b(i, k), and -p m(i) at j = k
//
// The next pivot is the largest element below and right of (k, k), so those are updated at once, and searched on the
// way.  The rows above and the columns to the left only take part again at the end: they are updated after a block of
// steps, each element by the same steps in the same order, but in a register.

#include "inverse_kernel.h"

#include <mensura/matrix.h>

#include <cstdint>

#include "../internal/target.h"

namespace mensura::matrix::MENSURA_TARGET {
namespace {

using Size = std::size_t;
using Bits = std::int64_t __attribute__((vector_size(32)));

constexpr Size kSteps = 8;       // a block
constexpr Size kUnblocked = 16;  // largest matrix that is one block
constexpr Size kStride = (RMATRIX_CAPACITY + kSteps - 1) / kSteps * kSteps;

// Element (i, j) is b[i][pad + j]: columns are set right, so that every block after the first starts at a lane.
struct Elimination {
    Size n, pad, end;                           // end = pad + n, a multiple of kSteps
    Size step_row[kStride], step_col[kStride];  // where the pivot of each step was found
    alignas(64) double b[RMATRIX_CAPACITY][kStride];
    alignas(64) double m[kUnblocked][kStride];  // of the steps of this block: m(i) at pad + i
    alignas(64) double q[kUnblocked][kStride];  // and q(j) at pad + j
};

struct Pivot {
    double size = 0.0;
    Size row, col;
};

LANES_INLINE Lanes larger(Lanes a, Lanes b) { return a > b ? a : b; }  // b if a is NaN

LANES_INLINE double largest_of(Lanes v) {
    const double a = v[0] > v[1] ? v[0] : v[1], b = v[2] > v[3] ? v[2] : v[3];
    return a > b ? a : b;
}

// |v| where `keep` has its bits set.
LANES_INLINE Lanes magnitude(Lanes v, Bits keep) { return (Lanes)((Bits)v & keep & INT64_MAX); }

// Lanes from `first` of the four columns at j on.
LANES_INLINE Bits from_column(Size first, Size j) {
    const Bits column = {0, 1, 2, 3};
    return column + static_cast<std::int64_t>(j) >= static_cast<std::int64_t>(first);
}

// A row's elements from column `from`, at a lane, on.
LANES_INLINE void update(double *row, const double *q, double m, Size from, Size to) {
    for (Size j = from; j < to; j += kLanes) store(row + j, load(row + j) - all(m) * load(q + j));
}

LANES_INLINE Lanes update_and_search(double *row, const double *q, double m, Size from, Size first, Size end) {
    Size j = from;
    for (; j + kLanes <= first; j += kLanes) store(row + j, load(row + j) - all(m) * load(q + j));
    Bits keep = from_column(first, j);
    Lanes largest = {};
    for (; j < end; j += kLanes) {
        const Lanes v = load(row + j) - all(m) * load(q + j);
        store(row + j, v);
        largest = larger(magnitude(v, keep), largest);
        keep = Bits{-1, -1, -1, -1};
    }
    return largest;
}

LANES_INLINE void consider(Pivot &pivot, Lanes largest, Size row) {
    const double size = largest_of(largest);
    if (size > pivot.size) {
        pivot.size = size;
        pivot.row = row;
    }
}

LANES_INLINE double absolute(double x) { return x < 0 ? -x : x; }

LANES_INLINE void find_column(const Elimination &e, Pivot &pivot, Size first) {
    if (pivot.size == 0.0) return;
    const double *row = e.b[pivot.row] + e.pad;
    pivot.col = first;
    while (absolute(row[pivot.col]) != pivot.size) ++pivot.col;
}

LANES_INLINE Pivot copy_and_search(Elimination &e, RecordRows<const double> a) {
    Pivot pivot{0.0, 0, 0};
    for (Size i = 0; i < e.n; ++i) {
        const double *from = a.row(i);
        double *to = e.b[i];
        for (Size j = 0; j < e.pad; ++j) to[j] = 0.0;
        for (Size j = 0; j < e.n; ++j) to[e.pad + j] = from[j];
        Lanes largest = {};
        for (Size j = 0; j < e.end; j += kLanes) largest = larger(magnitude(load(to + j), ~Bits{}), largest);
        consider(pivot, largest, i);
    }
    find_column(e, pivot, 0);
    return pivot;
}

LANES_INLINE void exchange(double &a, double &b) {
    const double t = a;
    a = b;
    b = t;
}

// Puts the pivot into (k, k); s steps of the block are behind.
LANES_INLINE void exchange_for(Elimination &e, const Pivot &pivot, Size k, Size s) {
    e.step_row[k] = pivot.row;
    e.step_col[k] = pivot.col;
    if (pivot.row != k) {
        double *a = e.b[k], *b = e.b[pivot.row];
        for (Size j = 0; j < e.end; j += kLanes) {
            const Lanes t = load(a + j);
            store(a + j, load(b + j));
            store(b + j, t);
        }
        for (Size t = 0; t < s; ++t) exchange(e.m[t][e.pad + k], e.m[t][e.pad + pivot.row]);
    }
    if (pivot.col != k) {
        for (Size i = 0; i < e.n; ++i) exchange(e.b[i][e.pad + k], e.b[i][e.pad + pivot.col]);
        for (Size t = 0; t < s; ++t) exchange(e.q[t][e.pad + k], e.q[t][e.pad + pivot.col]);
    }
}

// Step k, the s-th of the block that starts at `block`; returns the next pivot.
LANES_INLINE Pivot step(Elimination &e, Size k, Size block, Size s) {
    const Size pad = e.pad, col = pad + k;
    double *row = e.b[k], *m = e.m[s] + pad, *q = e.q[s];

    // The earlier steps of the block, on what has waited.
    if (block > 0) {
        for (Size t = 0; t < s; ++t) update(row, e.q[t], e.m[t][col], 0, pad + block);
        for (Size i = 0; i < pad; ++i) e.m[s][i] = 0.0;
        for (Size i = 0; i < block; ++i) m[i] = e.b[i][col];
        for (Size t = 0; t < s; ++t) update(e.m[s], e.m[t], e.q[t][col], 0, pad + block);
    }

    const double p = 1.0 / row[col];
    row[col] = 1.0;
    for (Size j = 0; j < e.end; j += kLanes) {
        const Lanes v = load(row + j) * all(p);
        store(row + j, v);
        store(q + j, v);
    }
    for (Size i = 0; i < block; ++i) e.b[i][col] = -p * m[i];

    Pivot next{0.0, k + 1, k + 1};
    const Size from = (pad + block) / kLanes * kLanes;
    for (Size i = block; i < k; ++i) {
        m[i] = e.b[i][col];
        update(e.b[i], q, m[i], from, e.end);
        e.b[i][col] = -p * m[i];
    }
    for (Size i = k + 1; i < e.n; ++i) {
        m[i] = e.b[i][col];
        const Lanes largest = update_and_search(e.b[i], q, m[i], from, col + 1, e.end);
        e.b[i][col] = -p * m[i];
        consider(next, largest, i);
    }
    find_column(e, next, k + 1);
    return next;
}

// The kSteps steps of a block on columns from .. to of row i.
LANES_INLINE void all_steps(Elimination &e, Size i, Size from, Size to) {
    Lanes m[kSteps];
    for (Size s = 0; s < kSteps; ++s) m[s] = all(e.m[s][e.pad + i]);
    for (Size j = from; j < to; j += kLanes) {
        Lanes v = load(e.b[i] + j);
        for (Size s = 0; s < kSteps; ++s) v -= m[s] * load(e.q[s] + j);
        store(e.b[i] + j, v);
    }
}

// What has waited for the block's steps: rows above it and columns left of it.  Its own rows and columns have had the
// steps up to their own.
LANES_INLINE void finish_block(Elimination &e, Size block) {
    const Size left = e.pad + block, right = left + kSteps;
    for (Size i = 0; i < block; ++i) {
        all_steps(e, i, 0, left);
        for (Size s = 1; s < kSteps; ++s)
            for (Size j = left; j < left + s; ++j) e.b[i][j] -= e.m[s][e.pad + i] * e.q[s][j];
        all_steps(e, i, right, e.end);
    }
    for (Size t = 0; t < kSteps; ++t)
        for (Size s = t + 1; s < kSteps; ++s) update(e.b[block + t], e.q[s], e.m[s][left + t], 0, left);
    for (Size i = block + kSteps; i < e.n; ++i) all_steps(e, i, 0, left);
}

// Undoes the exchanges, last first, as one permutation of rows and one of columns.
LANES_INLINE void copy_back(const Elimination &e, RecordRows<double> out) {
    Size row[kStride], col[kStride];
    for (Size i = 0; i < e.n; ++i) row[i] = col[i] = i;
    for (Size k = e.n; k-- > 0;) {
        const Size r = row[k], c = col[k];
        row[k] = row[e.step_col[k]];
        row[e.step_col[k]] = r;
        col[k] = col[e.step_row[k]];
        col[e.step_row[k]] = c;
    }
    for (Size i = 0; i < e.n; ++i) {
        const double *from = e.b[row[i]] + e.pad;
        double *to = out.row(i);
        for (Size j = 0; j < e.n; ++j) to[j] = from[col[j]];
    }
}

}  // namespace

bool invert(RecordRows<const double> a, RecordRows<double> out, Size n) {
    Elimination e;
    e.n = n;
    e.end = (n + kSteps - 1) / kSteps * kSteps;
    e.pad = e.end - n;
    Pivot pivot = copy_and_search(e, a);
    Size block = 0;
    Size block_end = n <= kUnblocked ? n : kSteps - e.pad;
    for (Size k = 0; k < n; ++k) {
        if (pivot.size + 1.0 == 1.0) return false;
        exchange_for(e, pivot, k, k - block);
        pivot = step(e, k, block, k - block);
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
