// The roots of a polynomial, checked by multiplying them out again.
#pragma once

#include <mensura/roots.h>

#include <cstddef>
#include <limits>
#include <vector>

namespace cli {

struct CheckedRoots {
    std::vector<CplxD> roots = {};
    // The coefficient that the roots fit worst when they are multiplied out.
    long double misfit = std::numeric_limits<long double>::infinity();  // its error relative to its bound
    std::size_t power = 0;                                              // its power of x
    long double rebuilt = 0;                                            // what the roots give for it

    bool fits() const;
};

// The roots of c[0] x^N + ... + c[N], c[0] not 0.  If they do not fit, they are searched again at other scales of x,
// with remarks on stderr.  Fails if no roots are found at all.
CheckedRoots find_checked_roots(std::vector<double> c);

// |p(z)| / sum |c_k| |z|^k
double residual(std::vector<double> c, const CplxD &root);

}  // namespace cli
