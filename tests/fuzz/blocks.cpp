// Whole records: the block filter and the zero-phase filters with any length and any coefficients.
#include <mensura/iir.h>

#include "input.h"

using namespace fuzz;

// A design, or numbers that no design gives.
static IIRCoeffs coefficients(Input &input) {
    const ProtoSpec proto{input.ConsumeIntegralInRange(0, 7), code(input, -1, 20), 0.1, 60, 0};
    IIRCoeffs c = CalcIIRFilterCoeff({input.ConsumeIntegralInRange(0, 4), number(input), 0.1, 0, proto});
    if (input.ConsumeBool()) c.NumSections = code(input, -1, 60);
    if (input.ConsumeBool())
        for (auto *const values : {&c.a0, &c.a1, &c.a2, &c.b0, &c.b1, &c.b2})
            std::memcpy(values, numbers(input, MAX_IIR_SECTIONS, 4).data(), sizeof(*values));
    return c;
}

void fuzz::test(Input &input) {
    static TIIRFilter filter, again;
    const int n = input.ConsumeIntegralInRange(-1, 300), k = code(input, -1, 2), kind = k % 2;
    const double dt = number(input), ratio = number(input), fc = number(input);
    initTIIRFilter(&filter, code(input, -1, 6), fc, number(input));
    filter.Coeffs = coefficients(input);
    if (input.ConsumeBool()) IIRFilter(&filter, dt);
    again = filter;
    Doubles x = numbers(input, n, 100), out = x, in_place = x;
    FilterWithIIR(x.data(), out.data(), n, filter.Coeffs);
    for (int j = -1; j < 60; ++j) SectCalc(ratio, k, j, filter.Coeffs);
    FilterWithIIR(in_place.data(), in_place.data(), n, filter.Coeffs);  // from rest, whatever ran before
    law(same(out, in_place));
    in_place = x;
    law(IIRFilterZeroPhase(&filter, x.data(), out.data(), n) == out.data());
    law(IIRFilterZeroPhase(&again, in_place.data(), nullptr, n) == in_place.data());
    law(same(out, in_place) && (n >= 1 || filter.Primed == 0));
    dataZeroPhaseFilter(x.data(), n, dt, ratio, kind == 0 ? fc : 0);
}
