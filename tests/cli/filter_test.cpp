// mensura filter

#include <numbers>

#include "program.h"

const std::string kSections = "@,@,@,@,@,@\n@,@,@,@,@,@\n@,@,@,@,@,@\n";

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
    write("sos.csv", "b0,b1,b2,a0,a1,a2\n" + filled(kSections, low_pass(40, 2)));
    const std::string what = "lowpass, butterworth, 6 poles";
    for (const auto &[call, wanted, line] :
         {std::tuple{"lowpass --cutoff 40Hz x.csv", filtered(x), what + ", -3 dB at 40 Hz"},
          {"lowpass --cutoff 40Hz --rate 360Hz <x.csv", filtered(x), what + ", -3 dB at 40 Hz"},
          {"lowpass --cutoff 40Hz --zero-phase x.csv", zero_phase(x), what + ", zero phase, -3 dB at 40 Hz"},
          {"--sos sos.csv x.csv", one_way(low_pass(40, 2), x), "3 sections of sos.csv"},
          {"--sos sos.csv --zero-phase <x.csv", zero_phase(x), "3 sections of sos.csv, zero phase"}}) {
        EXPECT_EQ(run(std::string("filter ") + call), 0) << err;
        EXPECT_EQ(out, table_of(wanted)) << call;
        EXPECT_EQ(err, "mensura: " + line + "\n");
    }
}

// The amplitude of a sine of 1 at an edge is 0.5^0.5, by least squares over whole periods away from the ends.
TEST_F(CommandLine, an_edge_is_the_half_power_point) {
    const double rate = 400;
    for (const auto &[call, edge] : {std::pair{"lowpass --cutoff 40", 40.0},
                                     {"lowpass --cutoff 40 --zero-phase --family elliptic --poles 5", 40.0},
                                     {"highpass --cutoff 40 --family bessel", 40.0},
                                     {"bandpass --from 40 --to 60 --poles 2 --zero-phase", 60.0},
                                     {"notch --from 40 --to 60 --poles 1", 40.0}}) {
        std::string table;
        for (int i = 0; i < 2000; ++i) table += std::to_string(std::sin(2 * std::numbers::pi * edge / rate * i)) + '\n';
        write("x.csv", table);
        EXPECT_EQ(run(std::string("filter ") + call + " --rate 400 --quiet x.csv"), 0);
        EXPECT_EQ(err, "");
        double re = 0, im = 0;
        const std::vector<double> y = column(rows(out), 0);
        ASSERT_EQ(y.size(), 2000u) << call;
        for (std::size_t i = 1000; i < 1400; ++i) {
            const double angle = 2 * std::numbers::pi * edge / rate * static_cast<double>(i);
            re += y[i] * std::cos(angle) / 200;
            im += y[i] * std::sin(angle) / 200;
        }
        EXPECT_NEAR(std::hypot(re, im), std::sqrt(0.5), 1e-6) << call;  // the digits of the table
    }
}

// SciPy 1.10.1: sosfiltfilt(sos, [(i * i) % 17 for i in range(40)], padtype=...)[[0, 20, 39]], padtype None for none
TEST_F(CommandLine, zero_phase_continues_a_record_like_scipy) {
    write("sos.csv", "0.2 0.4 0.2 1 -0.5 0.3\n1 -1 0.25 1 -0.9 0.2\n");
    std::string table;
    for (int i = 0; i < 40; ++i) table += std::to_string(i * i % 17) + '\n';
    write("x.csv", table);
    struct Case {
        const char *ends;
        double first, middle, last;
    };
    for (const Case &c : {Case{"", -4.567426101242944e-05, 8.287503919335663, 5.555818428111363},
                          {"--ends odd", -4.567426101242944e-05, 8.287503919335663, 5.555818428111363},
                          {"--ends even", -2.574251381549894, 8.287466660233882, 10.997596934129817},
                          {"--ends constant", -1.2871485279054524, 8.287485289784774, 8.27670768112059},
                          {"--ends none", -1.2871485277444163, 8.287456823507219, 10.156080038045697}}) {
        EXPECT_EQ(run(std::string("filter --sos sos.csv --zero-phase x.csv ") + c.ends), 0) << err;
        const std::vector<double> y = column(rows(out), 0);
        ASSERT_EQ(y.size(), 40u) << c.ends;
        EXPECT_NEAR(y[0], c.first, 1e-13) << c.ends;
        EXPECT_NEAR(y[20], c.middle, 1e-13) << c.ends;
        EXPECT_NEAR(y[39], c.last, 1e-13) << c.ends;
    }
    write("short.csv", "1\n2\n4\n");
    EXPECT_EQ(run(kLowpass + "--zero-phase short.csv"), 0);
    EXPECT_EQ(out, filled("@\n@\n@\n", zero_phase({1, 2, 4})));
    EXPECT_EQ(err, "mensura: short.csv: 3 samples are too few to extend the ends by 21: extended by 2\n");
}

TEST_F(CommandLine, leading_sections_give_the_bits_of_the_older_functions) {
    const std::vector<double> x = signal(300);
    std::string layout;
    for (std::size_t i = 0; i < x.size(); ++i) layout += "@\n";
    write("x.csv", filled(layout, x));
    for (const auto &[word, type] : {std::pair{"lowpass", ptLowPass}, {"highpass", ptHighPass}, {"notch", ptNotch}}) {
        TIIRFilter filter;
        initTIIRFilter(&filter, type, 40, 360);
        std::vector<double> y = x, both = x;
        for (double &sample : y) sample = IIRFilter(&filter, sample);
        initTIIRFilter(&filter, type, 40, 360);
        IIRFilterZeroPhase(&filter, both.data(), nullptr, static_cast<int>(both.size()));
        const std::string call =
            std::string("filter ") + word + " --leading-sections --cutoff 40 --rate 360 x.csv --force";
        EXPECT_EQ(run(call), 0) << err;
        EXPECT_EQ(out, filled(layout, y)) << call;
        EXPECT_HAS(err, "leading sections, ");
        EXPECT_EQ(run(call + " --zero-phase"), 0) << err;
        EXPECT_EQ(out, filled(layout, both)) << call;
    }
}

TEST_F(CommandLine, filters_that_cannot_be_used_give_no_data_unless_forced) {
    write("x.csv", "1\n2\n3\n");
    write("sum.csv", "1,0,0,1,-1,0\n");
    write("zero.csv", "0,0,0,1,0,0\n");
    const std::string narrow = "bandpass --leading-sections --cutoff 0.2 --bandwidth 0.01 --rate 1000 --poles 10 x.csv";
    expect_refusals("filter ",
                    {{narrow, "unusable: its gain is"},
                     {"--sos sum.csv x.csv", "sum.csv: unstable: the largest pole radius is 1; --force uses it"},
                     {"--sos zero.csv x.csv", "zero.csv: unusable: a section is all zero"}},
                    1);
    EXPECT_EQ(run("filter --force " + narrow), 0) << err;
    EXPECT_HAS(err, "unusable: ");
    EXPECT_EQ(run("filter --sos sum.csv x.csv --force"), 0) << err;
    EXPECT_EQ(out, "1\n3\n6\n");
    EXPECT_HAS(err, "starts from rest");
    EXPECT_EQ(run("filter --sos sum.csv x.csv --force --zero-phase"), 1);
    EXPECT_HAS(err, "zero phase is not for a filter with a pole at z = 1");
}

// The cut-off is that of the line "rate, last bin above the threshold, samples, largest bin" that the library prints.
// 1 / (1 / 49) is not 49 in doubles.  Lines of 1 and 1/2 lie at a threshold of 0.5 but for rounding.
TEST_F(CommandLine, automatic_cutoff_is_that_of_the_library) {
    for (const auto &[n, ratio] : {std::pair{500, "0.1"},
                                   {500, "0.9"},
                                   {333, "0.5"},
                                   {7, "0.5"},
                                   {3001, "1e-3"},
                                   {4096, "0.01"},
                                   {1000, "0.5"}}) {
        SCOPED_TRACE(n);
        std::vector<double> x = signal(static_cast<std::size_t>(n));
        for (std::size_t i = 0; n == 1000 && i < x.size(); ++i)
            x[i] = std::sin(0.0628318530717958648 * static_cast<double>(i)) +
                   0.5 * std::sin(0.125663706143591730 * static_cast<double>(i));
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
        remark << "mensura: column 1: lowpass, leading sections, zero phase, cut-off found: " << cutoff << " Hz";
        if (cutoff > 24.5) remark << ", clamped to half the sampling rate, 24.5 Hz";
        EXPECT_EQ(err, remark.str() + "\n");
    }
    write("still.csv", "0\n0\n0\n0\n");
    EXPECT_EQ(run("filter lowpass --rate 360 still.csv --auto 0.1"), 0);
    EXPECT_HAS(err, "column 1: the spectrum has no peak");
    EXPECT_EQ(shell("seq 50001 | $M filter lowpass --rate 360 --quiet --auto 0.15 >x"), 0);
    EXPECT_EQ(err.find("in a time that grows"), std::string::npos) << err;
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
    write("five.csv", "1,0,0,1,0\n");
    write("two.csv", "1,0,0,2,0,0\n");
    expect_refusals("filter <x.csv ", {{"lowpass --cutoff 40bar --rate 360", "unknown unit \"bar\""},
                                       {"lopass --cutoff 4 --rate 36", "none of lowpass"},
                                       {"--cutoff 4 --rate 36", "TYPE"},
                                       {"lowpass --cutoff 4 --rate 36 --family x", "none of butterworth"},
                                       {"lowpass --cutoff 180 --rate 360", "below 180 Hz"},
                                       {"bandpass --cutoff 40 --rate 360 --bandwidth 0.2kHz", "below 180 Hz"},
                                       {"notch --cutoff 40 --rate 360", "notch needs its edges"},
                                       {"lowpass --rate 360", "--cutoff"},
                                       {"lowpass --cutoff 4 --rate 0", "0 Hz is not above 0"},
                                       {"lowpass --cutoff 4 --rate 36 --poles 2.5", "2.5 is not a whole number"},
                                       {"lowpass --cutoff 4 --rate 36 --q 1", "--q"},
                                       {"lowpass --cutoff 4 --rate 36 --ends odd", "--ends is for --zero-phase"},
                                       {"lowpass --sos two.csv --cutoff 4", "--sos"},
                                       {"lowpass x.csv --sos two.csv", "takes the place of TYPE"},
                                       {"--sos five.csv", "five.csv:1: has 5 numbers; a section has 6"},
                                       {"--sos two.csv", "two.csv:1:4: a0 is 2"},
                                       {"lowpass --auto 0.1 --cutoff 4 --rate 36", "--auto"}});
    expect_refused("fliter", "--help");
}

TEST_F(CommandLine, input_from_a_terminal_gets_help) {
    if (shell("timeout 20 script -qec true /dev/null") != 0) GTEST_SKIP() << "no terminal here: " << out << err;
    EXPECT_EQ(shell("timeout 20 script -qec \"$M " + kLowpass + "\" /dev/null"), 2);
    EXPECT_HAS(out, "mensura filter [OPTIONS] [TYPE] [FILE]");
}
