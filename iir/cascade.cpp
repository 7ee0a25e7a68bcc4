// Running a filter one sample at a time.

#include "direct_form.h"

using namespace mensura::iir;

double IIRFilter(TIIRFilter *filter, double x) {
    TIIRFilter &f = *filter;
    if (f.Primed == 0) [[unlikely]]
        prime(f, x);
    return run_sections(f.Coeffs, f, 0, sections_to_run(f.Coeffs), x);
}
