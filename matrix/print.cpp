// The text of a fixed-capacity matrix, on standard output.

#include <mensura/matrix.h>

#include <algorithm>
#include <cstdio>

namespace {

constexpr char kRule[] = "========================================";

}  // namespace

void rmatrix_printf_ptr(const RMATRIX *m) {
    if (isEmptyRMATRIX(m)) {
        std::puts("matrix is empty");
        return;
    }
    const int rows = std::min<int>(m->rows, RMATRIX_CAPACITY), cols = std::min<int>(m->cols, RMATRIX_CAPACITY);
    std::puts(kRule);
    std::printf("row=%d, col=%d\n", m->rows, m->cols);
    for (int i = 0; i < rows; ++i) {
        for (int j = 0; j < cols; ++j) std::printf("%f, ", m->data[i * RMATRIX_CAPACITY + j]);
        std::putchar('\n');
    }
    std::puts(kRule);
}
