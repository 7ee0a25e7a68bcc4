// The by-value forms of the fixed-capacity matrices: the pointer form into a record of their own.

#include <mensura/matrix.h>

namespace {

template <typename Operation, typename... Arguments>
RMATRIX by_value(Operation operation, const Arguments &...arguments) {
    RMATRIX out;
    operation(arguments..., &out);
    return out;
}

}  // namespace

RMATRIX setRMATRIX(const double *a, int rows, int cols) { return by_value(setRMATRIX_ptr, a, rows, cols); }
RMATRIX setRMATRIX1(const double *const *a, int rows, int cols) { return by_value(setRMATRIX1_ptr, a, rows, cols); }
RMATRIX rmatrix_add(RMATRIX a, RMATRIX b) { return by_value(rmatrix_add_ptr, &a, &b); }
RMATRIX rmatrix_sub(RMATRIX a, RMATRIX b) { return by_value(rmatrix_sub_ptr, &a, &b); }
RMATRIX rmatrix_multi(RMATRIX a, RMATRIX b) { return by_value(rmatrix_multi_ptr, &a, &b); }
RMATRIX rmatrix_transpose(RMATRIX a) { return by_value(rmatrix_transpose_ptr, &a); }
RMATRIX rmatrix_inverse(RMATRIX a) { return by_value(rmatrix_inverse_ptr, &a); }

void rmatrix_printf(RMATRIX m) { rmatrix_printf_ptr(&m); }
