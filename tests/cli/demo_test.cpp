// mensura demo

#include <mensura/iir.h>

#include <cmath>
#include <numbers>

#include "program.h"

namespace {

std::vector<double> column(const std::vector<std::vector<double>> &table, std::size_t index) {
    std::vector<double> values;
    for (const std::vector<double> &row : table) values.push_back(row.at(index));
    return values;
}

TEST_F(Tool, demo_shows_the_electrocardiogram_both_ways) {
    ASSERT_EQ(run("demo -o ecg.csv"), 0) << err;
    EXPECT_EQ(err, "");
    const auto table = rows(read("ecg.csv"));
    std::vector<double> raw = column(table, 1), one_way = raw;
    ASSERT_EQ(raw.size(), 10800u);
    TIIRFilter forward, both;
    initTIIRFilter(&forward, ptLowPass, 50, 360);
    both = forward;
    for (double &x : one_way) x = IIRFilter(&forward, x);
    IIRFilterZeroPhase(&both, raw.data(), nullptr, static_cast<int>(raw.size()));
    EXPECT_EQ(column(table, 2), one_way);
    EXPECT_EQ(column(table, 3), raw);

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

}  // namespace
