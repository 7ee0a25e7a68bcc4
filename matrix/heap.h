// Owners of heap matrices inside one call.
#pragma once

#include <mensura/matrix.h>

#include <memory>

namespace mensura::matrix {

struct Delete {
    void operator()(Matrix *x) const { matrix_delete(x); }
};
using MatrixOwner = std::unique_ptr<Matrix, Delete>;

// A new matrix whose elements the caller sets; null without memory.
MatrixOwner unset_matrix(int m, int n);

}  // namespace mensura::matrix
