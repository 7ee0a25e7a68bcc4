// The lines that failures print.

#include <cstdio>

#include "state.h"

namespace mensura::ode {

int report(Result result) {
    if (result == kTimeError) std::puts("rkf45: time set error!");
    if (result == kOverflow) std::puts("solve failure, data over big!");
    if (result == kStepLimit) std::puts("forcefully terminate!");
    return result;
}

}  // namespace mensura::ode
