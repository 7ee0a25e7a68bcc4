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

// Up to 15 digits a number is read in another way than beyond.
TEST_F(CommandLine, cells_are_read_as_the_nearest_double) {
    write("all_pass.csv", "1,0,0,1,0,0\n");
    for (const char *cell :
         {"-0.000001", "0.1", "123456789012345", "12345678.9012345", "0.00000000000001", "1234567890123456",
          "0.1234567890123457", "9007199254740993", "179769313486231570000.5", "5e-324", "-1.5E3", "1.", ".5", "7"}) {
        write("x.csv", std::string("x\n0.5\n") + cell + "\n");
        EXPECT_EQ(run("filter --quiet --sos all_pass.csv x.csv"), 0) << err;
        EXPECT_EQ(std::strtod(out.substr(out.find('\n', 2) + 1).c_str(), nullptr), std::strtod(cell, nullptr)) << cell;
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
    for (const auto &[text, reason] :
         {std::pair{"1,2\n3\n"s, ":2: has 1 cells; expected 2"},
          {"1,2\n3,4,5\n", ": has 3 cells; expected 2"},
          {"a;b\n1.5;1,5\n", ":2:2: \"1,5\" is not a number (column b); expected one with"},
          {"a;b\n1;1.234,56\n", ":2:2: \"1.234,56\" has a separator between thousands"},
          {"a;b\n1;1 234,56\n", ":2:2: \"1 234,56\" has a separator between thousands"},
          {"a\tb\n1\t1,234.56\n", ":2:2: \"1,234.56\" has a separator between"},
          {"a;b\n1;1'234.5\n", ":2:2: \"1'234.5\" has a separator between thousands"},
          {"a,b\n1,2\n\n3,abc\n", ":4:2: \"abc\""},
          {"a b\n1.5 2\n1-2 .5.5\n", ":3:1: \"1-2\""},
          {"a b\n1.5 2\n1.5.5\n", ":3:2: has 1 cells"},
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

// The same table with points and with commas gives the same numbers, in the marks that came in.
TEST_F(CommandLine, decimal_commas_are_recognised_and_come_back) {
    const std::vector<double> x{1, 2.5, -0.125, 4}, y = filtered(x);
    for (const auto &[layout, options] :
         {std::pair{"Zeit;x;note\ns;[mV];\n0;@;1.b\n0,5;@;\n1;@;c\n1,5;@;d\n", ""},
          {"t\tx\n0\t@\n1\t@\n2\t@\n3\t@\n", "--decimal . "},
          {"@ 1,5\n@ 2\n@ 3\n@ 4\n", "--column 1 "},
          {"a,x\n1,\"@\"\n1,\"@\"\n1,\"@\"\n1,\"@\"\n", "--column x --decimal comma "}}) {
        const bool commas = std::string(options) != "--decimal . ";
        const auto table = [&, layout = std::string(layout)](const std::vector<double> &numbers) {
            std::string text;
            for (std::size_t i = 0, next = 0; i < layout.size(); ++i) {
                std::string cell = filled(std::string(1, layout[i]), {layout[i] == '@' ? numbers[next++] : 0});
                if (commas && layout[i] == '@') std::ranges::replace(cell, '.', ',');
                text += cell;
            }
            return text;
        };
        write("x.csv", table(x));
        EXPECT_EQ(run(kLowpass + options + "x.csv"), 0) << err;
        EXPECT_EQ(out, table(y)) << layout << err;
    }
}

TEST_F(CommandLine, units_and_equal_names_are_understood) {
    write("u.csv", "Zeit;ax;ax\nms;[m];-\n0;1;2\n500;1,5;4\n");
    EXPECT_EQ(run("derive u.csv --column ax#2"), 0) << err;
    EXPECT_EQ(out, "Zeit;ax;d(ax)/dt\nms;[m];1/s\n0;1;4\n500;1,5;4\n");
    EXPECT_EQ(run("spectrum u.csv"), 0) << err;
    EXPECT_HAS(out, "frequency_Hz,ax,ax#2\n");
    EXPECT_EQ(run("average --length 2 u.csv"), 0) << err;
    EXPECT_EQ(out, "Zeit;ax;ax\nms;[m];-\n0;1;2\n500;1,25;3\n");
    expect_refused("stats u.csv --column ax#3", "no column \"ax#3\"; it has the columns 1 to 3: Zeit, ax, ax#2");
    EXPECT_EQ(shell("printf 'sep=;\nZeit;p\ns;bar\n0;1,5\n1;2,5\n' | $M average --length 2"), 0);
    EXPECT_EQ(out, "sep=;\nZeit;p\ns;bar\n0;1,5\n1;2\n");
    EXPECT_EQ(shell("printf 'Hall 3;Rig 7\nZeit;p\n0;1\n1;2\n' | $M average --length 2"), 2);  // no line of units
    EXPECT_HAS(err, "standard input:2:1: \"Zeit\" is not a number");
}

TEST_F(CommandLine, a_stream_survives_bad_cells_and_rows) {
    write("x.csv", "a,b\n1,2\n?,4\n5\n3,\"6\n5,8\n");
    EXPECT_EQ(run("average --length 2 x.csv"), 0);
    EXPECT_EQ(out, "a,b\n1,2\n?,3\n5\n3,\"6\n3,6\n");
    for (const char *line : {"x.csv:3:1: \"?\" is not a number (column a)", "x.csv:4:2: has 1 cells; expected 2",
                             "x.csv:5:2: a quote is not closed", "x.csv: 1 cell and 2 rows could not be read"})
        EXPECT_HAS(err, line);
    EXPECT_EQ(run("average --length 2 --strict x.csv"), 2);
    EXPECT_EQ(shell("{ seq 300; echo no; } | $M average --length 1 --strict | wc -l"), 0);
    EXPECT_EQ(out, "300\n");
    EXPECT_EQ(run("smooth --degree 1 --window 3 x.csv"), 2);
    EXPECT_EQ(shell("{ echo 1; yes no | head -n 99; echo 3; } | $M average --length 2 | tail -n 1"), 0);
    EXPECT_EQ(out, "2\n");
    EXPECT_EQ(std::ranges::count(err, '\n'), 10 + 2) << err;
    EXPECT_EQ(shell("printf '7,1\\n1,2,3\\n3,4,5\\n' | $M average --length 2"), 0);
    EXPECT_EQ(out, "7,1\n1,2,3\n2,3,4\n");
    EXPECT_HAS(err, "standard input:1:3: has 2 cells; expected 3 as in line 2");
    EXPECT_EQ(shell("{ echo 7,1; sleep 1; echo 1,2,3; echo 3,4,5; } | $M average --length 2"), 0);
    EXPECT_EQ(out, "7,1\n1,2,3\n2,3,4\n") << "found out late";
}
