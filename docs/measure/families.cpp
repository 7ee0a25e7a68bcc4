// The table of the families for docs/measure/cascade.py.
#include "../../iir/proto/limits.h"

// Name and largest order of a family; null for a code that is none.
extern "C" const char *measure_family(int code, int *max_poles) {
    const mensura::iir::Family *const family = mensura::iir::find_family(code);
    if (family == nullptr) return nullptr;
    *max_poles = family->max_poles;
    return family->name;
}
