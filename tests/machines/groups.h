// Every exported function at work on seeded data: machines compare what comes out, and threads run it side by side.
#pragma once

#include <span>
#include <vector>

using Results = std::vector<double>;

struct Group {
    const char *name;
    enum class Bits {
        kExact,  // adds, multiplies, divides, takes square roots, has tables: the same on every machine
        kLibm,   // elementary functions: the same wherever libm's results are
        kRoots   // long double too: the same wherever that has the same precision, else up to the order of the roots
    } bits;
    void (*run)(Results &results);  // appends to results
    bool shared = false;            // works on registers of the whole process: one call at a time
};

extern const std::span<const Group> kAllGroups;
