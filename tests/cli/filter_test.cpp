// mensura filter

#include "program.h"

// Two columns alike, each with a filter of its own, at 360 Hz; the times are rounded to microseconds.
TEST_F(CommandLine, filter_gives_the_samples_of_the_library) {
    const std::vector<double> x = signal(500);
    std::string layout = "time_s,a,b\n";
    for (std::size_t i = 0; i < x.size(); ++i) layout += std::to_string(static_cast<double>(i) / 360) + ",@,@\n";
    const auto table_of = [&layout](const std::vector<double> &column) {
        std::vector<double> both;
        for (const double number : column) both.insert(both.end(), 2, number);
        return filled(layout, both);
    };
    write("x.csv", table_of(x));
    for (const auto &[options, wanted] : {std::pair{"--cutoff 40Hz x.csv", filtered(x)},
                                          {"--cutoff 40Hz --rate 360Hz <x.csv", filtered(x)},
                                          {"--cutoff 40Hz --zero-phase x.csv", zero_phase(x)}}) {
        EXPECT_EQ(run(std::string("filter lowpass ") + options), 0) << err;
        EXPECT_EQ(out, table_of(wanted)) << options;
    }
}

// The cut-off is that of the line "rate, last bin above the threshold, samples, largest bin" that the library prints.
// 1 / (1 / 49) is not 49 in doubles.
TEST_F(CommandLine, automatic_cutoff_is_that_of_the_library) {
    for (const auto &[n, ratio] : {std::pair{500, "0.1"}, {500, "0.9"}, {333, "0.5"}, {7, "0.5"}}) {
        SCOPED_TRACE(n);
        const std::vector<double> x = signal(static_cast<std::size_t>(n));
        std::string layout;
        for (int i = 0; i < n; ++i) layout += "@\n";
        write("x.csv", filled(layout, x));
        EXPECT_EQ(run(std::string("filter lowpass --rate 49 x.csv --auto ") + ratio), 0);
        std::vector<double> y = x;
        testing::internal::CaptureStdout();
        dataZeroPhaseFilter(y.data(), n, 1.0 / 49, std::stod(ratio), 0);
        double rate = 0, last = 0;
        char comma = 0;
        std::istringstream(testing::internal::GetCapturedStdout()) >> rate >> comma >> last;
        ASSERT_EQ(comma, ',');
        EXPECT_EQ(out, filled(layout, y));
        const double cutoff = 15 * last * rate / (n - 1);
        std::ostringstream remark;
        remark << "mensura: column 1: cut-off found: " << cutoff << " Hz";
        if (cutoff > 24.5) remark << ", clamped to half the sampling rate, 24.5 Hz";
        EXPECT_EQ(err, remark.str() + "\n");
    }
    write("still.csv", "0\n0\n0\n0\n");
    EXPECT_EQ(run("filter lowpass --rate 360 still.csv --auto 0.1"), 0);
    EXPECT_HAS(err, "column 1: the spectrum has no peak");
}

TEST_F(CommandLine, filter_takes_the_columns_asked_for) {
    const std::vector<double> x = signal(6), y = filtered(x);
    const std::string layout = "a,b,\"c, d\"\n1,@,3.00\n2,@,4\n3,@,5\n3,@,5\n3,@,5\n9,@,1e5\n";
    write("x.csv", filled(layout, x));
    for (const char *columns : {"x.csv --column b", "--column 2 x.csv", "--column=b --column 2 -- x.csv"}) {
        EXPECT_EQ(run(kLowpass + columns), 0) << columns << ": " << err;
        EXPECT_EQ(out, filled(layout, y)) << columns;
    }
    expect_refused(kLowpass + "x.csv --column=e", "x.csv: no column \"e\"; it has the columns 1 to 3: a, b, c, d");
}

TEST_F(CommandLine, wrong_calls_are_refused_in_one_line) {
    write("x.csv", "1\n2\n");
    expect_refusals("filter <x.csv ", {{"lowpass --cutoff 40bar --rate 360", "unknown unit \"bar\""},
                                       {"lopass --cutoff 4 --rate 36", "none of lowpass"},
                                       {"lowpass --cutoff 4 --rate 36 --family x", "none of butterworth"},
                                       {"lowpass --cutoff 180 --rate 360", "below 180 Hz"},
                                       {"bandpass --cutoff 40 --rate 360 --bandwidth 0.2kHz", "below 180 Hz"},
                                       {"lowpass --rate 360", "--cutoff"},
                                       {"lowpass --cutoff 4 --rate 0", "0 Hz is not above 0"},
                                       {"lowpass --cutoff 4 --rate 36 --poles 2.5", "2.5 is not a whole number"},
                                       {"lowpass --cutoff 4 --rate 36 --q 1", "--q"},
                                       {"lowpass --auto 0.1 --cutoff 4 --rate 36", "--auto"}});
    expect_refused("fliter", "--help");
}

TEST_F(CommandLine, input_from_a_terminal_gets_help) {
    if (shell("timeout 20 script -qec true /dev/null") != 0) GTEST_SKIP() << "no terminal here: " << out << err;
    EXPECT_EQ(shell("timeout 20 script -qec \"$M " + kLowpass + "\" /dev/null"), 2);
    EXPECT_HAS(out, "mensura filter [OPTIONS] TYPE [FILE]");
}
