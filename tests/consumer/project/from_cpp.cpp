#undef NDEBUG
#include <mensura/mensura.h>

#include <cassert>
#include <cmath>

static bool is_near(double a, double b) {
    return std::abs(a - b) < 1e-9;  // rounding stays well below it, a wrong result well above
}

int main() {
    double poly[] = {1, -2, 5};  // roots 1 +- 2j
    CplxD roots[2] = {};
    assert(FindRoots(2, poly, roots) == 2);
    assert(is_near(roots[0].re, 1) && is_near(std::abs(roots[0].im), 2));
    assert(is_near(CplxDMult(roots[0], roots[1]).re, 5));

    static TIIRFilterBank bank;
    initTIIRFilters(&bank, ptLowPass, 2, 40.0, 360.0);
    TIIRFilter &louder = bank.Filters[1];
    louder.Spec.GainDb = 6.0;
    louder.Coeffs = CalcIIRFilterCoeff(louder.Spec);
    const double in[] = {1, 1};
    double out[] = {0, 0};
    for (int i = 0; i < 1000; ++i) assert(IIRFilters(&bank, in, out) == 2);
    assert(is_near(out[0], 1) && is_near(out[1], std::pow(10, 6.0 / 20)));
    return 0;
}
