#include "cli/commands/track_axis.h"

#include <cmath>

namespace cli {

namespace {

constexpr double kNoMeasurement = 1e12;  // times r: the variance of a missing position, which so has no weight

}  // namespace

const State &TrackedAxis::update(double position) {
    const bool missing = std::isnan(position);
    if (!filter_ && missing) return state_;
    if (!filter_) begin(position);
    const double z = missing ? state_[0] + model_.dt * state_[1] : position;
    filter_->R.data[0] = missing ? kNoMeasurement * model_.r : model_.r;
    KalmanFilter_update_d(filter_.get(), &z, state_.data());
    return state_;
}

bool TrackedAxis::lost() const {
    if (!filter_) return false;
    return isEmptyRMATRIX(getKalmanFilter_state(filter_.get())) != 0 ||
           !std::isfinite(state_[0] + state_[1] + state_[2]);
}

void TrackedAxis::begin(double position) {
    std::array<double, 9> a, q, p;
    std::array<double, 3> c;
    filter_ = std::make_unique_for_overwrite<KalmanFilter>();
    state_ = {position, 0, 0};
    initKalmanFilter_d(filter_.get(), getKalmanFilterA(a.data(), 3, model_.dt), getKalmanFilterC(c.data(), 1),
                       getKalmanFilterQ(q.data(), 3, 0, 0, 0, 0, 0, model_.qaa), &model_.r,
                       getKalmanFilterP(p.data(), 3, model_.p), state_.data(), 1, 3);
}

}  // namespace cli
