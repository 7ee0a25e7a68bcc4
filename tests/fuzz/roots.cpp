// Closed forms, the root finder and its stages with any degree and coefficients.
#include <mensura/roots.h>

#include "input.h"

using namespace fuzz;

static void find(Input &input) {
    int n = code(input, -2, 22);  // at 80 bits, infinities and NaNs take long: a search without an end is 0.3 s at 40
    const bool leading_zeros = n == 21;
    n = leading_zeros ? 100 : n == 22 ? 101 : n;
    const int degree = n >= 1 && n <= 100 ? n : 0;
    Doubles c = numbers(input, degree + 1, 101);
    if (leading_zeros) std::fill_n(c.begin(), 80, 0.0);
    const Doubles before = c;
    const std::vector<CplxD> untouched(c.size() - 1, {77, 77});
    std::vector<CplxD> roots = untouched, again = untouched;
    const int found = FindRoots(n, c.data(), roots.data());
    check((found == 0 || found == degree) && same_bits(c, before));
    if (found == 0) check(same_bits(roots, untouched));
    check(FindRoots(n, c.data(), again.data()) == found && same_bits(roots, again));
    for (std::size_t i = 0; found > 0 && i < roots.size(); ++i) {  // imaginary parts of a pair cancel
        if (roots[i].im == 0 || std::isnan(roots[i].im)) continue;
        check(++i < roots.size() && same_bits(roots[i].im, -roots[i - 1].im));
    }
}

static void run_stages(Input &input) {
    using Reals = std::vector<long double>;
    const int n = input.ConsumeIntegralInRange(-1, 40), angle = code(input, -1, 181), mode = code(input, -1, 4);
    Reals p = numbers<long double>(input, n + 2), tuv = numbers<long double>(input, 3);
    Reals kr(p.size()), kq = kr, qp = kr, qk = kr, re(4), im(4), quartic = numbers<long double>(input, 5);
    int flag = mode;
    long double s = number(input);
    SetTUVandK(p.data(), n, tuv.data(), kr.data(), kq.data(), angle, s, mode, qp.data(), &flag);
    UpdateTUV(mode, p.data(), n, qp.data(), kq.data(), qk.data(), tuv.data(), &flag);
    QuadIterate(mode, p.data(), qp.data(), kq.data(), qk.data(), n, tuv.data(), &flag);
    RealIterate(mode, p.data(), qp.data(), kr.data(), qk.data(), n, &s);
    QuadSynDiv(p.data(), n, tuv.data(), p.data());
    DerivOfP(p.data(), n, p.data());
    ReversePoly(p.data(), n);
    const int found = QuadCubicRoots(quartic.data(), mode, re.data(), im.data());
    check(found >= 0 && found <= 4);
    for (const auto solve : {QuadRoots, CubicRoots, BiQuadRoots}) solve(quartic.data(), re.data(), im.data());
    InvertRoots(4, re.data(), im.data());
}

void fuzz::test(Input &input) { input.PickValueInArray({find, run_stages})(input); }
