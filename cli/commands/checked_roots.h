// The roots of a polynomial, checked by multiplying them out again.
#pragma once

#include <mensura/roots.h>

#include <cstddef>
#include <limits>
#include <vector>

namespace cli {

struct CheckedRoots {
    std::vector<CplxD> roots = {};
    // What the roots multiplied out give for the coefficient that they fit worst.
    long double misfit = std::numeric_limits<long double>::infinity();  // relative to its bound
    std::size_t power = 0;                                              // its power of x
    long double rebuilt = 0;

    bool fits() const;
};

// The roots of c[0] x^N + ... + c[N], c[0] not 0.  Those that do not fit are sought again at other scales of x, with
// remarks on stderr; fails if there are none.
CheckedRoots find_checked_roots(std::vector<double> c);

// |p(z)| / sum |c_k| |z|^k
double residual(std::vector<double> c, const CplxD &root);

}  // namespace cli
