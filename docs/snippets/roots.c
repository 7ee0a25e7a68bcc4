// docs/roots.md: roots that can be trusted are told from others, and small roots are found by scaling.
#include "check.h"
#include "find_scaled.h"
#include "roots_hold.h"

int main(void) {
    const double P[] = {1, -6, 11, -6};                 /* (x - 1) (x - 2) (x - 3) */
    const double small[] = {1, -6e-20, 11e-40, -6e-60}; /* the same at 1e-20 */
    const CplxD right[] = {{3, 0}, {2, 0}, {1, 0}}, doubled[] = {{3, 0}, {2, 0}, {2, 0}},
                off[] = {{3, 0}, {2, 0}, {1.001, 0}};
    CHECK(roots_hold(3, P, right, 1e-9));
    CHECK(!roots_hold(3, P, doubled, 1e-9));
    CHECK(!roots_hold(3, P, off, 1e-9));

    CplxD z[3];
    CHECK(find_scaled(3, small, z) == 3);
    CHECK(roots_hold(3, small, z, 1e-9));
    return 0;
}
