// The two iterations of the root finder, with the state that they keep between steps made explicit.
#pragma once

#include "roots_internal.h"

namespace mensura::roots {

enum Flag { kRunning = 0, kAbandon = 1, kStepNegligible = 2, kNoProgress = 3, kImproved = 4 };

inline constexpr int kNumAngles = 180;
inline constexpr real kHuge = 1e200;  // a double widened, like every decimal constant here

// What the iterations remember from one call to the next.  Each thread has one; a start (Pass 0, Step 0) clears it.
struct IterationMemory {
    real previous_value = 0;    // P(s) at the previous step of the real stage
    int damping_restarted = 0;  // the step of the quadratic stage from which damping counts
};
IterationMemory &this_threads_memory();

int quadratic_stage(IterationMemory &memory, int pass, const real *P, real *QP, real *KQ, real *QK, int N, real *TUV,
                    int *flag);
int real_stage(IterationMemory &memory, int pass, const real *P, real *QPR, real *KR, real *QK, int N, real *S);

void divide_by_quadratic(const real *P, int N, const real *TUV, real *R);

}  // namespace mensura::roots
