// The Kalman filter with matrices of any sizes and values, its forms on plain arrays, the tracking model.
#include <mensura/kalman.h>

#include "input.h"

using namespace fuzz;

static KalmanFilter kf;

static const RMATRIX *set(Input &input, RMATRIX &m, int rows, int cols) {
    if (input.ConsumeIntegralInRange(0, 15) == 15) rows = input.ConsumeIntegralInRange(0, 6);  // rarely fits
    return setRMATRIX_ptr(numbers(input, rows * cols).data(), rows, cols, &m);
}

static void filter_matrices(Input &input) {
    static RMATRIX a, z;
    const int m = input.ConsumeIntegralInRange(1, 5), n = input.ConsumeIntegralInRange(1, 9);
    initKalmanFilter(&kf, set(input, a, n, n), set(input, kf.C, m, n), set(input, kf.Q, n, n), set(input, kf.R, m, m),
                     set(input, kf.P, n, n), input.ConsumeBool() ? set(input, kf.x, n, 1) : nullptr);
    for (int step = 0; step < 6; ++step) {
        set(input, z, m, 1);
        if (input.ConsumeIntegralInRange(0, 7) == 7) resetKalmanFilter(&kf);
        const RMATRIX *const x =
            step % 2 == 0 ? KalmanFilter_update(&kf, &z) : KalmanFilter_update1(&kf, &z, set(input, a, n, n));
        check(x == &kf.x && (isEmptyRMATRIX(x) != 0 || (x->rows == kf.A.rows && x->cols == 1)));
        check(getKalmanFilter_out(&kf) == &kf.y);
    }
}

static void filter_arrays(Input &input) {
    const int m = input.ConsumeIntegralInRange(0, 4), most = input.ConsumeIntegralInRange(0, 9) == 9 ? 102 : 12;
    const int n = input.ConsumeBool() ? 3 * m : input.ConsumeIntegralInRange(0, most);
    const double s = number(input);
    Doubles a = numbers(input, n * n), q = numbers(input, n * n), p = numbers(input, n * n), c = numbers(input, n * m);
    Doubles r = numbers(input, m * m), x0 = numbers(input, n), x = x0, y = numbers(input, m);
    if (input.ConsumeBool()) {
        check(getKalmanFilterA(a.data(), n, s) == a.data() && getKalmanFilterR(r.data(), m, s) == r.data());
        getKalmanFilterP(getKalmanFilterQ(p.data(), n, s, 0, 0, s, 0, 1), n, s);
        if (n == 3 * m) getKalmanFilterC(c.data(), m);
    }
    initKalmanFilter_d(&kf, a.data(), c.data(), q.data(), r.data(), p.data(), x0.data(), m, n);
    for (int step = 0; step < 3; ++step) {
        check(KalmanFilter_update_d(&kf, y.data(), x.data()) == x.data());
        check(KalmanFilter_update1_d(&kf, numbers(input, m).data(), a.data(), x.data()) == x.data());
        check(isEmptyRMATRIX(&kf.x) != 0 || (n <= RMATRIX_CAPACITY && kf.x.rows == n));
        getKalmanFilter_out_d(&kf, y.data());
        if (input.ConsumeBool()) resetKalmanFilter_d(&kf, x0.data());
    }
}

void fuzz::test(Input &input) {
    std::memset(&kf, 0, sizeof kf);
    input.PickValueInArray({filter_matrices, filter_arrays})(input);
}
