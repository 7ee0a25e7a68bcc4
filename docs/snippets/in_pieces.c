// docs/ode.md: rkf45 called once a piece.
#include <math.h>
#include <mensura/ode.h>

#include "check.h"

static int f(double t, const double *y, void *param, double *dydt) { /* y'' = -y */
    (void)t;
    (void)param;
    dydt[0] = y[1];
    dydt[1] = -y[0];
    return 0;
}

static int run(double *y, int n, void *param) {
    // [shown]
    /* From 0 to 10: 200 pieces with a step of 0.05, down to 0.05 / 32 where the error asks for it. */
    for (int i = 0; i < 200; ++i) {
        const int result = rkf45(i * 0.05, (i + 1) * 0.05, 1, 1e-6, f, y, n, param, y);
        if (result < 0) return result;
    }
    // [end]
    return 0;
}

int main(void) {
    double y[2] = {1, 0};
    CHECK(run(y, 2, NULL) == 0);
    CHECK(fabs(y[0] - cos(10.0)) < 1e-6 && fabs(y[1] + sin(10.0)) < 1e-6);
    return 0;
}
