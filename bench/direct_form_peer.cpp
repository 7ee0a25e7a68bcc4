#include "direct_form_peer.h"

namespace peer {

double run_sections(Section *sections, int count, double x) {
    for (int k = 0; k < count; ++k) {
        Section &s = sections[k];
        const double y = s.b0 * x + s.b1 * s.x1 + s.b2 * s.x2 - s.a1 * s.y1 - s.a2 * s.y2;
        s.x2 = s.x1;
        s.x1 = x;
        s.y2 = s.y1;
        s.y1 = y;
        x = y;
    }
    return x;
}

double run_arrays(Arrays *arrays, int count, double x) {
    Arrays &a = *arrays;
    for (int k = 0; k < count; ++k) {
        const double y = a.b0[k] * x + a.b1[k] * a.x1[k] + a.b2[k] * a.x2[k] - a.a1[k] * a.y1[k] - a.a2[k] * a.y2[k];
        a.x2[k] = a.x1[k];
        a.x1[k] = x;
        a.y2[k] = a.y1[k];
        a.y1[k] = y;
        x = y;
    }
    return x;
}

// All sections sample by sample, so that they overlap in time; the compiler fuses products and sums.
void run_transposed(Transposed (&sections)[kSections], const double *x, double *y, std::size_t n) {
    Transposed s[kSections];
    for (int k = 0; k < kSections; ++k) s[k] = sections[k];
    for (std::size_t i = 0; i < n; ++i) {
        double u = x[i];
        for (Transposed &section : s) {
            const double v = section.b0 * u + section.s1;
            section.s1 = section.b1 * u - section.a1 * v + section.s2;
            section.s2 = section.b2 * u - section.a2 * v;
            u = v;
        }
        y[i] = u;
    }
    for (int k = 0; k < kSections; ++k) sections[k] = s[k];
}

}  // namespace peer
