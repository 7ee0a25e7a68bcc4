#include <gtest/gtest.h>
#include <mensura/ode.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <valarray>
#include <vector>

#include "allocations.h"

namespace {

using State = std::valarray<double>;
struct System {
    std::function<void(int call, double t, const double *y, double *dydt)> f;
    int calls = 0;
};

int derivative(double t, const double *y, void *system, double *dydt) {
    auto &[f, calls] = *static_cast<System *>(system);
    return f(calls++, t, y, dydt), -1;  // which is ignored
}

const System rotation{[](auto, auto, auto y, auto dydt) { dydt[0] = y[1], dydt[1] = -y[0]; }};
const char *const kLine[] = {"", "rkf45: time set error!\n", "solve failure, data over big!\n",
                             "forcefully terminate!\n"};

// The rules of rkf45 in a plain loop.  Rows of times and factors of k1, k2, ...: stages, next state, error.
constexpr double kFehlberg[8][7] = {
    {0},
    {0.25, 0.25},
    {0.375, 0.09375, 0.28125},
    {0.923076923076923, 0.87938097405553, -3.277196176604461, 3.320892125625854},
    {1, 2.032407407407407, -8.0, 7.173489278752436, -0.205896686159844},
    {0.5, -0.296296296296296, 2.0, -1.381676413255361, 0.452972709551657, -0.275},
    {0, 0.115740740740741, 0, 0.548927875243665, 0.535331384015595, -0.2},
    {0, 0.002777777777778, 0, -0.029941520467836, -0.029199893673578, 0.02, 0.036363636363636}};

int plain(double t0, double t1, double divisions, double tol, System &f, State &y) {
    double h = (t1 - t0) / divisions, s = 1e15, t = t0, largest = 0;
    const double h_min = h * 0.015625, h_max = h * 64.0, t_end = t1 - std::fabs(t1) * 1e-05;
    std::vector<State> k(8, y), sum = k;
    for (int steps = 0, rejections = 0; t < t1;) {
        if (t_end < t + h) h = t1 - t;
        for (std::size_t j = 0; j < 8; ++j) {
            sum[j] = j < 7 ? y : State(y.size());
            for (std::size_t m = 0; m < 6; ++m)
                if (kFehlberg[j][m + 1] != 0) sum[j] += kFehlberg[j][m + 1] * k[m];
            largest = 0;
            for (const double v : sum[j]) largest = std::fmax(largest, std::fabs(v));  // NaN does not count
            if (j > 0 && j < 6 && largest > 1e15) return -2;
            if (j < 6) derivative(j == 0 ? t : t + kFehlberg[j][0] * h, &sum[j][0], &f, &k[j][0]);
            k[j] *= h;
        }
        const bool accepted = largest < tol || h < 2 * h_min;
        if (accepted) y = sum[6], t = t_end < t + h ? t1 : t + h;
        rejections = accepted ? 0 : rejections + 1;
        for (const double r : sum[7])
            if (!(std::fabs(r) < 1e-08)) s = std::fmin(s, 0.84 * std::pow(tol * h / std::fabs(r), 0.25));
        if (largest < 1e-08) s = 0;
        if (s < 0.75 && !(h <= 2 * h_min)) h = h / 2;
        if (s > 1.5 && !(2 * h >= h_max)) h = 2 * h;
        if ((steps += accepted) == 20000 || rejections == 20000) return -3;
    }
    return t1 < t0 ? -1 : 0;
}

// rkf45 has its result, line, y and number of calls, or fewer calls where an attempt repeats itself.
int expect_plain(System f, State y, double t0, double t1, double divisions, double tol) {
    System g = f;
    State expected = y;
    const int code = plain(t0, t1, divisions, tol, g, expected), n = static_cast<int>(y.size());
    testing::internal::CaptureStdout();
    EXPECT_EQ(rkf45(t0, t1, divisions, tol, derivative, &y[0], n, &f, &y[0]), code);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), kLine[-code]);
    EXPECT_TRUE(f.calls == g.calls || (code == -3 && f.calls < g.calls));
    EXPECT_TRUE((y == expected || (y != y && expected != expected)).min()) << t1 << ' ' << divisions << ' ' << tol;
    return code;
}

TEST(rkf45, is_a_plain_loop) {
    const double kTol[] = {1e-11, 1e-7, 1e-3, 1e5}, kDivisions[] = {0.2, 1, 10, 250};
    int codes = 0;
    for (int i = 0; i < 80; ++i) {
        const int n = 1 + i % 20;
        const System f{[=](auto, double t, auto y, auto dydt) {  // slower and slower components
            for (int j = 0; j < n; ++j) dydt[j] = std::ldexp((i % 5 * 3 - 4) * y[j] + y[(j + 1) % n] * cos(t), -3 * j);
        }};
        const State y0(1 + n % 3, static_cast<std::size_t>(n));
        codes |= 1 << -expect_plain(f, y0, n % 4 - 1.7, n % 7 + 1.4, kDivisions[i % 4], kTol[i / 4 % 4]);
    }
    EXPECT_EQ(codes, 0b1101);  // 0, -2 and -3
    const System decay{[](auto, auto, auto y, auto dydt) { *dydt = -*y; }};
    for (const double tol : {0.0, -1.0, std::nan(""), 1e-12}) EXPECT_EQ(expect_plain(decay, {1}, 0, 1, 1, tol), -3);
    EXPECT_EQ(expect_plain(rotation, {1, 0}, 0, 10, 10, 1e-3), -3);
    EXPECT_EQ(expect_plain({[](auto, auto, auto, auto dydt) { *dydt = std::nan(""); }}, {1}, 0, 1, 1, 1), 0);
}

// t1; rejected attempts, for the sixth stage, which y does not use, of how many; all, with steps down to 1/32; result.
TEST(rkf45, ends_after_20000_steps_or_20000_rejections_in_a_row) {
    const double kCases[][5] = {{8.01, 0, 1, 200, 0},      {626.753, 0, 1, 19999, 0},  {626.78125, 0, 1, 20000, -3},
                                {1, 19999, 1e9, 20031, 0}, {1, 20000, 1e9, 20000, -3}, {1, 700, 701, 22432, 0}};
    for (const auto &c : kCases) {
        System f{[&](int i, auto, auto, auto dydt) { *dydt = i % 6 == 5 && i / 6 % int(c[2]) < c[1] ? 1e9 : 0; }};
        double y = 1;
        EXPECT_EQ(rkf45(0, c[0], c[0], 1e-3, derivative, &y, 1, &f, &y), c[4]);
        EXPECT_TRUE(f.calls == 6 * c[3] && y == 1) << f.calls;
    }
}

// The estimate for the rotation of 1e6 is 1e6 h^5 / 780 all along: with this tol the steps of rkf45 stay.
TEST(Integrators, divide_the_error_by_16_when_the_step_is_halved) {
    double error[2][2];
    for (const int i : {0, 1}) {
        const double steps = 64 << i, h = 4 / steps, y0[] = {1e6, 0};
        double y[2][2];
        System f = rotation;
        const int allocated = allocations;
        EXPECT_EQ(rkf45(0, 4, steps, 1e6 * std::pow(h, 4) / 390, derivative, y0, 2, &f, y[0]), 0);
        EXPECT_EQ(rkf452(0, 4, steps / 4, derivative, y0, 2, &f, y[1]), 0);
        EXPECT_TRUE(allocations == allocated && f.calls == 10 * steps) << f.calls;
        for (const int j : {0, 1}) error[j][i] = std::hypot(y[j][0] - 1e6 * cos(4), y[j][1] + 1e6 * sin(4));
    }
    for (const auto &[coarse, fine] : error) EXPECT_NEAR(std::log2(coarse / fine), 4, 0.1);
}

TEST(rkf452, has_the_bits_of_its_formula) {
    const auto f = [](double t, double y) { return 0.7 + t * y * y; };
    System system{[&](auto, double t, auto y, auto dydt) { *dydt = f(t, *y); }};
    const double kCases[][3] = {{0, 2, 0}, {-5, 2, -1}, {0.9, 2, 0.1}, {1.7, 1, 0}, {93, 92, 0}, {2, 1, 1e30}};
    for (const auto &[rate, steps, y0] : kCases) {
        const double h = rate < 1 ? 0.5 : 1 / rate;  // 1 / (1 / 93) is below 93
        double t = 0, y = y0, result = y0;
        for (int i = 0; i < steps; ++i) {
            const double k1 = f(t, y), k2 = f(t + h / 2, y + h / 2 * k1), k3 = f(t + h / 2, y + h / 2 * k2);
            y = y + h / 6.0 * (k1 + 2 * k2 + 2 * k3 + f(t + h, y + h * k3)), t += h;
        }
        EXPECT_TRUE(rkf452(0, 1, rate, derivative, &result, 1, &system, &result) == (y > 1e30 ? -2 : 0) && result == y);
    }
}

TEST(Integrators, end_whatever_the_arguments) {
    alarm(300);  // an emulated processor takes a hundred seconds
    const double v[] = {0, 1, -3e9, 1e308, 5e-324, HUGE_VAL, std::nan("")};
    for (int i = 0; i < 7 * 7 * 7 * 7; ++i) {
        const double t0 = v[i % 7], t1 = v[i / 7 % 7], rate = v[i / 49 % 7], steps = std::floor((t1 - t0) / (1 / rate));
        expect_plain(rotation, {1, 2}, t0, t1, rate, v[i / 343]);
        double y[] = {1, 2};
        System f = rotation;
        testing::internal::CaptureStdout();
        const int code = rkf452(t0, t1, rate, derivative, y, 2, &f, y);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), kLine[-code]);
        EXPECT_EQ(code == -1, t1 < t0 || !std::isfinite(steps) || steps > INT_MAX) << t0 << ' ' << t1 << ' ' << rate;
    }
    for (const int n : {INT_MIN, 0, 21, INT_MAX})
        EXPECT_TRUE(rkf45(0, 1, 1, 1, nullptr, nullptr, n, nullptr, nullptr) == -(n > 0) &&
                    rkf452(0, 1, 1, nullptr, nullptr, n, nullptr, nullptr) == -(n > 0));
    alarm(0);
}

TEST(test_rkf45, writes_a_file_in_the_current_directory) {
    const auto dir = std::filesystem::temp_directory_path() / ("ode_test." + std::to_string(getpid()));
    std::filesystem::create_directories(dir / "test_rkf45.txt");  // which cannot be opened as a file
    std::filesystem::current_path(dir);
    testing::internal::CaptureStdout();
    test_rkf45();
    std::filesystem::remove("test_rkf45.txt");
    test_rkf45();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "test_rkf45 end\n");
    std::vector<std::string> lines(1);
    for (std::ifstream file("test_rkf45.txt"); std::getline(file, lines.back());) lines.emplace_back();
    std::filesystem::remove_all(dir);
    ASSERT_EQ(lines.size(), 15002);
    EXPECT_EQ(lines[0], "1.000000,1.000000,3.000000,0");
    EXPECT_EQ(lines[15000], "3.188614,-1.329579,2.079591,0");  // mpmath 1.2.1: odefun(f, 0, [1, 1, 3])(15)
    const double sample[] = {12, -51, 4, 6, 167, -68, -4, 24, -41, -1, 1, 0, 2, 0, 3};
    EXPECT_TRUE(std::equal(sample, sample + 15, in[0]));
}

}  // namespace
