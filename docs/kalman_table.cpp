// Prints docs/kalman.md: what the tracking model does for a given Q, R and P, measured.
// Deterministic: no random numbers, no clock.

#include <mensura/kalman.h>
#include <mensura/spectral.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <memory>
#include <vector>

namespace {

using State = std::array<double, 3>;  // position, velocity, acceleration
using Path = double (*)(double t);    // position; t in updates

constexpr int kUpdates = 4000;  // at q = 1e-12, the slowest, what is left fades by e every 200

// One axis; q = qaa dt^4 / r, half = A(0, 2) / dt^2.
std::unique_ptr<KalmanFilter> tracker(double q, double dt, double r, double p, double half = 0) {
    double A[9], C[3], Q[9], R[1], P[9];
    getKalmanFilterA(A, 3, dt)[2] = half * dt * dt;
    getKalmanFilterQ(Q, 3, 0, 0, 0, 0, 0, q * r / std::pow(dt, 4));
    auto kf = std::make_unique<KalmanFilter>();
    initKalmanFilter_d(kf.get(), A, getKalmanFilterC(C, 1), Q, getKalmanFilterR(R, 1, r), getKalmanFilterP(P, 3, p),
                       nullptr, 1, 3);
    return kf;
}

State update(KalmanFilter &kf, double z) {
    State x{};
    KalmanFilter_update_d(&kf, &z, x.data());
    return x;
}

// The estimates along a path that begins when the filter has settled.
std::vector<State> follow(double q, Path path, double half = 0) {
    const auto kf = tracker(q, 1, 1, 1e4, half);
    std::vector<State> estimates(kUpdates);
    for (int t = 0; t < kUpdates; ++t) update(*kf, 0);
    double t = 0;
    for (State &x : estimates) x = update(*kf, path(t++));
    return estimates;
}

double impulse(double t) { return t == 0 ? 1 : 0; }
double steady(double t) { return t; }
double accelerated(double t) { return t * t / 2; }

void print_response(double q) {
    const auto response = follow(q, impulse), turn = follow(q, accelerated);
    std::vector<double> h, off;
    State noise{};
    for (std::size_t t = 0; t < kUpdates; ++t) {
        h.push_back(response[t][0]);
        off.push_back(std::fabs(turn[t][0] - accelerated(static_cast<double>(t))));
        for (std::size_t j = 0; j < 3; ++j) noise[j] = std::hypot(noise[j], response[t][j]);
    }
    double peak = 0, corner = 0;
    for (int i = 0; i < 6200; ++i) {
        const double f = 0.001 * std::pow(1.001, i);  // up to 0.49 fs
        const double gain = SingleFreqDFT(h.data(), kUpdates, 2 * f);
        peak = std::max(peak, gain);
        if (gain > std::sqrt(0.5)) corner = f;
    }
    const double largest = *std::max_element(off.begin(), off.end());
    while (off.back() < largest / 100) off.pop_back();
    const auto &[k1, k2, k3] = response[0];
    std::printf("| %.0e | %#.2g, %#.2g, %#.2g | %#.2g | %.1f | %.2f | %#.2g | %#.2g | %.4g | %zu |\n", q, k1, k2, k3,
                corner, 20 * std::log10(peak), noise[0], noise[1], noise[2], largest, off.size());
}

// In m/s, at 100 Hz, of what rests at 1 m.
void print_velocities(double p) {
    const auto kf = tracker(1e-8, 0.01, 1, p);
    std::printf("| %g", p);
    for (int i = 1; i <= 100; ++i) {
        const double velocity = update(*kf, 1)[1];
        if (i <= 3 || i == 10 || i == 30 || i == 100) std::printf(" | %.1f", std::round(10 * velocity) / 10 + 0.0);
    }
    std::puts(" |");
}

int updates_done(double r) {
    const auto kf = tracker(1e-6, 0.01, r, r);
    for (int done = 0; done < 1000; ++done) {
        update(*kf, 0);
        if (isEmptyRMATRIX(getKalmanFilter_state(kf.get())) != 0) return done;
    }
    return 1000;
}

}  // namespace

int main() {
    std::printf(R"(# Kalman tracking: setting Q, R and P

`docs/kalman_table.cpp` prints this page and measures its numbers.

```c
/* m axes, positions at fs Hz with an rms noise of s; the estimate shall have -3 dB at f Hz, up to fs / 25. */
const int n = 3 * m;
const double dt = 1 / fs, r = s * s, q = pow(f / (0.44 * fs), 6);
getKalmanFilterA(A, n, dt);
getKalmanFilterC(C, m);
getKalmanFilterQ(Q, n, 0, 0, 0, 0, 0, q * r / pow(dt, 4));
getKalmanFilterR(R, m, r);
getKalmanFilterP(P, n, 1e4 * r);
for (int i = 0; i < n; ++i) x0[i] = i < m ? first_position[i] : 0;
initKalmanFilter_d(&kf, A, C, Q, R, P, x0, m, n);
```

## Q and R: one number

With the rest of Q zero only **q = qaa dt^4 / r** counts: qaa, r and p times the same factor give the same estimates.
r is the variance of a measured position, qaa the mean square change of the acceleration from one update to the next.

| q | gain: p, v dt, a dt^2 | -3 dB, fs | peak, dB | noise: p | v | a | step | updates |
|---:|---|---:|---:|---:|---:|---:|---:|---:|
)");
    for (const double q : {1e-12, 1e-10, 1e-8, 1e-6, 1e-4, 1e-2, 1.0}) print_response(q);
    const State ramp = follow(1e-4, steady).back(), turn = follow(1e-4, accelerated).back();
    const State with_term = follow(1e-4, accelerated, 0.5).back();
    constexpr double end = kUpdates - 1;
    std::printf(R"(
- **Gain** once settled; **-3 dB** and **peak** of the response from position measured to position estimated. Up to
  q = 1e-6, -3 dB lies at 0.44 q^(1/6) fs within 3 %%: half of it takes 64 times less qaa. Near a third of it the peak
  amplifies vibration. The same -3 dB point in Hz at another rate: qaa / r goes with dt^2.
- **Noise:** rms in s, s / dt and s / dt^2, where s = sqrt r. A central difference of the samples has v = 0.71.
- **Step:** the largest error of the position after the acceleration jumps by a, in a dt^2; **updates** until no more
  than a hundredth of it is left. Raise q while step times a dt^2 is well above the noise of p times s.
- **Lag:** the position settles %.3f v dt behind a constant velocity v, %.3f a dt^2 behind a constant acceleration a.

**The missing dt^2 / 2.** A moves positions by velocity times dt only. Under a constant acceleration a the velocity is
%.3f a dt too high, as it will be half an update later. Where that matters subtract a dt / 2, or set
`A[i * n + i + 2 * m] = dt * dt / 2` for each axis i before the init: then it is %.3f a dt off.

## P and the first updates

p claims a position known to sqrt p, a velocity to 316 sqrt p and an acceleration to 32 sqrt p, whatever the units.
Estimated velocity in m/s of what rests at 1 m, without noise, for x0 = 0, dt = 0.01 s, q = 1e-8, r = 1 m^2:

| p / r | update 1 | 2 | 3 | 10 | 30 | 100 |
|---:|---:|---:|---:|---:|---:|---:|
)",
                std::fabs(ramp[0] - end), std::fabs(turn[0] - accelerated(end)), turn[1] - end,
                std::fabs(with_term[1] - end));
    for (const double p : {1e-4, 1.0, 1e4}) print_velocities(p);
    std::printf(R"(
- **x0:** an offset of the first position is taken for velocity, nearly all of it if 1e5 dt^2 is well above 1 and p not
  below r. Give x0 the first position, or drop the first updates.
- **p:** a small one insists on x0 for long; a large one believes the first samples, noise and all. If in doubt, large.

## When the state is empty

C P C^T + R is singular for the filter if a pivot is 1.1e-16 or less, **whatever the unit**. State and P are empty then,
and KalmanFilter_update_d leaves xOut as it was: the output looks frozen. Of 1000 updates with p = r and q = 1e-6 the
filter completed %d for r = 1e-16, %d for 5e-17 and %d for 1e-17: the first may pass while P is large.

- **Units:** choose them so that r is above 1e-12, nanometres instead of metres.
- **Detect** it by `isEmptyRMATRIX(getKalmanFilter_state(&kf))` after each update. `resetKalmanFilter(&kf)` brings P and
  x back; the same R and Q will empty them again, and wrong sizes need another init.
- **NaN** in z makes the state NaN for good, not empty: test z first, reset after. To go without a sample, set
  `kf.R.data[101 * i]` of its axis i to 1e12 r for one update with any finite z: the model predicts.
)",
                updates_done(1e-16), updates_done(5e-17), updates_done(1e-17));
}
