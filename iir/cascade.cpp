// Running a filter one sample at a time.

#include "direct_form.h"

using namespace mensura::iir;

double IIRFilter(TIIRFilter *filter, double x) { return run_filter(*filter, x); }
