// From a list of roots to second-order sections in a fixed order, and from sections to one polynomial.

#include <mensura/iir.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <numeric>
#include <utility>

namespace {

constexpr int kMaxSorted = 99;

// Sinks the entry at position i, counted from 1, of the heap index[0 .. size-1].  `before` is the order sought.
template <typename Before, typename NotBefore>
void sift_down(const double *keys, int *index, int i, int size, Before before, NotBefore not_before) {
    const auto at = [index](int position) -> int & { return index[position - 1]; };
    const int held = at(i);
    for (int child = 2 * i; child <= size; child = 2 * i) {
        if (child < size && before(keys[at(child)], keys[at(child + 1)])) ++child;
        if (not_before(keys[at(child)], keys[held])) break;
        at(i) = at(child);
        i = child;
    }
    at(i) = held;
}

template <typename Before, typename NotBefore>
void heap_sort(const double *keys, int *index, int count, Before before, NotBefore not_before) {
    for (int l = count / 2; l >= 1; --l) sift_down(keys, index, l, count, before, not_before);
    for (int last = count - 1; last > 0; --last) {
        std::swap(index[0], index[last]);
        sift_down(keys, index, 1, last, before, not_before);
    }
}

// Drops a part that is a thousand times smaller than the other one.
CplxD without_small_part(CplxD root) {
    constexpr double kRatio = 1000;
    if (std::fabs(root.re) * kRatio < std::fabs(root.im)) root.re = 0;
    if (std::fabs(root.im) * kRatio < std::fabs(root.re)) root.im = 0;
    return root;
}

bool nearly_equal(CplxD a, CplxD b) {
    constexpr double kNear = 0.001;
    return std::fabs(a.re - b.re) < kNear && std::fabs(a.im - b.im) < kNear;
}

// Of roots that are nearly equal, moves all but the first into the right half-plane, whose roots make no sections.
void discard_duplicates(CplxD *roots, int count) {
    for (int i = 0; i < count - 1; ++i)
        for (int j = i + 1; j < count; ++j)
            if (nearly_equal(roots[i], roots[j])) roots[j] = {static_cast<double>(j), 0.0};
}

}  // namespace

// Equal keys come out in the order in which the heap leaves them.
int HeapIndexSort(double *keys, int *index, int count, int ascending) {
    if (count < 2) return 0;
    if (ascending != 0)
        heap_sort(keys, index, count, std::less<>{}, std::less_equal<>{});
    else
        heap_sort(keys, index, count, std::greater<>{}, std::greater_equal<>{});
    return 1;
}

void SortRootsByZeta(CplxD *roots, int count, int ascending) {
    if (count < 1 || count > kMaxSorted) return;
    std::transform(roots, roots + count, roots, without_small_part);
    const bool imaginary = roots[0].re == 0;
    std::array<double, kMaxSorted> keys;
    std::transform(roots, roots + count, keys.begin(),
                   [imaginary](CplxD root) { return imaginary ? std::fabs(root.im) : root.re; });
    std::array<int, kMaxSorted> index;
    std::iota(index.begin(), index.begin() + count, 0);
    HeapIndexSort(keys.data(), index.data(), count, ascending);

    std::array<CplxD, kMaxSorted> unsorted;
    std::copy_n(roots, count, unsorted.begin());
    std::transform(index.begin(), index.begin() + count, roots,
                   [&unsorted](int i) { return unsorted[static_cast<std::size_t>(i)]; });
}

int GetFilterCoeff(int count, CplxD *roots, double *c2, double *c1, double *c0) {
    SortRootsByZeta(roots, count, 1);
    discard_duplicates(roots, count);
    int k = 0;
    for (int i = 0; i < count && k < MAX_IIR_SECTIONS; ++i) {
        const auto [re, im] = roots[i];
        if (std::isnan(re) || std::isnan(im)) continue;
        if (re < 0 && im != 0) {  // the quadratic of the root and its conjugate
            c2[k] = 1.0;
            c1[k] = -2.0 * re;
            c0[k] = re * re + im * im;
        } else if (re < 0) {
            c2[k] = 0.0;
            c1[k] = 1.0;
            c0[k] = -re;
        } else if (re == 0 && im != 0) {  // a zero on the imaginary axis
            c2[k] = 1.0;
            c1[k] = 0.0;
            c0[k] = im * im;
        } else {
            continue;
        }
        ++k;
    }
    return k;
}

int RebuildPoly(int count, double *poly, double *c2, double *c1, double *c0) {
    if (count < 1 || count > MAX_IIR_SECTIONS) return -1;
    const int degree = 2 * count;
    std::fill_n(poly, degree + 1, 0.0);
    poly[2] = c2[0];
    poly[1] = c1[0];
    poly[0] = c0[0];
    for (int k = 1; k < count; ++k) {
        std::array<double, 2 * MAX_IIR_SECTIONS + 2> product{};
        for (std::size_t i = 0; i < static_cast<std::size_t>(2 * k + 1); ++i) {
            product[i] += poly[i] * c0[k];
            product[i + 1] += poly[i] * c1[k];
            product[i + 2] += poly[i] * c2[k];
        }
        std::copy_n(product.begin(), 2 * k + 3, poly);
    }
    int top = degree;
    while (top >= 0 && poly[top] == 0) --top;
    return top;
}
