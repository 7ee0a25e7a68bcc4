// FindRoots against the companion-matrix QR of GSL (double precision).

#include <gsl/gsl_poly.h>
#include <mensura/roots.h>

#include <complex>
#include <memory>
#include <random>
#include <vector>

#include "compare.h"

namespace {

constexpr int kPolynomials = 32;

using Coefficients = std::vector<double>;  // highest power first
using Roots = std::vector<std::complex<double>>;

std::vector<Coefficients> random_polynomials(int degree) {
    std::mt19937_64 bits(20);
    std::uniform_real_distribution<double> uniform(-1, 1);
    std::vector<Coefficients> polynomials(kPolynomials, Coefficients(static_cast<std::size_t>(degree) + 1));
    for (auto &p : polynomials)
        for (auto &c : p) c = uniform(bits);
    return polynomials;
}

Roots ours(Coefficients p) {
    const int degree = static_cast<int>(p.size()) - 1;
    std::vector<CplxD> found(p.size());
    FindRoots(degree, p.data(), found.data());
    Roots roots;
    for (int i = 0; i < degree; ++i)
        roots.emplace_back(found[static_cast<std::size_t>(i)].re, found[static_cast<std::size_t>(i)].im);
    return roots;
}

struct FreeWorkspace {
    void operator()(gsl_poly_complex_workspace *w) const { gsl_poly_complex_workspace_free(w); }
};

struct Gsl {
    std::unique_ptr<gsl_poly_complex_workspace, FreeWorkspace> workspace;
    std::size_t size;
    std::vector<double> packed;

    explicit Gsl(std::size_t n) : workspace(gsl_poly_complex_workspace_alloc(n)), size(n), packed(2 * n) {}

    void solve(const Coefficients &ascending) {
        gsl_poly_complex_solve(ascending.data(), size, workspace.get(), packed.data());
    }

    Roots roots() const {
        Roots r;
        for (std::size_t i = 0; i + 1 < size; ++i) r.emplace_back(packed[2 * i], packed[2 * i + 1]);
        return r;
    }
};

using Extended = std::complex<long double>;

// The largest |p(z)| / sum |c_k| |z|^k over the roots z: the relative change of the coefficients that makes z exact.
double backward_error(const Coefficients &p, const Roots &roots) {
    long double worst = 0;
    for (const auto &root : roots) {
        Extended value = 0;
        long double scale = 0;
        for (const double c : p) {
            value = value * Extended(root) + Extended(c);
            scale = scale * std::abs(Extended(root)) + std::abs(static_cast<long double>(c));
        }
        worst = std::max(worst, std::abs(value) / scale);
    }
    return static_cast<double>(worst);
}

// max |p - q| / max |p|, q being the polynomial with the given roots and p's leading coefficient.
double rebuilding_error(const Coefficients &p, const Roots &roots) {
    std::vector<Extended> rebuilt{p[0]};
    for (const auto &root : roots) {
        rebuilt.emplace_back(0);
        for (std::size_t k = rebuilt.size() - 1; k > 0; --k) rebuilt[k] -= Extended(root) * rebuilt[k - 1];
    }
    long double error = 0, size = 0;
    for (std::size_t k = 0; k < p.size(); ++k) {
        error = std::max(error, std::abs(rebuilt[k] - Extended(p[k])));
        size = std::max(size, std::abs(static_cast<long double>(p[k])));
    }
    return static_cast<double>(error / size);
}

struct Errors {
    double backward = 0, rebuilding = 0;

    void include(const Coefficients &p, const Roots &roots) {
        backward = std::max(backward, backward_error(p, roots));
        rebuilding = std::max(rebuilding, rebuilding_error(p, roots));
    }
};

// (x - 1) (x - 2) ... (x - degree)
Coefficients wilkinson(int degree) {
    Coefficients p{1};
    for (int root = 1; root <= degree; ++root) {
        p.push_back(0);
        for (std::size_t j = p.size() - 1; j > 0; --j) p[j] -= root * p[j - 1];
    }
    return p;
}

void compare_with_gsl(benchmark::State &state, const std::vector<Coefficients> &polynomials) {
    std::vector<Coefficients> ascending(polynomials);
    for (auto &p : ascending) std::ranges::reverse(p);
    Gsl gsl(polynomials[0].size());
    std::vector<CplxD> roots(polynomials[0].size());

    bench::compare(
        state, static_cast<double>(polynomials.size()),
        [&] {
            for (Coefficients p : polynomials) FindRoots(static_cast<int>(p.size()) - 1, p.data(), roots.data());
        },
        [&] {
            for (const auto &p : ascending) gsl.solve(p);
        });

    Errors our_errors, gsl_errors;
    for (std::size_t i = 0; i < polynomials.size(); ++i) {
        gsl.solve(ascending[i]);
        our_errors.include(polynomials[i], ours(polynomials[i]));
        gsl_errors.include(polynomials[i], gsl.roots());
    }
    state.counters["ours_backward"] = our_errors.backward;
    state.counters["peer_backward"] = gsl_errors.backward;
    state.counters["ours_rebuilt"] = our_errors.rebuilding;
    state.counters["peer_rebuilt"] = gsl_errors.rebuilding;
}

void FindRoots_against_gsl(benchmark::State &state) {
    compare_with_gsl(state, random_polynomials(static_cast<int>(state.range(0))));
}
MENSURA_COMPARE(FindRoots_against_gsl, 40)->Arg(20)->Arg(40);

void FindRoots_of_Wilkinson_against_gsl(benchmark::State &state) {
    compare_with_gsl(state, {wilkinson(static_cast<int>(state.range(0)))});
}
MENSURA_COMPARE(FindRoots_of_Wilkinson_against_gsl, 10)->Arg(100);

}  // namespace

BENCHMARK_MAIN();
