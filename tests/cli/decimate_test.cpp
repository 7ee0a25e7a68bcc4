// mensura decimate

#include <numbers>

#include "program.h"

// A column for each sine, of frequencies in units of the new Nyquist frequency; three pass and the others would fold.
// The low-pass has come to rest after 600 of the kept rows; a sample that is left of a sine is at most its amplitude.
TEST_F(CommandLine, decimate_passes_0_8_of_the_new_band_and_leaves_no_alias) {
    const std::vector<double> sines{0.01, 0.5, 0.8, 1.0001, 1.03, 1.2, 1.5, 1.999};
    constexpr std::size_t kPassed = 3, kRest = 600, kRows = 1400;
    for (const auto &[factor, option] : {std::pair{2, ""}, {3, ""}, {10, ""}, {10, " --zero-phase"}, {37, ""}}) {
        const std::string call = "decimate " + std::to_string(factor) + option;
        std::string layout;
        std::vector<double> x;
        for (std::size_t i = 0; i < kRows * static_cast<std::size_t>(factor); ++i) {
            layout += "@,@,@,@,@,@,@,@\n";
            for (const double sine : sines)
                x.push_back(std::sin(std::numbers::pi * sine / factor * static_cast<double>(i)));
        }
        write("x.csv", filled(layout, x));
        EXPECT_EQ(run(call + " --quiet x.csv"), 0) << err;
        EXPECT_EQ(err, "");
        const auto table = rows(out);
        ASSERT_EQ(table.size(), kRows) << call;
        for (std::size_t k = 0; k < sines.size(); ++k) {
            double largest = 0, re = 0, im = 0;
            constexpr std::size_t kUsed = 200;  // whole periods of the sines that pass
            for (std::size_t i = kRest; i < kRest + kUsed; ++i) {
                const double angle = std::numbers::pi * sines[k] * static_cast<double>(i), y = table[i][k];
                re += y * std::cos(angle) * 2 / kUsed;
                im += y * std::sin(angle) * 2 / kUsed;
                largest = std::max(largest, std::abs(y));
            }
            if (k < kPassed)
                EXPECT_NEAR(20 * std::log10(std::hypot(re, im)), 0, 0.1001) << call << ' ' << sines[k];
            else
                EXPECT_LT(largest, 1e-4) << call << ' ' << sines[k];
        }
    }
}

TEST_F(CommandLine, decimate_keeps_every_row_with_its_time_and_says_by_how_much_it_delays) {
    write("x.csv", "# c\ntime_ms,x,note\n0,0,a\n1,0,b\n2,,c\n3,0,d\n# e\n4,,f\n");
    EXPECT_EQ(run("decimate 2 x.csv"), 0) << err;
    EXPECT_EQ(rows(out).size(), 3u);
    EXPECT_TRUE(out.starts_with("# c\ntime_ms,x,note\n0,0,a\n2,,c\n# e\n4,,f\n")) << out;
    EXPECT_HAS(err, "1000 Hz to 500 Hz: lowpass, elliptic, 9 poles, within 0.1 dB to 200 Hz, -80 dB from 250 Hz");
    EXPECT_EQ(run("decimate 1 x.csv --quiet"), 0) << err;
    EXPECT_EQ(out, read("x.csv"));

    EXPECT_EQ(shell("seq 1000000 | $M decimate 1000"), 0) << err;  // a ramp lags by the delay that is told
    const std::size_t at = err.find("signals by ");
    ASSERT_NE(at, std::string::npos) << err;
    const std::vector<double> ramp = column(rows(out), 0);
    ASSERT_EQ(ramp.size(), 1000u);
    EXPECT_NEAR(999001 - ramp.back(), std::strtod(err.c_str() + at + 11, nullptr), 1) << err;

    write("hole.csv", "t,x\n0,1\n1,1\n2,1\n9,1\n10,1\n");
    expect_refusals("decimate ",
                    {{"0 x.csv", "FACTOR 0: must lie between 1 and "},
                     {"1.5 x.csv", "1.5 is not a whole number"},
                     {"2 hole.csv --gaps error -o y.csv", "hole.csv:5:1: the times are not evenly spaced here"}});
}
