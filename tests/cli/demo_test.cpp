// mensura demo

#include <mensura/iir.h>

#include <cmath>
#include <numbers>

#include "program.h"

TEST_F(CommandLine, demo_shows_the_electrocardiogram_both_ways) {
    ASSERT_EQ(run("demo -o ecg.csv"), 0) << err;
    EXPECT_EQ(err, "");
    const auto table = rows(read("ecg.csv"));
    const std::vector<double> raw = column(table, 1);
    ASSERT_EQ(raw.size(), 10800u);
    EXPECT_EQ(column(table, 2), filtered(raw, 50));
    EXPECT_EQ(column(table, 3), zero_phase(raw, 50));

    // At DC the default low-pass lags by 4 cos 15 deg + 2 cos 45 deg, over 2 fs tan(pi fc / fs); the peaks are slow
    // enough that the whole does to 0.1 ms.
    const std::size_t at = out.find("delay (ms)");
    ASSERT_NE(at, std::string::npos) << out;
    std::istringstream delays(out.substr(at + 10));
    double before = 1, later = 0, zero = 1;
    delays >> before >> later >> zero;
    EXPECT_EQ(before, 0);
    EXPECT_NEAR(later, 5.27792 / 0.72 / std::tan(std::numbers::pi * 50 / 360), 0.1);
    EXPECT_NEAR(zero, 0, 0.1);
    EXPECT_EQ(shell("xmllint --noout ecg.svg && grep -o 'zero-phase' ecg.svg | wc -l"), 0) << err;
    EXPECT_GE(std::strtol(out.c_str(), nullptr, 10), 2) << "in both panels";
}
