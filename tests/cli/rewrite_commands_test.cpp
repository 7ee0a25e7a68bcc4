// mensura smooth, derive, despike, average, track

#include <mensura/kalman.h>

#include <array>
#include <cmath>

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
    EXPECT_EQ(out, "time [ms],x,y\n0,2,0\n500,4,0\n1000,8,0\n1500,10,0\n");
    EXPECT_EQ(run("derive --column x --rate 1 squares.csv"), 0) << err;
    EXPECT_EQ(out, "time [ms],x,y\n0,1,1\n500,2,1\n1000,4,1\n1500,5,1\n");
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

// The estimates of one axis, as docs/kalman.md has it; NaN: no measurement.
static std::vector<std::array<double, 3>> kalman(const std::vector<double> &z, double dt, double qaa, double r,
                                                 double p) {
    static KalmanFilter kf;
    std::array<double, 9> a, q, big_p;
    std::array<double, 3> c, x{z.front(), 0, 0};
    initKalmanFilter_d(&kf, getKalmanFilterA(a.data(), 3, dt), getKalmanFilterC(c.data(), 1),
                       getKalmanFilterQ(q.data(), 3, 0, 0, 0, 0, 0, qaa), &r, getKalmanFilterP(big_p.data(), 3, p),
                       x.data(), 1, 3);
    std::vector<std::array<double, 3>> estimates;
    for (const double position : z) {
        const double measured = std::isnan(position) ? 0 : position;
        kf.R.data[0] = std::isnan(position) ? 1e12 * r : r;
        KalmanFilter_update_d(&kf, &measured, x.data());
        estimates.push_back(x);
    }
    return estimates;
}

TEST_F(CommandLine, track_appends_the_estimates_of_every_axis) {
    const double gap = std::nan("");
    std::string csv = "time,x,\"y,z\",who\n";
    std::vector<double> x, y;
    for (int i = 0; i < 40; ++i) {
        x.push_back(i >= 20 && i < 23 ? gap : 5 + 0.25 * i * i + i % 3);
        if (i > 0) y.push_back(-3.0 * i);
        csv += std::to_string(0.125 * i) + "," + (std::isnan(x.back()) ? "" : std::to_string(x.back())) + "," +
               (i > 0 ? std::to_string(y.back()) : "NaN") + ",p\n";
    }
    write("xy.csv", csv);
    EXPECT_EQ(run("track --q 2 --r 0.5 --p 100 xy.csv -o estimates.csv"), 0) << err;
    const std::string text = read("estimates.csv"), header = text.substr(0, text.find('\n'));
    EXPECT_EQ(header,
              "time,x,\"y,z\",who,x_position,x_velocity,x_acceleration,"
              "\"y,z_position\",\"y,z_velocity\",\"y,z_acceleration\"");
    EXPECT_HAS(text, "\n0.000000,5.000000,NaN,p,5,0,0,,,\n0.125000,6.250000,-3.000000,p,");
    const auto of_x = kalman(x, 0.125, 2, 0.5, 100), of_y = kalman(y, 0.125, 2, 0.5, 100);
    const auto table = rows(text);  // without missing cells and text: 5 numbers, then 9, of which a gap takes one
    for (std::size_t i = 1; i < 40; ++i)
        for (std::size_t k = 0; k < 3; ++k) {
            const std::vector<double> &row = table.at(i);
            // A gap has the weight 1e-12 of a measurement, which here is hundreds off.
            EXPECT_NEAR(row.at(row.size() - 6 + k), of_x[i][k], i < 20 ? 0 : 1e-8) << i;
            EXPECT_EQ(row.at(row.size() - 3 + k), of_y[i - 1][k]) << i;
        }
    // q = (0.05 * 0.44 / 0.44)^6, qaa = q r / dt^4; pow may round otherwise than the decimal fraction.
    EXPECT_EQ(run("track --bandwidth 176mHz --column x --r 0.01 xy.csv"), 0) << err;
    const auto slow = kalman(x, 0.125, 1.5625e-8 * 0.01 * 4096, 0.01, 100);
    for (std::size_t k = 0; k < 3; ++k) EXPECT_NEAR(rows(out).at(39).at(3 + k), slow[39][k], 1e-9);
    write("y.txt", "1 NaN\n2 8\n");  // between blanks an empty cell would vanish; without a header none is made
    EXPECT_EQ(run("track --q 1 --r 1e-2 --rate 1 y.txt"), 0);
    EXPECT_EQ(out.substr(0, 26), "1 NaN 1 0 0 NaN NaN NaN\n2 ");
}

TEST_F(CommandLine, wrong_calls_and_input_are_refused) {
    write("x.csv", "x\n1\n2\nabc\n");
    write("one.csv", "time,x\n0,1\n");
    write("x.wav", std::string("RIFF\x24\0\0\0WAVEfmt ", 16));
    for (const std::string command : {"smooth --degree 1 --window 3", "derive --rate 1", "despike --limit 1",
                                      "average --length 3", "track --q 1 --r 1 --rate 1"}) {
        expect_refused(command + " x.csv", "mensura: x.csv:4:1: \"abc\" is not a number");
        expect_refused(command + " x.wav", "x.wav: is a WAV; this command reads tables (CSV)");
    }
    expect_refusals("", {{"derive --rate 1 one.csv", "2 rows at least"},
                         {"despike --limit 0 one.csv", "--limit 0 is not above 0"},
                         {"average --length 2001 one.csv", "not from 1 to 2000"},
                         {"track --r 1 one.csv", "--q or --bandwidth is required"},
                         {"track --r 1 --q 1 --bandwidth 1 one.csv", "--q excludes --bandwidth"},
                         {"track --r 0 --q 1 one.csv", "--r 0 is not above 0"},
                         {"track --r 1 --bandwidth 0.5 --rate 1 one.csv", "half the rate"}});
    write("still.csv", "x\n1\n1\n1\n1\n1\n1\n1\n1\n1\n");
    expect_refused("track --q 0 --r 1e-17 --rate 1 still.csv", "choose units in which --r is above 1e-12", 1);
}
