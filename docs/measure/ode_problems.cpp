// Differential equations for docs/measure/ode.py, in the form that the integrators call: in Python they would take
// minutes.  Each counts its calls.
#include <cmath>
#include <limits>

namespace {

// What the integrators are given as `param`; the layout is that of Count in ode.py.
struct Count {
    long calls = 0;
    long rejected = 0;                                        // attempts of rkf45 that began where the one before did
    double begin = std::numeric_limits<double>::quiet_NaN();  // of the last attempt
};

constexpr int kCallsOfAnAttempt = 6;

void count(double t, void *param) {
    auto &count = *static_cast<Count *>(param);
    if (count.calls++ % kCallsOfAnAttempt != 0) return;
    if (t == count.begin) ++count.rejected;
    count.begin = t;
}

}  // namespace

extern "C" {

// y'' = -y
int oscillator(double t, const double *y, void *param, double *dydt) {
    count(t, param);
    dydt[0] = y[1];
    dydt[1] = -y[0];
    return 0;
}

// y'' = 5 (1 - y^2) y' - y
int van_der_pol(double t, const double *y, void *param, double *dydt) {
    count(t, param);
    dydt[0] = y[1];
    dydt[1] = 5 * (1 - y[0] * y[0]) * y[1] - y[0];
    return 0;
}

// y' = -50 (y - cos t)
int decay(double t, const double *y, void *param, double *dydt) {
    count(t, param);
    dydt[0] = -50 * (y[0] - std::cos(t));
    return 0;
}

// y' = 1
int elapsed(double t, const double * /*y*/, void *param, double *dydt) {
    count(t, param);
    dydt[0] = 1;
    return 0;
}
}
