// Any design request and its running filter, banks, the response, and each step of the design on its own.
#include <mensura/iir.h>

#include <numeric>

#include "input.h"

using namespace fuzz;

static IIRDesignSpec request(Input &input) {
    const double a = number(input), b = number(input), c = number(input);
    const ProtoSpec proto{code(input, -1, 9), code(input, -1, 60), number(input), number(input), number(input)};
    return {code(input, -1, 6), a, b, c, proto};
}

static void design(Input &input) {
    const IIRDesignSpec spec = request(input);
    const IIRCoeffs coeffs = CalcIIRFilterCoeff(spec), again = CalcIIRFilterCoeff(spec);
    law(coeffs.NumSections <= MAX_IIR_SECTIONS && std::memcmp(&coeffs, &again, 10 * sizeof(coeffs.a0)) == 0);
    Doubles re = numbers(input, input.ConsumeIntegralInRange(0, 64)), im = re;
    IIRFreqResponse(coeffs, code(input, -1, 60), re.data(), im.data(), static_cast<int>(re.size()));
}

// A bank gives what its filters give one by one, also when one of them is not like the others.
static void run(Input &input) {
    static TIIRFilterBank bank, alone;
    const int channels = input.ConsumeIntegralInRange(1, 10), type = code(input, -1, 6);
    initTIIRFilters(&bank, type, channels, number(input), number(input));
    IIRCoeffs &changed = bank.Filters[input.ConsumeIntegralInRange(0, channels - 1)].Coeffs;
    changed = CalcIIRFilterCoeff(request(input));
    if (input.ConsumeBool()) changed.NumSections = code(input, -1, 60);
    alone = bank;
    for (int step = 0; step < 20; ++step) {
        const Doubles x = numbers(input, channels);
        Doubles out = x;
        law(IIRFilters(&bank, out.data(), out.data()) == channels);
        for (std::size_t i = 0; i < x.size(); ++i) law(same(out[i], IIRFilter(&alone.Filters[i], x[i])));
    }
}

static void take_steps(Input &input) {
    const int n = input.ConsumeIntegralInRange(0, 110), order = code(input, -1, 60), ascending = n % 2;
    const double shape = number(input), depth = number(input);
    Doubles keys = numbers(input, 2 * n), c2(MAX_IIR_SECTIONS), c1 = c2, c0 = c2, poly(101);
    std::vector<int> index(keys.size() / 2), seen = index;
    std::iota(index.begin(), index.end(), 0);
    law(HeapIndexSort(keys.data(), index.data(), n, ascending) == (n < 2 ? 0 : 1));
    for (const int i : index) law(++seen.at(static_cast<std::size_t>(i)) == 1);  // a permutation
    auto *const roots = reinterpret_cast<CplxD *>(keys.data());
    SortRootsByZeta(roots, n, ascending);
    const int sections = GetFilterCoeff(n, roots, c2.data(), c1.data(), c0.data());
    law(sections >= 0 && sections <= MAX_IIR_SECTIONS && sections <= n);
    ReverseCoeff(poly.data(), RebuildPoly(sections, poly.data(), c2.data(), c1.data(), c0.data()));
    Doubles num2 = numbers(input, sections), num1 = num2, num0 = num2;
    SetCornerFreq(sections, c2.data(), c1.data(), c0.data(), num2.data(), num1.data(), num0.data());
    std::vector<CplxD> p(MAX_IIR_SECTIONS), z = p;
    int zeros = 0;
    for (const int poles :
         {ButterworthPoly(order, p.data()), ChebyshevPoly(shape, order, p.data()), GaussianPoly(order, p.data()),
          AdjustablePoly(shape, order, p.data()), BesselPoly(order, p.data()), PapoulisPoly(order, p.data()),
          InvChebyPoly(depth, order, p.data(), z.data(), &zeros),
          EllipticPoly(shape, depth, order, p.data(), z.data(), &zeros)})
        law(poles >= 0 && poles <= MAX_IIR_SECTIONS && zeros >= 0 && zeros <= MAX_IIR_SECTIONS);
}

void fuzz::test(Input &input) { input.PickValueInArray({design, run, take_steps})(input); }
