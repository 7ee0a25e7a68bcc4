// The filter on plain arrays.

#include <mensura/kalman.h>

namespace {

RMATRIX *load(const double *a, int rows, int cols, RMATRIX *out) { return setRMATRIX_ptr(a, rows, cols, out); }
RMATRIX *load(double *const *a, int rows, int cols, RMATRIX *out) { return setRMATRIX1_ptr(a, rows, cols, out); }

template <typename Array>
void init(KalmanFilter *kf, Array A, Array C, Array Q, Array R, Array P, const double *x0, int m, int n) {
    load(A, n, n, &kf->A);
    load(C, m, n, &kf->C);
    load(Q, n, n, &kf->Q);
    load(R, m, m, &kf->R);
    load(P, n, n, &kf->P);
    const bool fits = m <= RMATRIX_CAPACITY && n <= RMATRIX_CAPACITY;
    const bool starts_at_zero = fits && x0 == nullptr;  // sizes that do not fit give an empty state instead
    if (!starts_at_zero) load(x0, fits ? n : 0, 1, &kf->x);
    initKalmanFilter(kf, &kf->A, &kf->C, &kf->Q, &kf->R, &kf->P, starts_at_zero ? nullptr : &kf->x);
}

template <typename Array>
double *update_with(KalmanFilter *kf, const double *z, Array Anew, double *xOut) {
    load(z, kf->MeasCount, 1, &kf->y);
    load(Anew, kf->StateCount, kf->StateCount, &kf->A);
    rmatrix_to_vector(KalmanFilter_update1(kf, &kf->y, &kf->A), xOut);
    return xOut;
}

}  // namespace

void initKalmanFilter_d(KalmanFilter *kf, const double *A, const double *C, const double *Q, const double *R,
                        const double *P, const double *x0, int m, int n) {
    init(kf, A, C, Q, R, P, x0, m, n);
}

void initKalmanFilter_d1(KalmanFilter *kf, double **A, double **C, double **Q, double **R, double **P, const double *x0,
                         int m, int n) {
    init(kf, A, C, Q, R, P, x0, m, n);
}

void resetKalmanFilter_d(KalmanFilter *kf, const double *x0) {
    if (x0 != nullptr) load(x0, kf->xInit.rows, kf->xInit.cols, &kf->xInit);
    resetKalmanFilter(kf);
}

double *KalmanFilter_update_d(KalmanFilter *kf, const double *z, double *xOut) {
    load(z, kf->MeasCount, 1, &kf->y);
    rmatrix_to_vector(KalmanFilter_update(kf, &kf->y), xOut);
    return xOut;
}

double *KalmanFilter_update1_d(KalmanFilter *kf, const double *z, const double *Anew, double *xOut) {
    return update_with(kf, z, Anew, xOut);
}

double *KalmanFilter_update1_d1(KalmanFilter *kf, const double *z, double **Anew, double *xOut) {
    return update_with(kf, z, Anew, xOut);
}

double *getKalmanFilter_state_d(KalmanFilter *kf, double *xOut) {
    rmatrix_to_vector(&kf->x, xOut);
    return xOut;
}

double *getKalmanFilter_out_d(KalmanFilter *kf, double *yOut) {
    rmatrix_to_vector(getKalmanFilter_out(kf), yOut);
    return yOut;
}
