/** @defgroup matrix Small matrices
 *
 * `mensura/matrix.h`: small dense matrices.  A record of fixed capacity, and matrices on the heap with a Householder QR
 * decomposition.
 *
 * @code
 * static RMATRIX a, inverse;
 * setRMATRIX_ptr(values, 3, 3, &a);                   // nine numbers, row by row
 * if (rmatrix_inverse_ptr(&a, &inverse) == NULL)      // singular
 * @endcode
 *
 * **Memory.**  The fixed-capacity functions never allocate.  An RMATRIX takes 80 KB whatever its size: the `_ptr` forms
 * touch the corner in use only, the by-value forms copy whole records over the stack, 80 KB an argument and result.
 * The heap functions that return a Matrix hand it to the caller, who gives it to matrix_delete.
 *
 * Stack on x86-64, arguments and result included, with optimisation and without: rmatrix_inverse_ptr takes up to 101
 * and 110 KB, the by-value forms 261 and 440 KB, matrix_mul and householder 26 and 60 KB; without it rmatrix_multi_ptr
 * takes 35 KB.
 *
 * **Threads.**  All functions are safe in several threads at once, each on its own data; matrix_show and QRtest write
 * one file in the current directory: one call at a time.
 *
 * **Sums** of products begin at +0.0 and take their terms in order; NaN and infinity flow through the arithmetic.
 * @{ */
#ifndef MENSURA_MATRIX_H
#define MENSURA_MATRIX_H

#include <mensura/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/** @name Fixed capacity
 * The `_ptr` forms fail when an operand is null or empty, when sizes do not fit, or when a matrix is singular.  Then
 * *out becomes empty, rows = cols = 0, and the result is null; otherwise the result is out.  A null out gives null.
 * Where the `_ptr` form fails, the by-value form returns an empty matrix.
 * @{ */

/** Capacity of the fixed-capacity matrices. */
enum {
    RMATRIX_CAPACITY = 100 /**< most rows, and most columns, of an RMATRIX */
};

/** A matrix of up to 100 x 100 doubles; element (i, j) is data[100 i + j] whatever its size.
 * Elements outside the rows x cols corner mean nothing, and only rmatrix_to_vector changes them.  With rows < 1 or
 * cols < 1 it is empty. */
typedef struct RMATRIX {
    double data[RMATRIX_CAPACITY * RMATRIX_CAPACITY]; /**< the elements, 100 a row */
    int rows;                                         /**< rows in use */
    int cols;                                         /**< columns in use */
} RMATRIX;

/** Sets the size and zeroes the elements; a null m does nothing.
 * Sizes are stored unchecked: to keep rows and cols at 100 or less is the caller's duty.  Of a larger matrix the part
 * within the record is set, and no operation below accepts it. */
MENSURA_EXPORT void initRMATRIX(RMATRIX *m, int rows, int cols);

/** Sets the size, and the elements to 1.0 where i = j and to 0 elsewhere.
 * Sizes are not checked, as in initRMATRIX. */
MENSURA_EXPORT void initRMATRIX_identity(RMATRIX *m, int rows, int cols);

/** Copies the size and the elements.  NOTE THE ORDER: source first.
 * dst may be src.  A null src or dst does nothing. */
MENSURA_EXPORT void copyRMATRIX(const RMATRIX *src, RMATRIX *dst);

/** Returns 1 if rows < 1 or cols < 1, or if m is null, else 0. */
MENSURA_EXPORT int isEmptyRMATRIX(const RMATRIX *m);

/** A matrix from rows * cols packed numbers, row by row: element (i, j) = a[i cols + j].
 * Fails for more than 100 rows or columns, and for a null a if there is anything to copy.  A size below 1 is stored as
 * it is, and out returned.  a must not lie in out. */
MENSURA_EXPORT RMATRIX *setRMATRIX_ptr(const double *a, int rows, int cols, RMATRIX *out);

/** setRMATRIX_ptr by value. */
MENSURA_EXPORT RMATRIX setRMATRIX(const double *a, int rows, int cols);

/** A matrix from an array of row pointers, none of them null: element (i, j) = a[i][j].
 * It fails as setRMATRIX_ptr does. */
MENSURA_EXPORT RMATRIX *setRMATRIX1_ptr(const double *const *a, int rows, int cols, RMATRIX *out);

/** setRMATRIX1_ptr by value. */
MENSURA_EXPORT RMATRIX setRMATRIX1(const double *const *a, int rows, int cols);

/** The sum a + b of matrices of equal size; out may be a or b. */
MENSURA_EXPORT RMATRIX *rmatrix_add_ptr(const RMATRIX *a, const RMATRIX *b, RMATRIX *out);

/** The difference a - b of matrices of equal size; out may be a or b. */
MENSURA_EXPORT RMATRIX *rmatrix_sub_ptr(const RMATRIX *a, const RMATRIX *b, RMATRIX *out);

/** rmatrix_add_ptr by value. */
MENSURA_EXPORT RMATRIX rmatrix_add(RMATRIX a, RMATRIX b);

/** rmatrix_sub_ptr by value. */
MENSURA_EXPORT RMATRIX rmatrix_sub(RMATRIX a, RMATRIX b);

/** The product a b; a has as many columns as b has rows.
 * The terms are added in order:
 *
 *     out(i, j) = 0 + a(i, 0) b(0, j) + a(i, 1) b(1, j) + ...
 *
 * out must not be a or b. */
MENSURA_EXPORT RMATRIX *rmatrix_multi_ptr(const RMATRIX *a, const RMATRIX *b, RMATRIX *out);

/** rmatrix_multi_ptr by value. */
MENSURA_EXPORT RMATRIX rmatrix_multi(RMATRIX a, RMATRIX b);

/** The transpose, out(j, i) = a(i, j); out must not be a. */
MENSURA_EXPORT RMATRIX *rmatrix_transpose_ptr(const RMATRIX *a, RMATRIX *out);

/** rmatrix_transpose_ptr by value. */
MENSURA_EXPORT RMATRIX rmatrix_transpose(RMATRIX a);

/** The inverse of a square matrix; out may be a.
 * Gauss-Jordan elimination in place with complete pivoting (Golub and Van Loan, Matrix Computations); the first of
 * equally large pivots, row by row, is taken.
 *
 * **THE PIVOT IS COMPARED WITH 1:** a matrix is singular when the largest element that remains, p, has p + 1 = 1, that
 * is |p| up to 1.1e-16.  Scale a matrix of tiny elements first.  NaN is never a pivot. */
MENSURA_EXPORT RMATRIX *rmatrix_inverse_ptr(const RMATRIX *a, RMATRIX *out);

/** rmatrix_inverse_ptr by value. */
MENSURA_EXPORT RMATRIX rmatrix_inverse(RMATRIX a);

/** A single column or row as a contiguous array.
 * Returns null and writes nothing when m is null, empty, or has more than one row and more than one column.
 * @param m    the matrix
 * @param vec  receives the elements, rows or cols numbers, and is returned; must not overlap m.  Or null: a column is
 *             packed into the first cells of m->data, of which row 0 uses only the first, and m->data is returned */
MENSURA_EXPORT double *rmatrix_to_vector(RMATRIX *m, double *vec);

/** Prints to standard output: "matrix is empty", or the size and the elements.
 * That is a line of forty '=', "row=2, col=3", a line for each row with its elements as "%f, ", and the forty '='
 * again.  Null counts as empty. */
MENSURA_EXPORT void rmatrix_printf_ptr(const RMATRIX *m);

/** rmatrix_printf_ptr by value. */
MENSURA_EXPORT void rmatrix_printf(RMATRIX m);

/** @} */

/** @name Heap matrices
 * Every function that returns a Matrix returns a new one.  Without memory it returns null and has released what it had
 * taken.  A Matrix argument must not be null, except of matrix_delete.  Arrays must not be null unless their length is
 * 0.
 * @{ */

/** A matrix of m rows and n columns; element (i, j) is v[i][j], each row allocated by itself.
 * Made by the functions below only, and released by matrix_delete. */
typedef struct Matrix {
    int m;      /**< rows */
    int n;      /**< columns */
    double **v; /**< the rows */
} Matrix;

/** A new matrix whose elements are all 0.0.
 * Negative sizes count as 0; 0 x 0, 3 x 0 and 0 x 3 are matrices too. */
MENSURA_EXPORT Matrix *matrix_new(int m, int n);

/** Releases the rows and the record; null does nothing. */
MENSURA_EXPORT void matrix_delete(Matrix *x);

/** A copy of m rows of n numbers each.  NOTE THE ORDER: columns first. */
MENSURA_EXPORT Matrix *matrix_copy(int n, double *const *rows, int m);

/** Transposes in place the square that the first m columns form; with fewer columns than rows it does nothing. */
MENSURA_EXPORT void matrix_transpose(Matrix *x);

/** The product x y; null when x->n differs from y->m.
 * The terms are added in order:
 *
 *     v[i][j] = 0 + x[i][0] y[0][j] + x[i][1] y[1][j] + ...
 */
MENSURA_EXPORT Matrix *matrix_mul(const Matrix *x, const Matrix *y);

/** A matrix of x's size: the identity in the first d rows and columns, x's elements from row d and column d on. */
MENSURA_EXPORT Matrix *matrix_minor(const Matrix *x, int d);

/** The sum c[i] = a[i] + s b[i] for i < n; returns c, which may be a or b. */
MENSURA_EXPORT double *vmadd(const double *a, const double *b, double s, double *c, int n);

/** The n x n matrix I - 2 v v^T: a reflection when v has length 1. */
MENSURA_EXPORT Matrix *vmul(const double *v, int n);

/** The length sqrt(x[0]^2 + x[1]^2 + ...); 0 for n < 1.
 * Squares overflow above 1e154 and vanish below 1e-162: no rescaling. */
MENSURA_EXPORT double vnorm(const double *x, int n);

/** The quotients y[i] = x[i] / d for i < n; returns y, which may be x. */
MENSURA_EXPORT double *vdiv(const double *x, double d, double *y, int n);

/** Copies column c, x->m numbers, to out; returns out.
 * A c outside 0 .. n-1 writes nothing. */
MENSURA_EXPORT double *mcol(const Matrix *x, double *out, int c);

/** Writes "dataQR.txt" in the current directory, replacing it.
 * A line for each row with its elements as "%.15f,", then 20 newlines.  Returns what closing the file returns, 0 or
 * EOF; EOF when it cannot be opened. */
MENSURA_EXPORT int matrix_show(const Matrix *x);

/** QR decomposition: x = Q R, to rounding, with Q orthogonal, x->m x x->m, and R upper triangular, x->m x x->n.
 * Step k reflects column k below its diagonal onto a multiple of the unit vector (Golub and Van Loan, section 5.1); the
 * sign of that multiple follows the element (k, k) of x itself, so a column may cancel.  Where less than 1e-10 is left
 * to reflect, the step reflects the axis of the first element of the column that is below 1e-10, mostly axis 0: a row
 * changes its sign.  An x with elements below 1e-10 is not made triangular: scale it first.
 *
 *     Q = H_0 H_1 H_2 ...
 *     R = Q^T x
 *
 * R is computed as this product, so rounding errors remain below its diagonal.
 *
 * Fewer than two rows or no column: Q is the identity and R a copy of x.  Without memory *Q and *R become null.
 * Scratch memory: three matrices of the size of Q and two of that of R; with NaN or infinity in x some more. */
MENSURA_EXPORT void householder(const Matrix *x, Matrix **R, Matrix **Q);

/** Decomposes the 168 x 84 matrix i + j and multiplies Q by R again.
 * Prints "Q", "R" and "Q * R", each followed by a matrix_show of it, so that "dataQR.txt" ends up with the product.
 * Returns 0, also when the file cannot be written, and -1 without memory. */
MENSURA_EXPORT int QRtest(void);

/** @} */

#ifdef __cplusplus
}
#endif

/** @} */

#endif
