// A bank does what its filters do one by one.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

#include "designs.h"
#include "support/expect.h"
#include "support/noise.h"
#include "support/reference/iir.h"

using namespace designs;

// A bank with memory beside it.  An output may feed a later input or a filter, and a filter an input.
struct Memory {
    TIIRFilterBank bank;
    double in[16], separate[16];
};
constexpr int kPlaces = 6;
static double *in(Memory &m, int place) { return place == 5 ? m.bank.Filters[2].RegY1 : m.in + 1; }
static double *out(Memory &m, int place) {
    double *const places[kPlaces] = {m.separate, m.in + 1, m.in + 2, m.in, m.bank.Filters[3].RegX1, m.separate};
    return places[place];
}

TEST(IIRFilters, equals_iir_filter_channel_by_channel) {
    std::vector<Memory> all(3);
    Memory &start = all[0], &banked = all[1], &single = all[2];
    support::Noise noise(11);
    for (TIIRFilter &f : start.bank.Filters) fill_with_noise(f, noise);
    for (int sections = 1; sections <= MAX_IIR_SECTIONS; ++sections)
        for (int count = -1; count <= 10; ++count)
            for (int place = 0; place < kPlaces; ++place) {
                SCOPED_TRACE(testing::Message() << sections << " sections, " << count << " channels, place " << place);
                const auto rarely = [&] { return count % 2 != 0 && noise.one_in(12); };
                start.bank.Count = count;
                for (TIIRFilter &f : start.bank.Filters) {
                    f.Coeffs.NumSections = rarely() ? noise.below(60) : sections;
                    f.Primed = rarely() ? 0 : 1;
                    std::ranges::fill(f.Coeffs.a0, 1.0);
                    if (rarely()) f.Coeffs.a0[noise.below(sections)] = 0.3;
                }
                std::ranges::generate(start.in, std::ref(noise));
                if (noise.one_in(8)) start.in[3] = NAN;
                banked = single = start;
                for (int t = 0; t < 2; ++t) {
                    EXPECT_EQ(IIRFilters(&banked.bank, in(banked, place), out(banked, place)), count);
                    reference::filter_channels(single.bank, in(single, place), out(single, place));
                }
                EXPECT_SAME_BITS(banked.separate, single.separate);
                EXPECT_SAME_BITS(banked.in, single.in);
                for (std::size_t i = 0; i < 10; ++i)
                    EXPECT_SAME_BITS(registers(banked.bank.Filters[i]), registers(single.bank.Filters[i])) << i;
                ASSERT_EQ(std::memcmp(&banked, &single, sizeof banked), 0);  // nor has anything else changed
            }
}
