// Owners of heap matrices inside one call.
#pragma once

#include <mensura/matrix.h>

#include <memory>

namespace mensura::matrix {

struct Delete {
    void operator()(Matrix *x) const { matrix_delete(x); }
};
using MatrixOwner = std::unique_ptr<Matrix, Delete>;

}  // namespace mensura::matrix
