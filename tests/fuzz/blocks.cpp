// Whole records: the block filter and the zero-phase filters with any length and any coefficients.
#include "input.h"
#include "support/reference/iir.h"

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
    static TIIRFilter filter, plain;
    const int n = input.ConsumeIntegralInRange(-1, 300), k = code(input, -1, 2), kind = k % 2;
    const double dt = number(input), ratio = number(input), fc = number(input);
    initTIIRFilter(&filter, code(input, -1, 6), fc, number(input));
    filter.Coeffs = coefficients(input);
    if (input.ConsumeBool()) IIRFilter(&filter, dt);
    plain = filter;
    const Doubles x = numbers(input, n, 100);
    Doubles out = x, expected = x;
    reference::BlockFilter block(filter.Coeffs);
    for (double &value : expected) value = block.run(value);
    FilterWithIIR(input.ConsumeBool() ? x.data() : out.data(), out.data(), n, filter.Coeffs);
    check(same_bits(out, expected));
    for (int j = -1; j < 60; ++j) SectCalc(ratio, k, j, filter.Coeffs);
    out = expected = x;
    check(IIRFilterZeroPhase(&filter, out.data(), nullptr, n) == out.data());
    reference::filter_zero_phase(plain, expected);
    check(same_bits(out, expected) && filter.Primed == plain.Primed);
    dataZeroPhaseFilter(out.data(), n, dt, ratio, kind == 0 ? fc : 0);
}
