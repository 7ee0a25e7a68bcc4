#include "cli/commands/track_axis.h"

#include <cmath>

namespace cli {

bool is_finite(const State &state) { return std::isfinite(state[0] + state[1] + state[2]); }

const Estimate &TrackedAxis::update(double position) {
    const bool missing = std::isnan(position);
    if (!filter_ && missing) return estimate_;
    if (!filter_) begin(position);
    if (missing)
        predict();
    else
        KalmanFilter_update_d(filter_.get(), &position, estimate_.state.data());
    estimate_.sigma = std::sqrt(filter_->P.data[0]);
    return estimate_;
}

bool TrackedAxis::lost() const {
    if (!filter_) return false;
    return isEmptyRMATRIX(&filter_->x) != 0 || !is_finite(estimate_.state);
}

void TrackedAxis::begin(double position) {
    std::array<double, 9> a, q, p;
    std::array<double, 3> c;
    filter_ = std::make_unique_for_overwrite<KalmanFilter>();
    estimate_.state = {position, 0, 0};
    initKalmanFilter_d(filter_.get(), getKalmanFilterA(a.data(), 3, model_.dt), getKalmanFilterC(c.data(), 1),
                       getKalmanFilterQ(q.data(), 3, 0, 0, 0, 0, 0, model_.qaa), &model_.r,
                       getKalmanFilterP(p.data(), 3, model_.p), estimate_.state.data(), 1, 3);
}

// The first half of KalmanFilter_update: x = A x, P = A P A^T + Q.
void TrackedAxis::predict() {
    KalmanFilter &f = *filter_;
    rmatrix_multi_ptr(&f.A, &f.x, &f.xPred);
    copyRMATRIX(&f.xPred, &f.x);
    rmatrix_multi_ptr(&f.A, &f.P, &f.Work1);
    rmatrix_multi_ptr(&f.Work1, &f.ATrans, &f.Work2);
    rmatrix_add_ptr(&f.Work2, &f.Q, &f.P);
    getKalmanFilter_state_d(&f, estimate_.state.data());
}

}  // namespace cli
