// mensura smooth, derive, despike, average; what track has in common with them

#include "program.h"
#include "support/reference/smooth.h"

TEST_F(CommandLine, smooth_runs_the_smoother_asked_for) {
    const std::vector<double> x = signal(15);
    const std::string lines = "@\n@\n@\n@\n@\n@\n@\n@\n@\n@\n@\n@\n@\n@\n@\n";
    write("x.csv", filled(lines, x));
    for (const reference::Smoother &smoother : reference::kSmoothers) {
        std::vector<double> y(x.size());
        smoother.run(x.data(), y.data(), static_cast<int>(x.size()));
        const std::string degree = std::to_string(smoother.degree), window = std::to_string(smoother.window);
        EXPECT_EQ(run("smooth x.csv --degree " + degree + " --window " + window), 0) << err;
        EXPECT_EQ(out, filled(lines, y)) << "degree " << degree << ", window " << window;
    }
    expect_refused("smooth --degree 1 --window 6 x.csv",
                   "there are degree 1: window 3, 5, 7, 9, 11; degree 2: window 5, 7; degree 3: window 5, 7");
    write("short.csv", "1\n2\n");
    EXPECT_EQ(run("smooth --degree 1 --window 3 short.csv"), 0);
    EXPECT_EQ(out, "1\n2\n");
    EXPECT_HAS(err, "nothing is smoothed");
}

TEST_F(CommandLine, rewriting_keeps_everything_but_the_numbers) {
    // Means of three, and at the ends the line through them; the missing 0 is the sample before it.
    write("x.csv", "# note\r\nid;x;who\r\na;0;2 m\r\nb;3.0;\r\n\r\nc;0;x\r\nd;NaN;\"y;z\"\r\ne;6;w");
    EXPECT_EQ(run("smooth --degree 1 --window 3 x.csv"), 0) << err;
    EXPECT_EQ(out, "# note\r\nid;x;who\r\na;1;2 m\r\nb;1;\r\n\r\nc;1;x\r\nd;NaN;\"y;z\"\r\ne;5;w");
    write("squares.csv", "time [ms],x,y\n0,0,1\n500,1,1\n1000,4,1\n1500,9,1\n");
    EXPECT_EQ(run("derive squares.csv"), 0) << err;  // x = (2t)^2, lines at the ends
    EXPECT_EQ(out, "time [ms],d(x)/dt,d(y)/dt\n0,2,0\n500,4,0\n1000,8,0\n1500,10,0\n");
    EXPECT_EQ(run("derive --column x --rate 1 squares.csv"), 0) << err;
    EXPECT_EQ(out, "time [ms],d(x)/dt,y\n0,1,1\n500,2,1\n1000,4,1\n1500,5,1\n");
    write("units.csv", "time,\"a;b [m]\",note, v_km/h ,q (m/s^2),left_arm\n0,1,x,1,1,1\n1,2,y,1,1,2\n");
    EXPECT_EQ(run("derive units.csv"), 0) << err;
    EXPECT_EQ(out, "time,a;b [m/s],note, v_km/h/s ,q (m/s^3),d(left_arm)/dt\n0,1,x,0,0,1\n1,1,y,0,0,1\n");
    write("blank.csv", "t, ,x\n0,1,1\n1,2,1\n");
    EXPECT_EQ(run("derive blank.csv"), 0) << err;
    EXPECT_EQ(out, "t, d()/dt,d(x)/dt\n0,1,0\n1,1,0\n");
    EXPECT_EQ(run("derive units.csv --column left_arm --plot-script"), 0) << err;
    for (const char *label : {"ylabel 'left_arm'", "ylabel 'd(left_arm)/dt'"}) EXPECT_HAS(out, label);
    write("spikes.csv", "x y\n1 0\n1 0\n1 0\n1 0\n1 0\n1 0\n9 0\n1.50 NA\n-9 7\n2.5 8\n");
    EXPECT_EQ(run("despike --column x --limit 1 spikes.csv"), 0) << err;
    EXPECT_EQ(out, "x y\n1 0\n1 0\n1 0\n1 0\n1 0\n1 0\n1 0\n1.5 NA\n1.5 7\n2.5 8\n");
    write("steps.csv", "\n1,\n2,4\n4,\n8,2\n");
    EXPECT_EQ(run("average --length 2 steps.csv"), 0)
        << err;  // the missing 4 counts, what was before the first does not
    EXPECT_EQ(out, "\n1,\n1.5,4\n3,\n6,3\n");
}

TEST_F(CommandLine, streams_answer_line_by_line) {
    // A line goes in only after the one before has come out: a program that waits for more gets none and is killed.
    write("lines.sh",
          "mkfifo i o; timeout 10 \"$M\" $* <i >o & exec 3>i 4<o; printf 'x,y\\n1,2\\n' >&3; read -r a <&4\n"
          "read -r b <&4; printf '3,6\\n' >&3; read -r c <&4; exec 3>&-; wait; rm i o; echo \"$b $c\"\n");
    const std::string filter_answers = filled("1,2 @,@\n", {filtered({1, 3})[1], filtered({2, 6})[1]});
    for (const auto &[command, answers] : {std::pair{std::string("average --length 2"), std::string("1,2 2,4\n")},
                                           {"despike --limit 1", "1,2 3,6\n"},
                                           {"decimate 1 --quiet", "1,2 3,6\n"},
                                           {kLowpass, filter_answers},
                                           {"track --column x --rate 1 --q 1 --r 1", "1,2,1,0,0 3,6,"}}) {
        EXPECT_EQ(shell("timeout 60 sh lines.sh " + command), 0) << err;
        EXPECT_EQ(out.substr(0, answers.size()), answers) << command;
    }
}

TEST_F(CommandLine, wrong_calls_and_input_are_refused) {
    write("x.csv", "x\n1\n2\nabc\n");
    write("one.csv", "time,x\n0,1\n");
    write("x.wav", std::string("RIFF\x24\0\0\0WAVEfmt ", 16));
    for (const std::string command : {"smooth --degree 1 --window 3", "derive --rate 1", "despike --limit 1",
                                      "average --length 3", "track --q 1 --r 1 --rate 1"}) {
        expect_refused(command + " --strict x.csv", "mensura: x.csv:4:1: \"abc\" is not a number");
        expect_refused(command + " x.wav", "x.wav: is a sound (WAV); this command reads tables (CSV)");
    }
    expect_refusals("", {{"derive --rate 1 one.csv", "2 rows at least"},
                         {"despike --limit 0 one.csv", "--limit 0 is not above 0"},
                         {"average --length 2001 one.csv", "not from 1 to 2000"}});
}
