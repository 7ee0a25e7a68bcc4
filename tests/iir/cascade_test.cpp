// Filtering sample by sample.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>

#include "designs.h"
#include "support/expect.h"
#include "support/noise.h"
#include "support/reference/iir.h"

using namespace designs;

TEST(IIRFilter, runs_each_section_and_starts_as_if_its_first_input_had_lasted_for_ever) {
    support::Noise noise(3);
    for (const int sections : {INT_MIN, 0, 1, 2, 3, 49, 50, 60, INT_MAX}) {  // section 0 always runs, 50 at most
        SCOPED_TRACE(testing::Message() << sections << " sections");
        TIIRFilter f{};
        fill_with_noise(f, noise);
        f.Coeffs.a0[0] = 0.5;
        f.Coeffs.NumSections = sections;
        TIIRFilter expected = f;
        for (int t = 0; t < 40; ++t) {
            if (t == 30) f.Primed = expected.Primed = 0;
            const double x = t == 20 ? NAN : noise();
            EXPECT_SAME_BITS(IIRFilter(&f, x), reference::filter(expected, x)) << "at sample " << t;
        }
        EXPECT_EQ(f.Primed, 1);
        EXPECT_SAME_BITS(registers(f), registers(expected));
    }
}
