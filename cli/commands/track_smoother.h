// Estimates of one axis from the measurements before and after each of them, by Rauch, Tung and Striebel (AIAA Journal
// 3, 1965).  With the estimate x(k) of the filter after row k, its covariance P(k), and M = A P(k) A^T + Q:
//
//     C = P(k) A^T M^-1
//     xs(k) = x(k) + C (xs(k+1) - A x(k))
//     Ps(k) = P(k) + C (Ps(k+1) - M) C^T
//
// P(k) A^T = A^-1 (M - Q), and so with J = I - Q M^-1
//
//     C = A^-1 J,  Ps(k) = A^-1 (J Ps(k+1) J^T + J Q) A^-T
//
// where no large covariances cancel.  Q has one element only, that of the acceleration: J is I but for its last row,
// which is all that is kept of each P(k).
#pragma once

#include <memory>
#include <span>
#include <vector>

#include "cli/commands/track_axis.h"

namespace cli {

class Smoother {
  public:
    Smoother();
    ~Smoother();
    Smoother(const Smoother &) = delete;
    Smoother &operator=(const Smoother &) = delete;

    // Takes what the filter knows after each row but the last.  False where M is too near to singular: then rounding in
    // its inverse moves estimates by a thousandth of their standard deviation and more.
    [[nodiscard]] bool add(const TrackedAxis &axis);

    // Smooths the estimates of all rows in place; `axis` is as after the last of them.
    void run(std::span<Estimate> estimates, const TrackedAxis &axis);

  private:
    struct Matrices;

    void begin(const KalmanFilter &filter);
    void step_back(Estimate &estimate, const State &last_row_of_j);

    std::unique_ptr<Matrices> matrices_;
    std::vector<State> rows_;  // the last of each J, from the first number on
};

}  // namespace cli
