// Running a filter one sample at a time.

#include "direct_form.h"

using namespace mensura::iir;

namespace {

// Registers as if x had been the input for ever and every section had passed it unchanged.
[[gnu::noinline, gnu::cold]] void prime(TIIRFilter &f, double x) {
    for (double *registers : {f.RegX1, f.RegX2, f.RegY1, f.RegY2}) std::fill_n(registers, MAX_IIR_SECTIONS, x);
    f.Primed = 1;
}

}  // namespace

double IIRFilter(TIIRFilter *filter, double x) {
    TIIRFilter &f = *filter;
    if (f.Primed == 0) [[unlikely]]
        prime(f, x);
    return run_sections(f.Coeffs, f, 0, sections_to_run(f.Coeffs), x);
}
