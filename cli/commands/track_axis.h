// Position, velocity and acceleration of one axis, estimated by a Kalman filter.
#pragma once

#include <mensura/kalman.h>

#include <array>
#include <memory>

#include "cli/table/table.h"

namespace cli {

// The tracking model: the acceleration changes by random steps.
struct TrackingModel {
    double dt;   // sampling interval, s
    double qaa;  // mean square of a step of the acceleration
    double r;    // variance of a measured position
    double p;    // variance of the first estimate
};

using State = std::array<double, 3>;  // position, velocity, acceleration

struct Estimate {
    State state{kMissing, kMissing, kMissing};
    double sigma = kMissing;  // standard deviation of the position
};

// Whether all numbers of a state are finite, and so is their sum.
bool is_finite(const State &state);

// Starts at its first number.  Where a number is missing, the model predicts.
class TrackedAxis {
  public:
    explicit TrackedAxis(const TrackingModel &model) : model_(model) {}

    // A missing position is NaN.  Before the first number the estimates are NaN.
    const Estimate &update(double position);

    // Starts anew with the next number.
    void restart() { *this = TrackedAxis(model_); }

    // Whether the estimates are lost to rounding or overflow.
    bool lost() const;

    // Null before the first number.
    const KalmanFilter *filter() const { return filter_.get(); }

  private:
    void begin(double position);
    void predict();

    TrackingModel model_;
    std::unique_ptr<KalmanFilter> filter_;
    Estimate estimate_;
};

}  // namespace cli
