// Butterworth: poles evenly spread over the left half of the unit circle.

#include <cmath>

#include "../../internal/constants.h"
#include "family.h"

int ButterworthPoly(int n, CplxD *roots) {
    if (!mensura::iir::order_fits(n, 1)) return 0;
    const int pairs = n / 2;
    for (int i = 0; i < pairs; ++i) {
        const double theta = (n + 1 + 2 * i) * mensura::kPi / (2 * n);
        roots[2 * i] = {std::cos(theta), std::sin(theta)};
        roots[2 * i + 1] = {std::cos(theta), -std::sin(theta)};
    }
    if (n % 2 != 0) roots[2 * pairs] = {-1.0, 0.0};
    return n;
}
