// A run that anyone can repeat, and sample data.

#include <mensura/ode.h>

#include <cstdio>

double in[5][3] = {{12, -51, 4}, {6, 167, -68}, {-4, 24, -41}, {-1, 1, 0}, {2, 0, 3}};

namespace {

int test_differential_equation(double, const double *y, void *, double *dydt) {
    dydt[0] = y[1] * y[2];
    dydt[1] = y[2] - y[0];
    dydt[2] = -0.51 * y[0] * y[1];
    return 0;
}

}  // namespace

void test_rkf45() {
    std::FILE *file = std::fopen("test_rkf45.txt", "w");
    if (file == nullptr) return;
    double y[3] = {1.0, 1.0, 3.0};
    double from = 0.0, to = 0.0;
    while (to <= 15.0) {
        if (rkf45(from, to, 100.0, 1e-06, test_differential_equation, y, 3, nullptr, y) != 0) {
            std::puts("Fdynamics: rkf45 failure!");
            return;  // the file stays open
        }
        for (const double component : y) std::fprintf(file, "%f,", component);
        std::fprintf(file, "%d\n", 0);
        from = to;
        to += 0.001;
    }
    std::fclose(file);
    std::puts("test_rkf45 end");
}
