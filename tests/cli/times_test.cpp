// Columns of times, sampling rates, and what is missing between rows and in cells.

#include "program.h"

class Times : public CommandLine {
  protected:
    // A table of n rows at a rate, with a hole before one of them.
    static std::string table(std::size_t n, double rate, std::size_t hole_at = 0, double hole = 0) {
        std::string csv = "time,x\n";
        for (std::size_t i = 0; i < n; ++i)
            csv += std::to_string(static_cast<double>(i) / rate + (i >= hole_at ? hole : 0)) + ",@\n";
        return csv;
    }
    std::vector<double> result(const std::string &call) {
        EXPECT_EQ(run(call), 0) << call << err;
        return column(rows(out), 1);
    }
    static std::vector<double> part(const std::vector<double> &x, std::size_t from, std::size_t to) {
        return {x.begin() + static_cast<std::ptrdiff_t>(from), x.begin() + static_cast<std::ptrdiff_t>(to)};
    }
    static std::vector<double> joined(std::vector<double> x, const std::vector<double> &y) {
        x.insert(x.end(), y.begin(), y.end());
        return x;
    }
};

// x is 0, 1, 4, 9, ... per half second: its slope is 8 i, at the ends that of lines.
TEST_F(Times, are_known_by_their_name_and_never_changed) {
    for (const auto &[name, cells] :
         {std::pair{"time", "0 .5 1 1.5"},
          {"t", "0 .5 1 1.5"},
          {"Zeit", "0 .5 1 1.5"},
          {"seconds", "-1 -.5 0 .5"},
          {"elapsed_us", "0 5e5 1e6 1500000"},
          {"epoch", "1700000000 1700000000.5 1700000001 1700000001.5"},
          {"Timestamp (ms)", "0 500 1000 1500"},
          {"timestamp", "1700000000000 1700000000500 1700000001000 1700000001500"},
          {"time_ns", "1700000000000000000 1700000000500000000 1700000001000000000 1700000001500000000"},
          {"date", "0 .5 1 1.5"},
          {"\"Zeit [\u00B5s]\"", "0 500000 1e6 1500000"},
          {"Date Time",
           "2024-02-28T23:59:59Z 2024-02-28T23:59:59.5Z 2024-02-29T01:00:00+01:00 2024-02-28T23:00:00,5-0100"},
          {"datum", "28.2.2023_23:59:59 28.2.2023_23:59:59.5 1.3.2023_00:00:00 1.3.2023_00:00:00.5"},
          {"Uhrzeit", "23:59:59 23:59:59.5 00:00:00.00 00:00:00.5"},
          {"tempo", "59:59.0 59:59.5 00:00.0 00:00.5"}}) {
        std::istringstream words(cells);
        std::string csv = std::string(name) + ";x;valve\n", slopes = std::string(name) + ";d(x)/dt;valve\n", cell;
        for (int i = 0; words >> cell; ++i) {
            if (const std::size_t blank = cell.find('_'); blank != std::string::npos) cell[blank] = ' ';
            csv += cell + ";" + std::to_string(i * i) + ";open\n";
            slopes +=
                cell + ";" + std::vector<std::string>{"2", "4", "8", "10"}.at(static_cast<std::size_t>(i)) + ";open\n";
        }
        write("x.csv", csv);
        EXPECT_EQ(run("derive x.csv"), 0) << err;
        EXPECT_EQ(out, slopes);
        EXPECT_EQ(run("derive --rate 2 x.csv"), 0) << err;
        EXPECT_EQ(out, slopes);
        EXPECT_EQ(err, "") << name;
    }
    for (const char *name : {"T", "T [K]", "rise time", "data", "timer"}) {
        write("x.csv", std::string(name) + ",x\n0,0\n1,1\n2,4\n");
        expect_refused("derive x.csv", "has no column called time; name it with --time");
        EXPECT_EQ(result(std::string("derive --time 1 x.csv")), (std::vector<double>{1, 2, 3}));
    }
    write("x.csv", "date,time,x\n20240301,12:00:00.0,0\n20240301,12:00:00.5,1\n20240301,12:00:01.0,4\n");
    EXPECT_EQ(run("derive x.csv"), 0) << err;
    EXPECT_EQ(out, "date,time,d(x)/dt\n20240301,12:00:00.0,2\n20240301,12:00:00.5,4\n20240301,12:00:01.0,6\n");
    write("x.csv", "date,x\nfirst run,0\nlast run,1\n");
    EXPECT_EQ(run("derive --rate 2 x.csv"), 0) << err;
    EXPECT_EQ(out, "date,d(x)/dt\nfirst run,2\nlast run,2\n");
}

TEST_F(Times, that_can_be_read_in_two_ways_or_are_none_are_refused) {
    for (const auto &[cells, reason] :
         {std::pair{"03/04/2024 12:00:00 03/04/2024 12:00:01", "x.csv:2:1: \"03/04/2024 12:00:00\" can be read in two"},
          {"10:00 10:01", "hours and minutes, or minutes and seconds; give the sampling rate"},
          {"2023-02-29T12:00:00 2023-02-29T12:00:01", "has no column called time"},
          {"2024-02-29T12:00:00 2024-02-30T12:00:00", "x.csv:3:1: \"2024-02-30T12:00:00\" is not a time"},
          {"5 4 3 2 1", "x.csv: column time is taken for the times, but does not increase; --time names another"},
          {"1 1 1", "does not increase"}}) {
        std::string csv = "time\tx\n";
        std::istringstream words(cells);
        for (std::string cell, rest; words >> cell;) {
            if (cell.find('/') != std::string::npos && words >> rest) cell.append(" ").append(rest);
            csv += cell + "\t1\n";
        }
        write("x.csv", csv);
        expect_refused("derive x.csv", reason);
    }
}

TEST_F(Times, are_compared_with_the_rate_that_is_given) {
    const std::vector<double> x = signal(300);
    write("x.csv", filled(table(300, 2000), x));
    const std::string remark = "mensura: x.csv: --rate 1000 Hz is used, but the times in column time say 2000 Hz\n";
    for (const std::string call :
         {"filter notch --cutoff 50Hz --bandwidth 4Hz --quiet", "derive", "average --length 2"}) {
        EXPECT_EQ(run(call + (call[0] == 'a' ? " --time time x.csv" : " --rate 1kHz x.csv")), 0);
        EXPECT_EQ(err, call[0] == 'a' ? "" : remark) << call;
    }
    EXPECT_EQ(shell("head -150 x.csv | $M decimate 2 --quiet --rate 2019Hz >/dev/null"), 0);
    EXPECT_EQ(err, "");
    // Clocks of a second, and rows that come ten times as often.
    std::string coarse = "t;x\n";
    for (int i = 0; i < 95; ++i)
        coarse.append(std::to_string((i + 3) / 10)).append(";").append(std::to_string(i * i)).append("\n");
    write("x.csv", coarse);
    EXPECT_EQ(shell("$M derive x.csv | sed -n 12p"), 0);
    EXPECT_EQ(out, "1;200\n");
    EXPECT_HAS(err, "x.csv: 85 of 95 rows have the time of the row before: taken as even, 10 Hz in the mean");
}

TEST_F(Times, that_jitter_are_even_and_those_that_wander_are_refused) {
    const std::vector<double> x = signal(400);
    std::string jitter = "time,x\n", wander = jitter;
    double late = 0;
    for (std::size_t i = 0; i < 400; ++i) {
        const double off = i == 0 || i == 399 ? 0 : 0.26 * std::sin(static_cast<double>(i * i));
        late += 1 + 0.9 * std::sin(static_cast<double>(i * i));
        jitter += std::to_string((static_cast<double>(i) + off) / 1000) + ",@\n";
        wander += std::to_string(late / 1000) + ",@\n";
    }
    write("x.csv", filled(jitter, x));
    EXPECT_EQ(result("filter lowpass --cutoff 40 --quiet x.csv"), one_way(low_pass(40, 1, 1000), x));
    EXPECT_EQ(err.find("missing"), std::string::npos) << err;
    write("x.csv", filled(wander, x));
    expect_refused("derive x.csv", "the times in column time are not evenly spaced; give the sampling rate");
}

// Times of 1 ms in which 5 s are missing: at the rate of the record the last value lasts as long.
TEST_F(Times, holes_are_held_split_or_refused) {
    const std::vector<double> x = signal(300);
    write("x.csv", filled(table(300, 1000, 200, 5), x));
    std::vector<double> even = part(x, 0, 200);
    even.resize(5200, x[199]);
    even = joined(even, part(x, 200, 300));
    const std::vector<double> sos = low_pass(40, 1, 1000), both = low_pass(40, 2, 1000);
    const auto written = [](const std::vector<double> &y) { return joined(part(y, 0, 200), part(y, 5200, 5300)); };
    const std::vector<double> one_way_pieces = joined(one_way(sos, part(x, 0, 200)), one_way(sos, part(x, 200, 300)));
    const std::vector<double> both_ways_pieces =
        joined(both_ways(both, part(x, 0, 200)), both_ways(both, part(x, 200, 300)));
    for (const auto &[option, wanted] : {std::pair{"", written(one_way(sos, even))},
                                         {" --rate 1kHz", written(one_way(sos, even))},
                                         {" --zero-phase", written(both_ways(both, even))},
                                         {" --gaps split", one_way_pieces},
                                         {" --gaps split --rate 1kHz", one_way_pieces},
                                         {" --gaps split --zero-phase", both_ways_pieces}}) {
        EXPECT_EQ(result(std::string("filter lowpass --cutoff 40 --quiet x.csv") + option), wanted) << option;
        EXPECT_HAS(err, "mensura: x.csv:202: a hole of 5.001 s before this line, 5000 rows: ");
    }
    // Of samples at 0, 7, 14, ... those that rows give, and after a new start each seventh row.
    for (const std::string option : {"", " --zero-phase"}) {
        for (const std::string gaps : {"hold", "split"}) {
            EXPECT_EQ(run("decimate 7 --quiet x.csv --gaps " + gaps + option), 0);
            const std::vector<double> times = column(rows(out), 0);
            ASSERT_EQ(times.size(), 44u);
            EXPECT_EQ(times[28], 0.196);
            EXPECT_EQ(times[29], gaps == "hold" ? 5.201 : 5.2) << option;
        }
    }
    const std::string here =
        "x.csv:202:1: the times are not evenly spaced here: a step of 5.001 s after steps of 0.001 s";
    expect_refusals("", {{"derive --gaps error x.csv -o y.csv", here},
                         {"smooth --degree 1 --window 3 --gaps error x.csv -o y", here}});
    EXPECT_EQ(run("average --length 2 --gaps error x.csv"), 2);
    EXPECT_EQ(err, "mensura: " + here + "; --gaps error refuses that\n");

    write("x.csv", filled(table(300, 1000, 200, 101), x));
    EXPECT_EQ(run("filter lowpass --cutoff 40 --quiet x.csv"), 0);
    EXPECT_HAS(err, "the hole is cut to 100000 rows");
    expect_refused("tone 50 x.csv", "longer than 100000 samples", 2);
    expect_refused("smooth --degree 1 --window 3 --gaps shut x.csv", "\"shut\" is none of hold, split, error");
    write("x.csv", "t,x\n0,1\n1,1\n1,1\n2,1\n");
    expect_refused("derive --gaps error x.csv", ":4:1: the time does not increase");
    write("x.csv", "t,x\n0,1\n1,1\n2,1\n1.5,1\n2.5,1\n3.5,1\n4.5,1\n5.5,1\n6.5,1\n7.5,1\n8.5,1\n10.5,1\n");
    EXPECT_EQ(run("derive x.csv"), 0);
    EXPECT_EQ(err,
              "mensura: x.csv:5:1: the time goes back by 0.5 s\n"
              "mensura: x.csv: 1 row is missing in 1 short hole; the last value stands in\n");
}

TEST_F(Times, long_runs_of_missing_cells_are_holes_too) {
    std::string csv = "x,y\n";
    for (int i = 0; i < 40; ++i)
        csv += std::string(i < 12 || i >= 23 ? std::to_string(i) : "").append(i % 2 == 0 ? ",0\n" : ",1\n");
    write("x.csv", csv);
    for (const std::string call : {"average --length 40", "filter lowpass --cutoff 1 --rate 100 --quiet"}) {
        EXPECT_EQ(run(call + " x.csv"), 0);
        EXPECT_HAS(err, "mensura: x.csv:14: a hole in x from this line on, ");
        EXPECT_EQ(run(call + " --gaps split x.csv"), 0);
        const std::vector<std::vector<double>> table = rows(out);
        EXPECT_NEAR(table[23][0], 23, 1e-9) << "begins anew";
        EXPECT_NE(table[23][1], 1) << "goes on";
        EXPECT_EQ(run(call + " --gaps error x.csv"), 2);
        EXPECT_EQ(err, "mensura: x.csv:14:1: the cell is missing (column x); --gaps error refuses that\n");
    }
    EXPECT_EQ(run("derive --gaps split --rate 1 x.csv"), 0);
    EXPECT_EQ(rows(out)[23][0], 1);
    write("x.csv", csv + "\n,1\n,1\n,1\n,1\n,1\n,1\n,1\n,1\n,1\n,1\n,1\n7,1\n");
    EXPECT_EQ(shell("$M derive --gaps split --rate 1 x.csv | tail -1"), 0);
    EXPECT_EQ(out, "7,0\n");
    EXPECT_HAS(err, "1 piece between holes is shorter than 2 samples: left as it is");
}
