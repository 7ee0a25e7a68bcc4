// The Kalman filter on matrices and its forms on plain arrays.
#include <mensura/kalman.h>

#include <array>
#include <memory>

#include "support/matrices.h"
#include "support/noise.h"
#include "support/reference/kalman.h"

using support::fixed, support::Grid, support::rows;

static void fill(Grid &x, support::Noise &noise) {
    for (double &element : x.values) element = noise();
}

constexpr const char *kForms[] = {"on matrices", "on packed arrays", "on arrays of rows"};

TEST(KalmanFilter, takes_the_steps_of_the_textbook_in_every_form) {
    support::Noise noise(1);
    const auto forms = std::make_unique<std::array<KalmanFilter, 3>>();
    auto &[by_matrix, packed, by_row] = *forms;
    for (const auto &[m, n] :
         {std::pair{1, 1}, {2, 9}, {12, 5}, {3, 100}, {101, 2}, {2, 101}, {0, 2}, {2, 0}, {-3, 1}}) {
        SCOPED_TRACE(testing::Message() << m << " measurements, " << n << " states");
        Grid A{n, n}, C{m, n}, Q{n, n}, R{m, m}, P{n, n}, x{n, 1}, measured{m, 1};
        for (Grid *part : {&A, &C, &Q, &R, &P, &x}) fill(*part, noise);
        reference::Kalman e{fixed(A), fixed(C), fixed(Q), fixed(R), fixed(P), fixed(x)};
        initKalmanFilter(&by_matrix, &e.A, &e.C, &e.Q, &e.R, &e.P, &e.x);
        initKalmanFilter_d(&packed, A.data(), C.data(), Q.data(), R.data(), P.data(), x.data(), m, n);
        initKalmanFilter_d1(&by_row, rows(A).data(), rows(C).data(), rows(Q).data(), rows(R).data(), rows(P).data(),
                            x.data(), m, n);
        EXPECT_TRUE(std::max(m, n) <= RMATRIX_CAPACITY || isEmptyRMATRIX(&packed.x));
        EXPECT_TRUE(std::max(m, n) <= RMATRIX_CAPACITY || isEmptyRMATRIX(&by_row.xInit));
        Grid x_packed = x, x_by_row = x;
        for (const bool turned : {false, true, true, false}) {
            fill(measured, noise);
            if (turned) fill(A, noise);
            e.A = fixed(A);
            const RMATRIX z = fixed(measured);
            e.update(z);
            if (turned)
                KalmanFilter_update1(&by_matrix, &z, &e.A);
            else
                KalmanFilter_update(&by_matrix, &z);
            KalmanFilter_update1_d(&packed, measured.data(), A.data(), x_packed.data());
            KalmanFilter_update1_d1(&by_row, measured.data(), rows(A).data(), x_by_row.data());
            const Grid written = isEmptyRMATRIX(&e.x) ? x : support::grid(e.x);
            EXPECT_SAME_MATRIX(x_packed, written);
            EXPECT_SAME_MATRIX(x_by_row, written);
            for (KalmanFilter &kf : *forms) {
                SCOPED_TRACE(kForms[&kf - forms->data()]);
                EXPECT_SAME_MATRIX(kf.P, e.P);
                EXPECT_SAME_MATRIX(kf.K, e.K);
                EXPECT_SAME_MATRIX(kf.x, e.x);
                EXPECT_SAME_MATRIX(*getKalmanFilter_out(&kf), e.output());
            }
            if (HasFailure()) return;
        }
    }
}

// Without noise the innovation is singular as soon as the state is known.
TEST(KalmanFilter, resets_exactly_after_a_singular_innovation) {
    const Grid one = reference::identity(2, 2), turn{2, 2, {0, 1, 1, 0}}, zero{2, 2}, none{};
    const Grid z{2, 1, {5, 6}}, first{2, 1, {3, 4}}, other{2, 1, {7, 8}};
    const auto kf = std::make_unique<KalmanFilter>();
    initKalmanFilter_d(kf.get(), one.data(), one.data(), zero.data(), zero.data(), one.data(), first.data(), 2, 2);
    for (const Grid &start : {first, other, other}) {
        EXPECT_SAME_MATRIX(kf->P, one);
        EXPECT_SAME_MATRIX(*getKalmanFilter_state(kf.get()), start);
        Grid x = start;
        double *const out = x.data();
        EXPECT_EQ(KalmanFilter_update1_d(kf.get(), z.data(), turn.data(), out), out);
        EXPECT_SAME_MATRIX(x, z);
        x = start;
        for (int step = 0; step < 2; ++step) EXPECT_EQ(KalmanFilter_update_d(kf.get(), z.data(), out), out);
        EXPECT_EQ(getKalmanFilter_state_d(kf.get(), out), out);
        EXPECT_EQ(getKalmanFilter_out_d(kf.get(), out), out);
        EXPECT_SAME_MATRIX(kf->x, none);
        EXPECT_SAME_MATRIX(kf->y, none);
        EXPECT_SAME_MATRIX(x, start);  // nothing written
        resetKalmanFilter_d(kf.get(), start.values == other.values ? nullptr : other.data());
        EXPECT_SAME_MATRIX(kf->A, turn);
    }
    initKalmanFilter(kf.get(), &kf->A, &kf->C, &kf->Q, &kf->R, &kf->P, nullptr);
    EXPECT_SAME_MATRIX(kf->x, (Grid{2, 1}));
}
