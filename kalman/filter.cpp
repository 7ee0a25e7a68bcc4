// The filter on fixed-capacity matrices.

#include <mensura/kalman.h>

namespace {

void set_zero_column(RMATRIX &m, int rows) { initRMATRIX(&m, rows, 1); }

}  // namespace

void initKalmanFilter(KalmanFilter *kf, const RMATRIX *A, const RMATRIX *C, const RMATRIX *Q, const RMATRIX *R,
                      const RMATRIX *P, const RMATRIX *x0) {
    copyRMATRIX(A, &kf->A);
    copyRMATRIX(C, &kf->C);
    copyRMATRIX(Q, &kf->Q);
    copyRMATRIX(R, &kf->R);
    copyRMATRIX(P, &kf->P);
    kf->MeasCount = kf->C.rows;
    kf->StateCount = kf->A.rows;
    if (x0 != nullptr)
        copyRMATRIX(x0, &kf->x);
    else
        set_zero_column(kf->x, kf->StateCount);
    set_zero_column(kf->xInit, kf->StateCount);
    copyRMATRIX(&kf->x, &kf->xInit);
    copyRMATRIX(P, &kf->PInit);
    set_zero_column(kf->xPred, kf->StateCount);
    initRMATRIX_identity(&kf->Ident, kf->StateCount, kf->StateCount);
    rmatrix_transpose_ptr(&kf->A, &kf->ATrans);
    rmatrix_transpose_ptr(&kf->C, &kf->CTrans);
    set_zero_column(kf->y, kf->MeasCount);
}

void resetKalmanFilter(KalmanFilter *kf) {
    copyRMATRIX(&kf->PInit, &kf->P);
    copyRMATRIX(&kf->xInit, &kf->x);
}

// An operation that fails empties its result, and an operation on an empty matrix fails too.
RMATRIX *KalmanFilter_update(KalmanFilter *kf, const RMATRIX *z) {
    RMATRIX *const W = &kf->Work1, *const V = &kf->Work2;

    rmatrix_multi_ptr(&kf->A, &kf->x, &kf->xPred);  // predict: x = A x

    rmatrix_multi_ptr(&kf->A, &kf->P, W);  // P = A P A^T + Q
    rmatrix_multi_ptr(W, &kf->ATrans, V);
    rmatrix_add_ptr(V, &kf->Q, &kf->P);

    rmatrix_multi_ptr(&kf->C, &kf->P, W);  // S = C P C^T + R
    rmatrix_multi_ptr(W, &kf->CTrans, V);
    rmatrix_add_ptr(V, &kf->R, W);

    rmatrix_inverse_ptr(W, V);  // K = P C^T S^-1
    rmatrix_multi_ptr(&kf->P, &kf->CTrans, W);
    rmatrix_multi_ptr(W, V, &kf->K);

    rmatrix_multi_ptr(&kf->C, &kf->xPred, W);  // correct: x = x + K (z - C x)
    rmatrix_sub_ptr(z, W, V);
    rmatrix_multi_ptr(&kf->K, V, W);
    rmatrix_add_ptr(&kf->xPred, W, &kf->xPred);

    rmatrix_multi_ptr(&kf->K, &kf->C, W);  // P = (I - K C) P
    rmatrix_sub_ptr(&kf->Ident, W, V);
    rmatrix_multi_ptr(V, &kf->P, W);
    copyRMATRIX(W, &kf->P);

    copyRMATRIX(&kf->xPred, &kf->x);
    return &kf->x;
}

RMATRIX *KalmanFilter_update1(KalmanFilter *kf, const RMATRIX *z, const RMATRIX *Anew) {
    copyRMATRIX(Anew, &kf->A);
    rmatrix_transpose_ptr(&kf->A, &kf->ATrans);
    return KalmanFilter_update(kf, z);
}

RMATRIX *getKalmanFilter_state(KalmanFilter *kf) { return &kf->x; }

RMATRIX *getKalmanFilter_out(KalmanFilter *kf) {
    rmatrix_multi_ptr(&kf->C, &kf->x, &kf->y);
    return &kf->y;
}
