// Matrices to test with.
#pragma once

#include <cmath>

#include "support/matrices.h"
#include "support/noise.h"

namespace samples {

using support::Grid;

enum Kind { kSum, kSingular, kRegular, kPermutation, kTies, kEdge, kGraded, kHuge, kZeros, kInfinite, kUpper, kNoise };
constexpr Kind kKinds[] = {kSum,    kSingular, kRegular, kPermutation, kTies,  kEdge,
                           kGraded, kHuge,     kZeros,   kInfinite,    kUpper, kNoise};

inline Grid sample(Kind kind, int rows, int cols) {
    constexpr double kTinyPivot = 0x1p-53;  // 1 + this is 1
    const double edges[] = {1e-10, std::nextafter(1e-10, 0), 0}, zeros[] = {0.0, -0.0};
    const double any[] = {0.0, -0.0, HUGE_VAL, -HUGE_VAL, NAN};
    support::Noise noise(static_cast<unsigned>(kind + 20 * rows + 3000 * cols));
    return reference::grid(rows, cols, [&](int i, int j) {
        const double level = noise();
        const bool on_diagonal = i == j, in_middle = on_diagonal && i == cols / 2;
        switch (kind) {
            case kSum: return static_cast<double>(i + j);  // of rank 2
            case kSingular: return in_middle ? kTinyPivot : on_diagonal;
            case kRegular: return in_middle ? -std::nextafter(kTinyPivot, 1) : on_diagonal ? 1 : -0.0;
            case kPermutation: return (7 * i + 3) % cols == j ? i % 3 - 3.5 : 0;
            case kTies: return noise.below(3) - 1.0;
            case kEdge: return i % 3 == j % 3 ? noise.pick(edges) : 0;
            case kGraded: return std::ldexp(level, -noise.below(70));
            case kHuge: return level * 1e160;  // squares overflow
            case kZeros: return noise.one_in(3) ? noise.pick(zeros) : level;
            case kInfinite: return noise.one_in(3 * cols) ? noise.pick(any) : level;
            case kUpper:  // triangular but for column 2, where an infinity lies above the diagonal
                if (i == 0 && j == 2) return HUGE_VAL;
                return i < j || j == 2 ? level : on_diagonal;
            default: return level;
        }
    });
}

// An operation fills the corner of its record and no more; without a result it returns null and empties the record.
void expect_result(const char *name, const std::optional<Grid> &result, auto operation, auto... operands) {
    SCOPED_TRACE(name);
    RMATRIX out{{}, 5, 6};
    std::ranges::fill(out.data, 77);
    EXPECT_EQ(operation(operands..., &out), result ? &out : nullptr);
    EXPECT_SAME_MATRIX(out, result.value_or(Grid{}));
    EXPECT_EQ(std::ranges::count(out.data, 77), RMATRIX_CAPACITY * RMATRIX_CAPACITY - out.rows * out.cols);
    EXPECT_EQ(operation(operands..., nullptr), nullptr);
}

}  // namespace samples
