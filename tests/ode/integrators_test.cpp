// Both integrators.
#include <mensura/ode.h>
#include <unistd.h>

#include <algorithm>
#include <climits>

#include "support/expect.h"
#include "support/reference/ode.h"

using reference::Derivative, reference::State;

constexpr const char *kLine[] = {"", "rkf45: time set error!\n", "solve failure, data over big!\n",
                                 "forcefully terminate!\n"};  // printed with 0, -1, -2, -3

struct System {
    Derivative f;
    std::size_t n;
    int calls = 0;

    State operator()(double t, const State &y) {
        ++calls;
        return f(t, y);
    }
};

static int derivative(double t, const double *y, void *system, double *dydt) {
    System &s = *static_cast<System *>(system);
    const State result = s(t, State(y, s.n));
    std::copy(begin(result), end(result), dydt);
    return -1;  // which is ignored
}

static State rotation(double, const State &y) { return {y[1], -y[0]}; }

// The integrator has the result, line, y and number of calls of the plain loop.
static int expect_plain(auto integrator, auto plain, const Derivative &f, State y, auto... arguments) {
    System system{f, y.size()}, plain_system = system;
    State expected = y;
    const int code = plain(arguments..., std::ref(plain_system), expected), n = static_cast<int>(y.size());
    testing::internal::CaptureStdout();
    const int result = integrator(arguments..., derivative, &y[0], n, &system, &y[0]);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), kLine[-code]);
    EXPECT_EQ(result, code);
    EXPECT_EQ(system.calls, plain_system.calls);
    EXPECT_SAME_BITS(y, expected);
    return code;
}

TEST(rkf45, is_a_plain_loop) {
    constexpr double kTolerances[] = {1e-11, 1e-7, 1e-3, 1e5}, kDivisions[] = {0.2, 1, 10, 250};
    int codes = 0;
    for (int i = 0; i < 80; ++i) {
        SCOPED_TRACE(testing::Message() << "system " << i);
        const int n = 1 + i % 20;
        const auto slower_and_slower = [i](double t, const State &y) {
            State dydt = y;
            for (std::size_t j = 0; j < y.size(); ++j)
                dydt[j] =
                    std::ldexp((i % 5 * 3 - 4) * y[j] + y[(j + 1) % y.size()] * std::cos(t), -3 * static_cast<int>(j));
            return dydt;
        };
        const State y0(1 + n % 3, static_cast<std::size_t>(n));
        codes |= 1 << -expect_plain(rkf45, reference::rkf45, slower_and_slower, y0, n % 4 - 1.7, n % 7 + 1.4,
                                    kDivisions[i % 4], kTolerances[i / 4 % 4]);
    }
    EXPECT_EQ(codes, 0b1101);  // 0, -2 and -3
    const auto decay = [](double, const State &y) { return State(-y); };
    for (const double tolerance : {0.0, -1.0, static_cast<double>(NAN), 1e-12})
        EXPECT_EQ(expect_plain(rkf45, reference::rkf45, decay, {1}, 0, 1, 1, tolerance), -3) << tolerance;
    EXPECT_EQ(expect_plain(rkf45, reference::rkf45, rotation, {1, 0}, 0, 10, 10, 1e-3), -3);
    EXPECT_EQ(expect_plain(rkf45, reference::rkf45, decay, {1}, -3, -1, 30, 1e-3), 0);  // an end before 0
    const auto nan = [](double, const State &) { return State{NAN}; };
    EXPECT_EQ(expect_plain(rkf45, reference::rkf45, nan, {1}, 0, 1, 1, 1), 0);
}

// Of so many attempts some are rejected, for their sixth stage, which y does not use.
TEST(rkf45, ends_after_20000_steps_or_20000_rejections_in_a_row) {
    constexpr struct {
        double t1;
        int rejected, of, code;
    } kCases[] = {{626.753, 0, 1, 0},
                  {626.78125, 0, 1, -3},  // 19999 steps, and 20000
                  {1, 19999, 30000, 0},
                  {1, 20000, 30000, -3},
                  {1, 700, 701, 0}};
    for (const auto &[t1, rejected, of, code] : kCases) {
        const auto f = [rejected = rejected, of = of, call = 0](double, const State &) mutable {
            const int attempt = call / 6, stage = call % 6;
            ++call;
            return State{stage == 5 && attempt % of < rejected ? 1e9 : 0};
        };
        EXPECT_EQ(expect_plain(rkf45, reference::rkf45, f, {1}, 0, t1, t1, 1e-3), code) << t1 << ", " << rejected;
    }
}

TEST(rkf452, is_a_plain_loop) {
    const auto f = [](double t, const State &y) { return State(0.7 + t * y * y.cshift(1)); };
    for (const double rate : {0.0, -5.0, 0.9, 1.7, 93.0})  // 1 / (1 / 93) is below 93
        EXPECT_EQ(expect_plain(rkf452, reference::rkf452, f, {0, 0.5, -0.1}, 0, 1, rate), 0) << rate;
    EXPECT_EQ(expect_plain(rkf452, reference::rkf452, f, {1e30}, 0, 1, 2), -2);
    EXPECT_EQ(expect_plain(rkf452, reference::rkf452, rotation, {1, 0.3}, 0, 40, 1), 0);  // y moves by its own size
}

TEST(Integrators, end_whatever_the_arguments) {
    alarm(300);  // an emulated processor takes a hundred seconds
    const double values[] = {0, 1, -3e9, 1e308, 5e-324, HUGE_VAL, NAN};
    for (const double t0 : values)
        for (const double t1 : values)
            for (const double rate : values) {
                SCOPED_TRACE(testing::Message() << "from " << t0 << " to " << t1 << ", rate " << rate);
                expect_plain(rkf452, reference::rkf452, rotation, {1, 2}, t0, t1, rate);
                for (const double tolerance : values)
                    expect_plain(rkf45, reference::rkf45, rotation, {1, 2}, t0, t1, rate, tolerance);
                if (HasFailure()) return;
            }
    for (const int n : {INT_MIN, 0, 21, INT_MAX}) {
        EXPECT_EQ(rkf45(0, 1, 1, 1, nullptr, nullptr, n, nullptr, nullptr), n > 0 ? -1 : 0) << n;
        EXPECT_EQ(rkf452(0, 1, 1, nullptr, nullptr, n, nullptr, nullptr), n > 0 ? -1 : 0) << n;
    }
    alarm(0);
}
