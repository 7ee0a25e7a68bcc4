// Position, velocity and acceleration of one axis, estimated by a Kalman filter.
#pragma once

#include <mensura/kalman.h>

#include <array>
#include <memory>

#include "cli/data/table.h"

namespace cli {

// The tracking model: the acceleration changes by random steps.
struct TrackingModel {
    double dt;   // sampling interval, s
    double qaa;  // mean square of a step of the acceleration
    double r;    // variance of a measured position
    double p;    // variance of the first estimate
};

using State = std::array<double, 3>;  // position, velocity, acceleration

// Starts at its first number.  Where a number is missing, the model predicts.
class TrackedAxis {
  public:
    explicit TrackedAxis(const TrackingModel &model) : model_(model) {}

    // A missing position is NaN.  Before the first number the estimates are NaN.
    const State &update(double position);

    // Whether the estimates are lost to rounding or overflow.
    bool lost() const;

  private:
    void begin(double position);

    TrackingModel model_;
    std::unique_ptr<KalmanFilter> filter_;
    State state_{kMissing, kMissing, kMissing};
};

}  // namespace cli
