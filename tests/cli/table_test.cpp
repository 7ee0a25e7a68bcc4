// The tables that the commands read and write, through mensura filter.

#include "program.h"

// Everything but the numbers of the one column of them comes back as it stood.
TEST_F(CommandLine, tables_keep_their_form) {
    const std::vector<double> x{0.1, -3, 1e-7, 123456.789}, y = filtered(x);
    for (const char *layout :
         {"@\n@\n@\n@\n", "@\r\n@\r\n@\n@", "# a comment\n\ntime,x\n0,@\n# and, one, between\n1,@\n\n2,@\n3,@\n",
          "\xEF\xBB\xBFtime;\"x; y\";note\r\n0;@;a 1\r\n1;@;\"b;\"\"2\"\"\"\r\n2;@;3\r\n3;@;",
          "t\tx\n0,0\t@\n\t@\n2\t@\n-\t@", "t x\n 0.0  @ \n1.0  @\n+2 \t @\n.3  @", "T\n@\n@\n@\n@\n",
          "x,y,Time [ms]\n@,,0\n@,NaN,1\n@,NA,2\n@,,3\n"}) {
        write("x.csv", filled(layout, x));
        EXPECT_EQ(run(kLowpass + "x.csv"), 0) << layout << err;
        EXPECT_EQ(out, filled(layout, y)) << layout;
    }
}

TEST_F(CommandLine, missing_cells_stay_and_count_as_the_value_before) {
    const std::string layout = "x,y\n,0\n@,0\nNaN,0\nNA,0\n\"\",0\n@,0\nnan,0\n@,0\n";
    write("gaps.csv", filled(layout, {1, 3, -2}));
    const std::vector<double> y = filtered({1, 1, 1, 1, 3, 3, -2});
    EXPECT_EQ(run(kLowpass + "gaps.csv"), 0);
    EXPECT_EQ(out, filled(layout, {y[0], y[4], y[6]}));
    const std::vector<double> x = zero_phase({1, 1, 1, 1, 1, 3, 3, -2});  // the first number fills what is before it
    EXPECT_EQ(run(kLowpass + "--zero-phase gaps.csv"), 0);
    EXPECT_EQ(out, filled(layout, {x[1], x[5], x[7]}));
}

// Without --rate, which a table without a column of times wants only when it has been read.
TEST_F(CommandLine, faults_of_a_table_are_named_with_their_place) {
    using namespace std::string_literals;
    for (const auto &[text, reason] : {std::pair{"1,2\n3\n"s, ":2: has 1 cells; expected 2"},
                                       {"1,2\n3,4,5\n", ": has 3 cells; expected 2"},
                                       {"a;b\n1.5;1,5\n", ":2:2: \"1,5\" is not a number (column b); expected one with"},
                                       {"a;b\n1;1.234,56\n", ":2:2: \"1.234,56\" has a separator between thousands"},
                                       {"a;b\n1;1 234,56\n", ":2:2: \"1 234,56\" has a separator between thousands"},
                                       {"a\tb\n1\t1,234.56\n", ":2:2: \"1,234.56\" has a separator between"},
                                       {"a;b\n1;1'234.5\n", ":2:2: \"1'234.5\" has a separator between thousands"},
                                       {"a,b\n1,2\n\n3,abc\n", ":4:2: \"abc\""},
                                       {"1\ninf\n", ":2:1: \"inf\" is not a finite"},
                                       {"1\n1e999\n", ":2:1: \"1e999\""},
                                       {"", ": is empty"},
                                       {"a,b\n1,\"2\n3,4\n", ":2:2: a quote is not closed"},
                                       {"1\n2\0\n"s, ":2: holds zero bytes"},
                                       {"x\n1\n2\n", "--rate"},
                                       {"t_ms,x\n0,1\n1,1\n2,1\n", "below 500 Hz"},
                                       {"time,x\n0,1\n,1\n2,1\n", ":3:1: the time is missing"}}) {
        write("x.csv", text);
        expect_refused("filter lowpass --cutoff 500Hz x.csv", reason);
    }
    expect_refused(kLowpass + "nothere.csv", "nothere.csv: No such file");
    expect_refused(kLowpass + ".", ".: is a directory");
}
