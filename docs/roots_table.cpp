// Makes roots.md: measures FindRoots where it is strong and where it is not, and prints the whole page.
// Deterministic: seeded random numbers, no clock.

#include <mensura/roots.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <complex>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <numbers>
#include <random>
#include <vector>

namespace {

#if defined(__SIZEOF_FLOAT128__)
__extension__ typedef __float128 quad;  // 113 bits
#else
typedef long double quad;  // has 113 bits itself where there is no __float128, as on aarch64
#endif

using Coefficients = std::vector<double>;  // highest power first
using Roots = std::vector<CplxD>;
using Point = std::complex<long double>;

constexpr double kWrong = 1e-3;  // a relative error above this is a wrong root, not an inexact one

// ---- polynomials ----------------------------------------------------------------------------------------------------

class Uniform {
  public:
    explicit Uniform(std::uint64_t seed) : bits_(seed) {}
    double operator()() { return static_cast<double>(bits_() >> 11) * 0x1p-52 - 1; }  // in [-1, 1)

  private:
    std::mt19937_64 bits_;
};

Coefficients random_polynomial(int degree, Uniform &uniform) {
    Coefficients p(static_cast<std::size_t>(degree) + 1);
    for (double &c : p) c = uniform();
    return p;
}

Coefficients product(const Coefficients &a, const Coefficients &b) {
    Coefficients ab(a.size() + b.size() - 1);
    for (std::size_t i = 0; i < a.size(); ++i)
        for (std::size_t j = 0; j < b.size(); ++j) ab[i + j] += a[i] * b[j];
    return ab;
}

Coefficients power(const Coefficients &a, int exponent) {
    Coefficients p{1};
    for (int i = 0; i < exponent; ++i) p = product(p, a);
    return p;
}

Coefficients wilkinson(int degree) {
    Coefficients p{1};
    for (int k = 1; k <= degree; ++k) p = product(p, {1, -static_cast<double>(k)});
    return p;
}

Coefficients chebyshev(int degree) {  // T[n+1] = 2 x T[n] - T[n-1]
    Coefficients before{1}, last{1, 0};
    for (int n = 1; n < degree; ++n) {
        Coefficients next = product({2, 0}, last);
        for (std::size_t i = 0; i < before.size(); ++i) next[i + 2] -= before[i];
        before = last;
        last = next;
    }
    return last;
}

// ---- errors ---------------------------------------------------------------------------------------------------------

Point to_point(double re, double im = 0) { return {static_cast<long double>(re), static_cast<long double>(im)}; }
Point to_point(CplxD z) { return to_point(z.re, z.im); }

long double relative_error(Point z, Point reference) {
    const long double r = std::abs(reference);
    return std::abs(z - reference) / (r > 0 ? r : 1);
}

// The root of p that Newton's iteration in 113 bits reaches from z.
Point polished(const Coefficients &p, Point z) {
    quad re = static_cast<quad>(z.real()), im = static_cast<quad>(z.imag());
    for (int step = 0; step < 60; ++step) {
        quad vr = 0, vi = 0, dr = 0, di = 0;  // value and derivative by Horner's rule
        for (const double c : p) {
            const quad d = dr * re - di * im + vr;
            di = dr * im + di * re + vi;
            dr = d;
            const quad v = vr * re - vi * im + static_cast<quad>(c);
            vi = vr * im + vi * re;
            vr = v;
        }
        const quad norm = dr * dr + di * di;
        if (!(norm > 0)) break;
        const quad sr = (vr * dr + vi * di) / norm, si = (vi * dr - vr * di) / norm;
        re -= sr;
        im -= si;
        if (sr * sr + si * si <= (re * re + im * im) * static_cast<quad>(1e-50)) break;
    }
    return {static_cast<long double>(re), static_cast<long double>(im)};
}

// The largest relative distance of a root from its polished self; infinite when two roots polish to the same one, so
// that a finite result says that all roots were there.
double forward_error(const Coefficients &p, const Roots &roots) {
    std::vector<Point> exact;
    long double worst = 0;
    for (const CplxD z : roots) {
        const Point e = polished(p, to_point(z));
        if (std::any_of(exact.begin(), exact.end(), [e](Point f) { return relative_error(e, f) < 1e-15L; }))
            return HUGE_VAL;
        exact.push_back(e);
        const long double error = relative_error(to_point(z), e);
        if (!(error <= worst)) worst = error;
    }
    return static_cast<double>(worst);
}

// The largest relative distance from known roots, each of which is used once: the nearest that is left.
double error_against(std::vector<Point> known, const Roots &roots) {
    long double worst = 0;
    for (const CplxD z : roots) {
        const auto nearest = std::min_element(known.begin(), known.end(), [z](Point a, Point b) {
            return std::abs(to_point(z) - a) < std::abs(to_point(z) - b);
        });
        worst = std::max(worst, relative_error(to_point(z), *nearest));
        known.erase(nearest);
    }
    return static_cast<double>(worst);
}

bool find(Coefficients p, Roots &roots) {
    const int degree = static_cast<int>(p.size()) - 1;
    roots.resize(p.size() - 1);
    return FindRoots(degree, p.data(), roots.data()) == degree;
}

// The check of the page, as printed there.
int roots_hold(int N, const double *P, const CplxD *z, double tol) {
    CplxD sum = {0, 0};
    double size = 0;
    for (int k = 0; k < N; ++k) {
        const int inside = std::hypot(z[k].re, z[k].im) <= 1;
        const CplxD x = inside ? z[k] : CplxDDivision(getCplxD(1, 0), z[k]);
        CplxD value = {0, 0};
        double bound = 0;
        for (int i = 0; i <= N; ++i) {
            const double c = P[inside ? i : N - i];
            value = CplxDAdd(CplxDMult(value, x), getCplxD(c, 0));
            bound = bound * std::hypot(x.re, x.im) + std::fabs(c);
        }
        if (!(std::hypot(value.re, value.im) <= tol * bound)) return 0;
        sum = CplxDAdd(sum, z[k]);
        size += std::hypot(z[k].re, z[k].im);
    }
    return std::hypot(sum.re + P[1] / P[0], sum.im) <= tol * (size + std::fabs(P[1] / P[0]));
}

const char *const kCheckCode = R"(```c
/* 1 if each z is a root as far as rounding lets one see, and the sum of all is -P[1]/P[0]; P[0] != 0. */
int roots_hold(int N, const double *P, const CplxD *z, double tol) {
    CplxD sum = {0, 0};
    double size = 0;
    for (int k = 0; k < N; ++k) {
        const int inside = hypot(z[k].re, z[k].im) <= 1;   /* outside the unit circle: P reversed, at 1/z */
        const CplxD x = inside ? z[k] : CplxDDivision(getCplxD(1, 0), z[k]);
        CplxD value = {0, 0};
        double bound = 0;                                  /* sum of |P[i]| |x|^i */
        for (int i = 0; i <= N; ++i) {
            const double c = P[inside ? i : N - i];
            value = CplxDAdd(CplxDMult(value, x), getCplxD(c, 0));
            bound = bound * hypot(x.re, x.im) + fabs(c);
        }
        if (!(hypot(value.re, value.im) <= tol * bound)) return 0;
        sum = CplxDAdd(sum, z[k]);
        size += hypot(z[k].re, z[k].im);
    }
    return hypot(sum.re + P[1] / P[0], sum.im) <= tol * (size + fabs(P[1] / P[0]));
}
```
)";

constexpr double kTolerance = 1e-9;

// FindRoots with the variable scaled to the roots' geometric mean, as printed on the page.
int find_scaled(int N, const double *P, CplxD *z) {
    Coefficients Q(static_cast<std::size_t>(N) + 1);
    double f = 1;
    const double s = std::exp2(std::round(std::log2(std::fabs(P[N] / P[0])) / N));
    for (std::size_t i = 0; i < Q.size(); ++i) {
        Q[i] = P[i] / f;
        f *= s;
    }
    const int count = FindRoots(N, Q.data(), z);
    for (int k = 0; k < count; ++k) z[k] = CplxDMult_coef(z[k], s);
    return count;
}

const char *const kScaleCode = R"(```c
/* x = s t, with s the power of two next to the roots' geometric mean, so that the scaling rounds nothing. */
double Q[101], f = 1;
const double s = exp2(round(log2(fabs(P[N] / P[0])) / N));
for (int i = 0; i <= N; ++i, f *= s) Q[i] = P[i] / f;
const int count = FindRoots(N, Q, z);
for (int k = 0; k < count; ++k) z[k] = CplxDMult_coef(z[k], s);
```
)";

// ---- many polynomials -----------------------------------------------------------------------------------------------

int all_wrong = 0, all_wrong_accepted = 0;  // over the whole page

struct Tally {
    int total = 0, none = 0, wrong = 0, huge = 0, wrong_accepted = 0, right_rejected = 0;
    std::vector<double> errors;  // of the right ones

    void count(const Coefficients &p, bool found, const Roots &roots, double error) {
        ++total;
        if (!found) {
            ++none;
            return;
        }
        const bool accepted = roots_hold(static_cast<int>(roots.size()), p.data(), roots.data(), kTolerance) != 0;
        const bool right = error < kWrong;
        if (right) errors.push_back(error);
        wrong += !right;
        huge += std::any_of(roots.begin(), roots.end(), [](CplxD z) { return std::hypot(z.re, z.im) > 1e10; });
        wrong_accepted += !right && accepted;
        right_rejected += right && !accepted;
        all_wrong += !right;
        all_wrong_accepted += !right && accepted;
    }
    void measure(const Coefficients &p) {
        Roots roots;
        const bool found = find(p, roots);
        count(p, found, roots, found ? forward_error(p, roots) : 0);
    }
    double quantile(double q) {
        if (errors.empty()) return std::numeric_limits<double>::quiet_NaN();
        std::sort(errors.begin(), errors.end());
        return errors[static_cast<std::size_t>(q * static_cast<double>(errors.size() - 1))];
    }
};

// ---- the page -------------------------------------------------------------------------------------------------------

void random_coefficients() {
    std::printf(
        "## Where it is strong\n\n"
        "Coefficients drawn uniformly from [-1, 1). The error of a polynomial is the largest relative distance of a "
        "root\n"
        "from the exact one, which Newton's iteration in 113 bits reaches from it; half an ulp of a double is %.1e.\n"
        "Wrong, here and below: a root off by more than %.0e, or two that lead to the same exact one.\n\n"
        "| degree | polynomials | count 0 | wrong | error: median | 95 %% | worst "
        "|\n|---:|---:|---:|---:|---:|---:|---:|\n",
        DBL_EPSILON / 2, kWrong);
    for (const int degree : {3, 4, 5, 10, 20, 50, 100}) {
        Uniform uniform(1);
        Tally t;
        for (int i = 0; i < (degree < 50 ? 1000 : 100); ++i) t.measure(random_polynomial(degree, uniform));
        std::printf("| %d | %d | %d | %d | %.1e | %.1e | %.1e |\n", degree, t.total, t.none, t.wrong, t.quantile(0.5),
                    t.quantile(0.95), t.quantile(1));
    }
}

void wide_coefficients() {
    std::printf(
        "\n### Coefficients of very different size\n\n"
        "Degree 20, coefficients uniform in [-1, 1) times 10^e with e uniform in [-k, k). Errors of those not "
        "wrong.\n\n"
        "| k | polynomials | count 0 | wrong | error: median | 95 %% |\n|---:|---:|---:|---:|---:|---:|\n");
    for (const int k : {1, 5, 10, 20, 50}) {
        Uniform uniform(2);
        Tally t;
        for (int i = 0; i < 300; ++i) {
            Coefficients p = random_polynomial(20, uniform);
            for (double &c : p) c *= std::pow(10.0, k * uniform());
            t.measure(p);
        }
        std::printf("| %d | %d | %d | %d | %.1e | %.1e |\n", k, t.total, t.none, t.wrong, t.quantile(0.5),
                    t.quantile(0.95));
    }
}

void small_roots() {
    std::printf(
        "\n### Roots much smaller than 1\n\n"
        "Random polynomials of degree 10 whose variable is divided by r, so that the roots lie around r. Small roots "
        "end\n"
        "in a count of 0, or in zeros once coefficients fall below 1e-30 of their neighbour.\n\n"
        "| r | polynomials | count 0 | wrong | scaled first: count 0 | wrong | worst error |\n"
        "|---:|---:|---:|---:|---:|---:|---:|\n");
    for (const int e : {20, 0, -5, -7, -10, -15, -20, -30}) {
        Uniform uniform(3);
        Tally plain, scaled;
        for (int i = 0; i < 300; ++i) {
            Coefficients p = random_polynomial(10, uniform);
            double f = 1;
            for (double &c : p) {
                c *= f;
                f *= std::pow(10.0, e);
            }
            plain.measure(p);
            Roots roots(10);
            const bool found = find_scaled(10, p.data(), roots.data()) == 10;
            scaled.count(p, found, roots, found ? forward_error(p, roots) : 0);
        }
        std::printf("| 1e%+03d | %d | %d | %d | %d | %d | %.1e |\n", e, plain.total, plain.none, plain.wrong,
                    scaled.none, scaled.wrong, scaled.quantile(1));
    }
    std::printf("\nScale the variable first, as in the last columns:\n\n%s", kScaleCode);
}

void multiple_roots() {
    std::printf(
        "\n### Multiple roots\n\n"
        "(x - 1)^m (x + 2) (x - 3) (x^2 + 4): the error grows like the m-th root of the working precision, 2^-63.\n\n"
        "| m | worst relative error | 2^(-63/m) |\n|---:|---:|---:|\n");
    for (int m = 2; m <= 8; ++m) {
        Roots roots;
        std::vector<Point> known{-2, 3, {0, 2}, {0, -2}};
        known.insert(known.end(), static_cast<std::size_t>(m), 1);
        if (find(product(power({1, -1}, m), product(product({1, 2}, {1, -3}), {1, 0, 4})), roots))
            std::printf("| %d | %.1e | %.1e |\n", m, error_against(known, roots), std::exp2(-63.0 / m));
    }
}

void ill_conditioned_roots() {
    std::printf(
        "\n### Wilkinson and Chebyshev polynomials\n\n"
        "Both are ill-conditioned: a change in the last bit of a coefficient moves their roots far, whatever the "
        "finder.\n"
        "Worst relative error against the known roots; Wilkinson's also against the exact roots of its coefficients "
        "as\n"
        "they are after rounding to double.\n\n"
        "| degree | (x - 1)(x - 2) ... (x - n) | same, as rounded | Chebyshev T_n |\n|---:|---:|---:|---:|\n");
    for (const int n : {10, 15, 20, 24, 30, 40, 50}) {
        Roots roots;
        std::vector<Point> integers, cosines;
        for (int k = 1; k <= n; ++k) {
            integers.emplace_back(k);
            const bool middle = 2 * k - 1 == n;  // its root is 0, which a rounded pi misses
            cosines.emplace_back(middle ? 0 : std::cos((2 * k - 1) * std::numbers::pi_v<long double> / (2 * n)));
        }
        std::printf("| %d ", n);
        if (n <= 24 && find(wilkinson(n), roots))
            std::printf("| %.1e | %.1e ", error_against(integers, roots), forward_error(wilkinson(n), roots));
        else
            std::printf("| | ");
        if (find(chebyshev(n), roots)) std::printf("| %.1e |\n", error_against(cosines, roots));
    }
}

// Powers of x^2 + b x + c on a grid of exact quarters.
Tally powers_of_quadratics(int exponent) {
    Tally t;
    for (int i = -16; i <= 16; ++i)
        for (int j = 1; j <= 20; ++j) {
            const double b = 0.25 * i, c = 0.25 * j;
            const Coefficients p = power({1, b, c}, exponent);
            const Point half_width = std::sqrt(to_point(b * b - 4 * c)) * 0.5L, middle = to_point(-0.5 * b);
            std::vector<Point> known(static_cast<std::size_t>(exponent), middle + half_width);
            known.insert(known.end(), static_cast<std::size_t>(exponent), middle - half_width);
            Roots roots;
            const bool found = find(p, roots);
            t.count(p, found, roots, found ? error_against(known, roots) : 0);
        }
    return t;
}

void cubes_of_quadratics() {
    std::printf(
        "\n### Powers of a quadratic\n\n"
        "(x^2 + b x + c)^k for b = -4, -3.75 .. 4 and c = 0.25, 0.5 .. 5. Most come out as well as their multiplicity\n"
        "allows, but some cubes come back with count N and roots off by more than %.0e, a few of them huge.\n\n"
        "| k | polynomials | count 0 | wrong | with a root above 1e10 | worst error of the others |\n"
        "|---:|---:|---:|---:|---:|---:|\n",
        kWrong);
    for (int k = 2; k <= 4; ++k) {
        Tally t = powers_of_quadratics(k);
        std::printf("| %d | %d | %d | %d | %d | %.1e |\n", k, t.total, t.none, t.wrong, t.huge, t.quantile(1));
    }
    Roots roots;
    if (!find(power({1, 0, 1.25}, 3), roots)) return;
    std::printf("\n(x^2 + 1.25)^3, with its roots +-%.4f i, gives\n\n```text\n", std::sqrt(1.25));
    for (const CplxD z : roots) std::printf("{%.4g, %.4g}\n", z.re, z.im);
    std::printf("```\n");
}

void how_to_tell() {
    Tally random;
    Uniform uniform(4);
    for (int i = 0; i < 500; ++i) random.measure(random_polynomial(5 + i % 46, uniform));
    std::printf(
        "\n## How to tell\n\n"
        "A count of 0 says so itself. For the rest, evaluate the polynomial at each root and compare with the sum of "
        "the\n"
        "moduli of its terms. A missing or doubled root satisfies that too, but spoils the sum of the roots.\n\n%s\n"
        "With tol = %.0e it rejects %d of %d random polynomials of degree 5 to 50, and passes %d of the %d wrong "
        "results\n"
        "counted above. It may reject roots that are merely inexact, and it knows the backward error only: the roots "
        "of\n"
        "an ill-conditioned polynomial pass, because they are exact for coefficients next to the given ones.\n",
        kCheckCode, kTolerance, random.right_rejected, random.total, all_wrong_accepted, all_wrong);
}

void order_and_threads() {
    std::printf(
        "\n## Order of the roots\n\n"
        "In the order found: zeros first; then the real roots and pairs that the iteration divides out; last, up to "
        "four\n"
        "roots of the remaining factor in the order of its closed form. Pairs stand in adjacent slots, either member\n"
        "first. The order is the same on every run but sorted by nothing. x^2 (x - 1)(x - 2) ... (x - "
        "7):\n\n```text\n");
    Roots roots;
    if (find(product(wilkinson(7), {1, 0, 0}), roots))
        for (const CplxD z : roots) std::printf(" %.4g", z.re);
    std::printf(
        "\n```\n\n## Threads\n\n"
        "FindRoots and the closed forms may run in any number of threads at once, on different arrays. What the "
        "iteration\n"
        "remembers between its steps belongs to the thread and is cleared at every start, so each call gives the bits\n"
        "that it gives in a program with one thread.\n");
}

}  // namespace

int main() {
    std::printf(
        "# Roots of polynomials: how far to trust FindRoots\n\n"
        "FindRoots works in long double and deflates each root it finds; the roots are rounded to double at the end. "
        "All\n"
        "numbers on this page are measured by `roots_table.cpp`, which prints the page (seeded random numbers, "
        "x86-64).\n\n");
    random_coefficients();
    std::printf("\n## Where it is not\n");
    wide_coefficients();
    small_roots();
    multiple_roots();
    ill_conditioned_roots();
    cubes_of_quadratics();
    how_to_tell();
    order_and_threads();
}
