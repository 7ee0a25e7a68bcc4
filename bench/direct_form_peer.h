// The loops that a user would write: direct form I in two layouts, and the transposed direct form II over a block.  Compiled with -march=MENSURA_PEER_ARCH, by default
// native.
#pragma once

#include <cstddef>

namespace peer {

constexpr int kSections = 3;

// A record for each section: its coefficients and its state.
struct Section {
    double b0, b1, b2, a1, a2;
    double x1, x2, y1, y2;
};

// An array for each coefficient and each state variable.
struct Arrays {
    double b0[kSections], b1[kSections], b2[kSections], a1[kSections], a2[kSections];
    double x1[kSections], x2[kSections], y1[kSections], y2[kSections];
};

double run_sections(Section *sections, int count, double x);
double run_arrays(Arrays *arrays, int count, double x);

// A section of the transposed direct form II, with its state.
struct Transposed {
    double b0, b1, b2, a1, a2;
    double s1, s2;
};

void run_transposed(Transposed (&sections)[kSections], const double *x, double *y, std::size_t n);

}  // namespace peer
