#include <mensura/sos.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "arguments.h"
#include "quadratic.h"

int mensura_sos_pole_radius(const double *sos, int sections, double *radius) {
    using namespace mensura::sos;
    if (const int code = check_sections(sos, sections)) return code;
    if (!radius) return MENSURA_SOS_NULL;
    double largest = 0;
    for (const double *s = sos; s != end_of(sos, sections); s += kNumbers) {
        const Quadratic q = denominator(s);
        if (!std::isfinite(q.c1) || !std::isfinite(q.c2)) {
            *radius = std::numeric_limits<double>::quiet_NaN();
            return 0;
        }
        const Roots poles = roots(q);
        for (std::size_t i = 0; i < poles.count; ++i) largest = std::max(largest, poles.z[i].modulus());
    }
    *radius = largest;
    return 0;
}
