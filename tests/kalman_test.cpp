#include <gtest/gtest.h>
#include <mensura/kalman.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
#include <vector>

#include "allocations.h"

namespace {

using Packed = std::vector<double>;

Packed noise(int n) {
    static std::mt19937 bits(1);
    Packed x;
    while (std::ssize(x) < n) x.push_back(std::uniform_real_distribution<double>(-1, 1)(bits));
    return x;
}

struct Model {
    int m, n;
    Packed A = noise(n * n), C = noise(m * n), Q = noise(n * n), R = noise(m * m), P = noise(n * n), x = noise(n);
    std::unique_ptr<KalmanFilter> filter() const {
        auto kf = std::make_unique<KalmanFilter>();
        initKalmanFilter_d(kf.get(), A.data(), C.data(), Q.data(), R.data(), P.data(), x.data(), m, n);
        return kf;
    }
};

std::vector<double *> rows(Packed &a, int length) {
    std::vector<double *> result;
    for (auto row = a.begin(); row < a.end(); row += std::max(length, 1)) result.push_back(&*row);
    return result;
}

RMATRIX matrix(const Packed &a, int rows, int cols) { return setRMATRIX(a.data(), rows, cols); }
RMATRIX operator+(const RMATRIX &a, const RMATRIX &b) { return rmatrix_add(a, b); }
RMATRIX operator-(const RMATRIX &a, const RMATRIX &b) { return rmatrix_sub(a, b); }
RMATRIX operator*(const RMATRIX &a, const RMATRIX &b) { return rmatrix_multi(a, b); }
bool operator==(const RMATRIX &a, const RMATRIX &b) {
    bool same = a.rows == b.rows && a.cols == b.cols;
    for (int i = 0; i < 100 * a.rows; ++i) same = same && (i % 100 >= a.cols || a.data[i] == b.data[i]);
    return same;
}

TEST(Kalman, steps_are_exactly_those_of_the_textbook_in_every_form) {
    for (const auto &[m, n] : {std::pair{2, 9}, {12, 5}, {3, 100}, {101, 2}, {2, 101}, {0, 2}, {2, 0}, {-3, 1}}) {
        Model model{m, n};
        auto &[m_, n_, A, C, Q, R, P, x] = model;
        const auto packed = model.filter(), by_row = Model{3, 1}.filter(), core = Model{2, 2}.filter();
        RMATRIX a = matrix(A, n, n), p = matrix(P, n, n), state = matrix(x, n, 1), one = p;
        const RMATRIX c = matrix(C, m, n), q = matrix(Q, n, n), r = matrix(R, m, m), ct = rmatrix_transpose(c);
        initRMATRIX_identity(&one, n % 101, n % 101);
        initKalmanFilter(core.get(), &a, &c, &q, &r, &p, &state);
        initKalmanFilter_d1(by_row.get(), rows(A, n).data(), rows(C, n).data(), rows(Q, n).data(), rows(R, m).data(),
                            rows(P, n).data(), x.data(), m, n);
        EXPECT_TRUE((m <= 100 && n <= 100) || (isEmptyRMATRIX(&packed->x) && isEmptyRMATRIX(&by_row->xInit)));
        for (const bool turned : {false, true, true, false}) {
            const Packed measured = noise(m), before = x;
            const RMATRIX z = matrix(measured, m, 1);
            if (turned) a = matrix(A = noise(n * n), n, n);
            turned ? KalmanFilter_update1(core.get(), &z, &a) : KalmanFilter_update(core.get(), &z);
            KalmanFilter_update1_d(packed.get(), measured.data(), A.data(), x.data());
            KalmanFilter_update1_d1(by_row.get(), measured.data(), rows(A, n).data(), x.data());
            p = a * p * rmatrix_transpose(a) + q;
            const RMATRIX gain = p * ct * rmatrix_inverse(c * p * ct + r), predicted = a * state;
            state = predicted + gain * (z - c * predicted);
            p = (one - gain * c) * p;
            EXPECT_TRUE(isEmptyRMATRIX(&state) ? x == before : matrix(x, n, 1) == state) << m << ", " << n;
            for (KalmanFilter *kf : {packed.get(), by_row.get(), core.get()})
                EXPECT_TRUE(kf->P == p && kf->K == gain && kf->x == state && *getKalmanFilter_out(kf) == c * state);
        }
    }
}

TEST(Kalman, averages_a_constant_and_resets_exactly_also_after_a_singular_innovation) {
    const auto mean = Model{1, 1, {1}, {1}, {0}, {2}, {3}, {5}}.filter();
    double x1 = 0, total = 5 / 3.0;  // of the state and the measurements, each over its variance
    for (int k = 1; k <= 40; ++k) {
        const double z = k % 7, variance = 1 / (1 / 3.0 + k / 2.0);  // ten roundings a step
        KalmanFilter_update_d(mean.get(), &z, &x1);
        EXPECT_NEAR(x1 / ((total += z / 2) * variance), 1, 10 * k * 0x1p-52);
        EXPECT_NEAR(mean->P.data[0] / variance, 1, 10 * k * 0x1p-52);
    }
    const Packed one = {1, 0, 0, 1}, turn = {0, 1, 1, 0}, z = {5, 6}, first = {3, 4}, other = {7, 8}, none(4);
    const auto kf = Model{2, 2, one, one, none, none, one, first}.filter();  // S is 0 as soon as the state is known
    for (const Packed &start : {first, other, other}) {
        Packed x = start, state = start;
        const int before = allocations;
        EXPECT_TRUE(kf->P == matrix(one, 2, 2) && *getKalmanFilter_state(kf.get()) == matrix(start, 2, 1));
        EXPECT_EQ(KalmanFilter_update1_d(kf.get(), z.data(), turn.data(), state.data()), state.data());
        for (int step = 0; step < 2; ++step) EXPECT_EQ(KalmanFilter_update_d(kf.get(), z.data(), x.data()), x.data());
        for (auto *get : {getKalmanFilter_state_d, getKalmanFilter_out_d}) EXPECT_EQ(get(kf.get(), x.data()), x.data());
        EXPECT_TRUE(isEmptyRMATRIX(&kf->x) && state == z && x == start);  // nothing written
        resetKalmanFilter_d(kf.get(), start == other ? nullptr : other.data());
        EXPECT_TRUE(kf->A == matrix(turn, 2, 2) && isEmptyRMATRIX(&kf->y) && allocations == before);
    }
    initKalmanFilter(kf.get(), &kf->A, &kf->C, &kf->Q, &kf->R, &kf->P, nullptr);
    EXPECT_TRUE(kf->x == matrix(none, 2, 1));
}

TEST(KalmanModel, has_its_formulas_in_an_array_of_its_size) {
    const double a[3][3] = {{1, 0.1, 0}, {0, 1, 0.1}, {0, 0, 1}}, q[3][3] = {{2, 3, 4}, {3, 5, 6}, {4, 6, 7}},
                 p[3][3] = {{2, 2, 2}, {2, 2e5, 200}, {2, 200, 2e3}};  // position, velocity, acceleration
    const auto diagonal = [](int i, int j) { return i == j ? HUGE_VAL : 0; };
    for (int n = -1; n <= 7; ++n) {
        const auto expect = [n](auto build, int cols, auto element, auto... arguments) {
            Packed out(200, 77), expected = out;
            for (int i = 0; i < std::max(n, 0) * cols; ++i) expected.data()[i] = element(i / cols, i % cols);
            EXPECT_TRUE(build(out.data(), n, arguments...) == out.data() && out == expected) << n;
        };
        const auto axes = [k = n / 3](auto &part) {
            return [=](int i, int j) { return std::max(i, j) < 3 * k && i % k == j % k ? part[i / k][j / k] : 0; };
        };
        expect(getKalmanFilterA, n, axes(a), 0.1);
        expect(getKalmanFilterQ, n, axes(q), 2, 3, 4, 5, 6, 7);
        expect(getKalmanFilterP, n, axes(p), 2);
        expect(getKalmanFilterR, n, diagonal, HUGE_VAL);
        expect(getKalmanFilterC, 3 * n, [](int i, int j) { return i == j; });
    }
}

}  // namespace
