// Any design request and its running filter, banks, the response, and each step of the design on its own.
#include <numeric>

#include "input.h"
#include "support/reference/iir.h"

using namespace fuzz;

static IIRDesignSpec request(Input &input) {
    const double a = number(input), b = number(input), c = number(input);
    const ProtoSpec proto{code(input, -1, 9), code(input, -1, 60), number(input), number(input), number(input)};
    return {code(input, -1, 6), a, b, c, proto};
}

static void design(Input &input) {
    const IIRDesignSpec spec = request(input);
    const IIRCoeffs coeffs = CalcIIRFilterCoeff(spec), again = CalcIIRFilterCoeff(spec);
    check(coeffs.NumSections <= MAX_IIR_SECTIONS && std::memcmp(&coeffs, &again, 10 * sizeof(coeffs.a0)) == 0);
    Doubles re = numbers(input, input.ConsumeIntegralInRange(0, 64)), im = re;
    IIRFreqResponse(coeffs, code(input, -1, 60), re.data(), im.data(), static_cast<int>(re.size()));
}

// Also when one of the filters in a bank is not like the others.
static void run(Input &input) {
    static TIIRFilterBank bank, plain;
    const int channels = input.ConsumeIntegralInRange(1, 10), type = code(input, -1, 6);
    initTIIRFilters(&bank, type, channels, number(input), number(input));
    IIRCoeffs &changed = bank.Filters[input.ConsumeIntegralInRange(0, channels - 1)].Coeffs;
    changed = CalcIIRFilterCoeff(request(input));
    if (input.ConsumeBool()) changed.NumSections = code(input, -1, 60);
    plain = bank;
    for (int step = 0; step < 20; ++step) {
        const Doubles x = numbers(input, channels);
        Doubles out = x, expected = x;
        check(IIRFilters(&bank, out.data(), out.data()) == channels);
        reference::filter_channels(plain, x.data(), expected.data());
        check(same_bits(out, expected));
    }
}

static void sort_roots(Input &input) {
    const int n = input.ConsumeIntegralInRange(0, 110), ascending = n % 2;
    Doubles keys = numbers(input, 2 * n), c2(MAX_IIR_SECTIONS), c1 = c2, c0 = c2, poly(101);
    std::vector<int> index(keys.size() / 2), seen = index;
    std::iota(index.begin(), index.end(), 0);
    check(HeapIndexSort(keys.data(), index.data(), n, ascending) == (n < 2 ? 0 : 1));
    for (const int i : index) check(++seen.at(static_cast<std::size_t>(i)) == 1);  // a permutation
    auto *const roots = reinterpret_cast<CplxD *>(keys.data());
    SortRootsByZeta(roots, n, ascending);
    const int sections = GetFilterCoeff(n, roots, c2.data(), c1.data(), c0.data());
    check(sections >= 0 && sections <= MAX_IIR_SECTIONS && sections <= n);
    ReverseCoeff(poly.data(), RebuildPoly(sections, poly.data(), c2.data(), c1.data(), c0.data()));
}

// The corner shows as the scale of a last section that is 1/1.
static void move_corner(Input &input) {
    LowPassProto p{};
    const int last = input.ConsumeIntegralInRange(0, 5);
    for (auto *const values : {&p.Den2, &p.Den1, &p.Den0, &p.Num2, &p.Num1, &p.Num0})
        std::ranges::copy(numbers(input, last), *values);
    p.Den0[last] = p.Num0[last] = 1;
    const double corner = reference::corner(p, last + 1);
    SetCornerFreq(last + 1, p.Den2, p.Den1, p.Den0, p.Num2, p.Num1, p.Num0);
    check(same_bits(p.Den0[last], 1 / corner));
}

static void list_roots(Input &input) {
    const double shape = number(input), depth = number(input);
    const int order = code(input, -1, 60);
    std::vector<CplxD> p(MAX_IIR_SECTIONS), z = p;
    int zeros = 0;
    for (const int poles :
         {ButterworthPoly(order, p.data()), ChebyshevPoly(shape, order, p.data()), GaussianPoly(order, p.data()),
          AdjustablePoly(shape, order, p.data()), BesselPoly(order, p.data()), PapoulisPoly(order, p.data()),
          InvChebyPoly(depth, order, p.data(), z.data(), &zeros),
          EllipticPoly(shape, depth, order, p.data(), z.data(), &zeros)})
        check(poles >= 0 && poles <= MAX_IIR_SECTIONS && zeros >= 0 && zeros <= MAX_IIR_SECTIONS);
}

void fuzz::test(Input &input) { input.PickValueInArray({design, run, sort_roots, move_corner, list_roots})(input); }
