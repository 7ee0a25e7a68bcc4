// mensura filter

#include "program.h"

namespace {

// Two columns alike, each with a filter of its own, at 360 Hz; the times are rounded to microseconds.
TEST_F(Tool, filter_gives_the_samples_of_the_library) {
    std::vector<double> x = signal(500), zero_phase(x.size()), automatic = x;
    std::string layout = "time_s,a,b\n";
    for (std::size_t i = 0; i < x.size(); ++i) layout += std::to_string(static_cast<double>(i) / 360) + ",@,@\n";
    const auto table_of = [&layout](const std::vector<double> &column) {
        std::vector<double> both;
        for (const double number : column) both.insert(both.end(), 2, number);
        return filled(layout, both);
    };
    TIIRFilter filter;
    initTIIRFilter(&filter, ptLowPass, 40, 360);
    IIRFilterZeroPhase(&filter, x.data(), zero_phase.data(), 500);
    dataZeroPhaseFilter(automatic.data(), 500, 1.0 / 360, 0.1, 0);
    write("x.csv", table_of(x));
    for (const auto &[options, wanted] : {std::pair{"--cutoff 40Hz x.csv", filtered(x)},
                                          {"--cutoff 40Hz --rate 360Hz <x.csv", filtered(x)},
                                          {"--cutoff 40Hz --zero-phase x.csv", zero_phase},
                                          {"--auto 0.1 x.csv", automatic}}) {
        EXPECT_EQ(run(std::string("filter lowpass ") + options), 0) << err;
        EXPECT_EQ(out, table_of(wanted)) << options;
    }
    EXPECT_NE(err.find("cut-off found"), std::string::npos) << err;
}

TEST_F(Tool, filter_takes_the_columns_asked_for) {
    const std::vector<double> x = signal(6), y = filtered(x);
    const std::string layout = "a,b,\"c, d\"\n1,@,3.00\n2,@,4\n3,@,5\n3,@,5\n3,@,5\n9,@,1e5\n";
    write("x.csv", filled(layout, x));
    for (const char *columns : {"x.csv --column b", "--column 2 x.csv", "--column=b --column 2 -- x.csv"}) {
        EXPECT_EQ(run(kLowpass + columns), 0) << columns << ": " << err;
        EXPECT_EQ(out, filled(layout, y)) << columns;
    }
    expect_refused(kLowpass + "x.csv --column=e", "x.csv: no column \"e\"; it has the columns 1 to 3: a, b, c, d");
}

TEST_F(Tool, filter_answers_each_line_of_a_live_stream) {
    write("live.sh",
          "coproc P { \"$M\" filter lowpass --cutoff 40 --rate 360; }\n"
          "for x in 1 2 3; do echo $x >&${P[1]}; read -t 20 -r y <&${P[0]} || exit 9; echo $y; done\n");
    EXPECT_EQ(shell("M=\"$M\" timeout 60 bash live.sh"), 0) << err;
    EXPECT_EQ(out, filled("@\n@\n@\n", filtered({1, 2, 3})));
}

TEST_F(Tool, wrong_calls_are_refused_in_one_line) {
    write("x.csv", "1\n2\n");
    for (const auto &[arguments, complaint] : {std::pair{"lowpass --cutoff 40bar --rate 360", "unknown unit \"bar\""},
                                               {"lopass --cutoff 4 --rate 36", "none of lowpass"},
                                               {"lowpass --cutoff 4 --rate 36 --family x", "none of butterworth"},
                                               {"lowpass --cutoff 180 --rate 360", "below 180 Hz"},
                                               {"bandpass --cutoff 40 --rate 360 --bandwidth 0.2kHz", "below 180 Hz"},
                                               {"lowpass --rate 360", "--cutoff"},
                                               {"lowpass --cutoff 4 --rate 36 --q 1", "--q"},
                                               {"lowpass --auto 0.1 --cutoff 4 --rate 36", "--auto"}})
        expect_refused("filter " + std::string(arguments) + " x.csv", complaint);
    expect_refused("fliter", "--help");
}

TEST_F(Tool, input_from_a_terminal_gets_help) {
    EXPECT_EQ(shell("timeout 20 script -qec \"$M " + kLowpass + "\" /dev/null"), 2);
    EXPECT_NE(out.find("mensura filter [OPTIONS] TYPE [FILE]"), std::string::npos) << out;
}

}  // namespace
