// Helpers of the families whose poles come from a polynomial.

#include <mensura/iir.h>

#include <cmath>
#include <utility>

double Factorial(int k) {
    double product = 1.0;
    for (int i = 2; i <= k && std::isfinite(product); ++i) product *= i;
    return product;
}

void ReverseCoeff(double *poly, int degree) {
    if (degree < 0) return;
    for (int i = 0; i <= degree / 2; ++i) std::swap(poly[i], poly[degree - i]);
    if (poly[0] != 0)
        for (int j = degree; j >= 1; --j) poly[j] /= poly[0];
    poly[0] = 1.0;
}
