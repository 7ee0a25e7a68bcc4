// The inverse of a matrix, by Gauss-Jordan elimination with complete pivoting.
#pragma once

#include <cstddef>

#include "../internal/target.h"
#include "product_kernel.h"

namespace mensura::matrix {

// The inverse of the n x n matrix a, 1 <= n <= RMATRIX_CAPACITY, into out, which may be a; false, with out untouched,
// when a is singular.
using Invert = bool(RecordRows<const double> a, RecordRows<double> out, std::size_t n);
MENSURA_KERNEL(Invert, invert);

}  // namespace mensura::matrix
