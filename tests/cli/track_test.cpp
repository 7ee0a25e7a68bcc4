// mensura track

#include <mensura/kalman.h>

#include <array>
#include <cmath>

#include "program.h"

// The estimates of one axis, as docs/kalman.md has it; NaN: a measurement of a weight of 1e-12.
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

// Estimates of z at every row, from all of it: least squares over the first position, velocity and acceleration and
// every step of the acceleration.  mpmath 1.2.1, mp.dps = 50, for z = 1, 3, 2, None, ... as below:
//     def batch(z, dt, qaa, r, p):
//         n, A, T, rows = len(z), matrix([[1, dt, 0], [0, 1, dt], [0, 0, 1]]), eye(3 + len(z))[:3, :], []
//         W, b = matrix(3 + n), matrix(3 + n, 1)
//         W[:3, :3] = matrix([[p, p, p], [p, 1e5 * p, 100 * p], [p, 100 * p, 1000 * p]])**-1
//         b += W[:, 0] * z[0]
//         for k in range(n):
//             T = A * T; T[2, 3 + k] += 1; W[3 + k, 3 + k] = 1 / qaa; rows.append(T.copy())
//             if z[k] is not None: c = T[0, :]; W += c.T * c / r; b += c.T * z[k] / r
//         P = W**-1
//         return [[*(T * P * b), sqrt((T * P * T.T)[0, 0])] for T in rows]
//     batch(z, mpf(1) / 4, mpf(2), mpf(1) / 2, mpf(100)); of z[:6] the last row
TEST_F(CommandLine, track_smooths_and_predicts_as_least_squares_over_all_rows_do) {
    const std::vector<std::vector<double>> smoothed = {
        {1.40188164032252, 2.17257925506173, 3.67346756775903, 0.571425614117392},
        {1.94502645408796, 3.09094614700149, 3.77432735785328, 0.403854662309387},
        {2.71776299083833, 4.03452798646480, 3.81270224703018, 0.430141058849112},
        {3.72639498745453, 4.98770354822235, 3.80486590858108, 0.487088185349559},
        {4.97332087451012, 5.93892002536762, 3.76709201579730, 0.507878114614277},
        {6.45805088085202, 6.88069302931694, 3.71565424197017, 0.489459875693438},
        {8.17822413818126, 7.80960658980949, 3.66682626039103, 0.446949005577109},
        {10.1306257856336, 8.72631315490724, 3.43143777889651, 0.401485018037840},
        {12.3122040743604, 9.58417259963137, 3.35297495173167, 0.382670914825900},
        {14.7082472242683, 10.4224163375643, 3.35297495173167, 0.447512644881976},
        {17.3138513086594, 11.2606600754972, 3.35297495173167, 0.660097552487501},
        {20.1290163275337, 12.0989038134301, 3.35297495173167, 1.04530458531915}};
    const std::vector<double> at_the_end_of_the_gap = {-17.2110348272278, -47.6960901855090, -44.0942769624550,
                                                       12.9516861987336};
    write("z.csv", "time,x\n0,1\n.25,3\n.5,2\n.75,\n1,\n1.25,\n1.5,9\n1.75,8\n2,14\n2.25,\n2.5,17\n2.75,\n");
    const auto expect_near = [](const std::vector<double> &row, const std::vector<double> &expected) {
        ASSERT_GE(row.size(), 5);
        for (std::size_t k = 0; k < 4; ++k) EXPECT_NEAR(row[row.size() - 4 + k], expected[k], 1e-10);
    };
    const std::string model = " --q 2 --r 0.5 --p 100 --sigma z.csv";
    EXPECT_EQ(run("track --smooth" + model), 0) << err;
    EXPECT_EQ(out.substr(0, out.find('\n')), "time,x,x_position,x_velocity,x_acceleration,x_sigma");
    const std::string from_times = out;
    ASSERT_EQ(rows(out).size(), 12);
    for (std::size_t i = 0; i < 12; ++i) expect_near(rows(out)[i], smoothed[i]);
    EXPECT_EQ(run("track --smooth --rate 4Hz" + model), 0) << err;
    EXPECT_EQ(out, from_times);
    // The smoothed position has -3 dB at f where qaa dt^4 / r = (2 sin(pi f / rate))^6 / (sqrt 2 - 1).
    const double f = 4 / M_PI * std::asin(std::pow((std::sqrt(2) - 1) * 2 / 256 / 0.5, 1 / 6.) / 2);
    EXPECT_EQ(run(filled("track --smooth --r 0.5 --p 100 --sigma z.csv --bandwidth @", {f})), 0) << err;
    for (std::size_t i = 0; i < 12; ++i) expect_near(rows(out).at(i), smoothed[i]);

    for (const std::string command : {"track", "track --rate 4Hz"}) {  // the filter: each row from those up to it
        EXPECT_EQ(run(command + model), 0) << err;
        ASSERT_EQ(rows(out).size(), 12);
        expect_near(rows(out)[5], at_the_end_of_the_gap);
        expect_near(rows(out)[11], smoothed[11]);
    }
}

TEST_F(CommandLine, track_smooths_what_it_can_and_leaves_the_rest) {
    write("xy.csv", "# note\nx;who;y\n;p;\n;q;\n5;r;\n\n;s;\n5;t;");
    EXPECT_EQ(run("track --smooth --rate 1 --q 1e-3 --r 1 xy.csv"), 0) << err;
    EXPECT_EQ(out.substr(0, out.find("\n5")),
              "# note\nx;who;y;x_position;x_velocity;x_acceleration;y_position;y_velocity;y_acceleration\n"
              ";p;;;;;;;\n;q;;;;;;;");
    EXPECT_HAS(out, "\n\n;s;;5;0;0;;;\n");
    write("units.csv", "x [m];y ();z\n1;2;3\n");
    EXPECT_EQ(run("track --sigma --column 1 --column 3 --rate 1 --q 1 --r 1 units.csv"), 0) << err;
    EXPECT_HAS(out, "x [m];y ();z;x_position [m];x_velocity [m/s];x_acceleration [m/s^2];x_sigma [m];z_position;");
    write("minutes.csv", "time_min,x\n0,1\n1,2\n2,3\n");
    const std::string bandwidth = "track --bandwidth 0.1mHz --r 1 minutes.csv";
    expect_refused(bandwidth + " --smooth --p 1e5", "smoothing x loses its digits", 1);
    EXPECT_EQ(run(bandwidth), 0);
    EXPECT_HAS(err, "--p 10000 makes the first velocity so uncertain that the estimates lose digits");
    EXPECT_EQ(run(bandwidth + " --smooth --p 2"), 0);
    EXPECT_EQ(err, "");
}

TEST_F(CommandLine, track_predicts_through_holes_or_starts_anew_after_them) {
    std::string cells = "time,x\n", times = cells, rest = cells;  // cells are missing, rows are missing, after the hole
    for (int i = 0; i < 60; ++i) {
        const std::string time = filled("@,", {0.125 * i}), row = filled("@,@\n", {0.125 * i, 0.1 * i * i + i % 3});
        const bool missing = i >= 25 && i < 40;
        cells += missing ? time + "\n" : row;
        times += missing ? "" : row;
        rest += i < 40 ? "" : row;
    }
    write("cells.csv", cells);
    write("times.csv", times);
    write("rest.csv", rest);
    for (const std::string model : {"--q 1 --r 1 ", "--q 1 --r 1 --rate 8Hz ", "--q 1 --r 1 --smooth "}) {
        SCOPED_TRACE(model);
        EXPECT_EQ(shell("\"$M\" track " + model + "cells.csv > a; \"$M\" track " + model + "times.csv > b"), 0);
        EXPECT_HAS(err, "cells.csv:27: a hole in x from this line on, 1.875 s, 15 cells: the model predicts");
        EXPECT_HAS(err, "times.csv:27: a hole of 2 s before this line, 15 rows: the model predicts");
        EXPECT_EQ(shell("grep -v ,, a | cmp - b"), 0) << out;
        for (const std::string file : {"cells.csv ", "times.csv "})
            EXPECT_EQ(shell("\"$M\" track --gaps split " + model + file + "| tail -n 20 > a; \"$M\" track " + model +
                            "rest.csv | tail -n 20 | cmp - a"),
                      0)
                << out;
        expect_refused("track --gaps error " + model + "cells.csv", "cells.csv:27:2: the cell is missing (column x)");
    }
    write("long.csv", "time,x\n0,1\n1,2\n2,3\n3,4\n200000,5\n");
    expect_refused("track --q 1 --r 1 long.csv", "long.csv: row 5: the hole before it is longer than 100000 rows");
}

TEST_F(CommandLine, track_refuses_models_and_numbers_that_it_cannot_track) {
    write("one.csv", "time,x\n0,1\n");
    write("still.csv", "x\n1\n1\n1\n1\n1\n1\n1\n1\n1\n");
    write("huge.csv", "x\n1e308\n-1e308\n1e308\n");
    expect_refusals("", {{"track --r 1 one.csv", "--q or --bandwidth is required"},
                         {"track --r 1 --q 1 --bandwidth 1 one.csv", "--q excludes --bandwidth"},
                         {"track --r 0 --q 1 one.csv", "--r 0 is not above 0"},
                         {"track --r 1 --bandwidth 0.5 --rate 1 one.csv", "half the rate"}});
    expect_refused("track --q 0 --r 1e-17 --rate 1 still.csv", "choose units in which --r is above 1e-12", 1);
    expect_refused("track --q 1 --r 1 --rate 1 huge.csv --smooth", "huge.csv: 1 s after the first row: the estimates",
                   1);
}
