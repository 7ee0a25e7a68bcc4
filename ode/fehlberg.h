// Fehlberg's pair of Runge-Kutta methods of order 4 and 5 (Fehlberg E, NASA TR R-315, 1969), and a check of its order.
#pragma once

#include <array>
#include <cstddef>

namespace mensura::ode {

inline constexpr std::size_t kStages = 6;

using PerStage = std::array<double, kStages>;

// The Butcher table to 15 digits.  Stage i is taken at t + kTime[i] h and y + sum over j of kStage[i][j] k[j].
inline constexpr PerStage kTime = {0.0, 0.25, 0.375, 0.923076923076923, 1.0, 0.5};
inline constexpr std::array<PerStage, kStages> kStage = {
    {{},
     {0.25},
     {0.09375, 0.28125},
     {0.87938097405553, -3.277196176604461, 3.320892125625854},
     {2.032407407407407, -8.0, 7.173489278752436, -0.205896686159844},
     {-0.296296296296296, 2.0, -1.381676413255361, 0.452972709551657, -0.275}}};
// The solution of order 4, and how far that of order 5 is from it.
inline constexpr PerStage kSolution = {0.115740740740741, 0, 0.548927875243665, 0.535331384015595, -0.2, 0};
inline constexpr PerStage kError = {0.002777777777778,  0,    -0.029941520467836,
                                    -0.029199893673578, 0.02, 0.036363636363636};

// ---- The order of the method, checked ------------------------------------------------------------------------------

constexpr PerStage operator*(const PerStage &u, const PerStage &v) {
    PerStage product{};
    for (std::size_t i = 0; i < kStages; ++i) product[i] = u[i] * v[i];
    return product;
}

constexpr double sum(const PerStage &u) {
    double total = 0;
    for (const double x : u) total += x;
    return total;
}

// kStage times a vector.
constexpr PerStage A(const PerStage &u) {
    PerStage result{};
    for (std::size_t i = 0; i < kStages; ++i) result[i] = sum(kStage[i] * u);
    return result;
}

constexpr bool equal(double a, double b) {
    constexpr double kTolerance = 2e-14;  // the table has 15 digits
    return a - b < kTolerance && b - a < kTolerance;
}

// The largest order up to which all conditions hold, up to 5.  Each rooted tree of p nodes gives one of order p,
// sum(weights * phi) = 1 / gamma (Hairer, Norsett and Wanner, Solving Ordinary Differential Equations I, section II.2).
constexpr int order_of(const PerStage &weights) {
    constexpr PerStage one = {1, 1, 1, 1, 1, 1}, c = kTime;
    // clang-format off
    const struct {
        int order;
        PerStage phi;
        double gamma;
    } conditions[] = {
        {1, one, 1},
        {2, c, 2},
        {3, c * c, 3},         {3, A(c), 6},
        {4, c * c * c, 4},     {4, c * A(c), 8},      {4, A(c * c), 12},    {4, A(A(c)), 24},
        {5, c * c * c * c, 5}, {5, c * c * A(c), 10}, {5, A(c) * A(c), 20}, {5, c * A(c * c), 15},
        {5, A(c * c * c), 20}, {5, c * A(A(c)), 30},  {5, A(c * A(c)), 40}, {5, A(A(c * c)), 60}, {5, A(A(A(c))), 120}};
    // clang-format on
    for (const auto &condition : conditions)
        if (!equal(sum(weights * condition.phi), 1 / condition.gamma)) return condition.order - 1;
    return 5;
}

constexpr PerStage solution_of_order_5() {
    PerStage weights{};
    for (std::size_t i = 0; i < kStages; ++i) weights[i] = kSolution[i] + kError[i];
    return weights;
}

static_assert(order_of(kSolution) == 4);
static_assert(order_of(solution_of_order_5()) == 5);
static_assert([] {
    const PerStage row_sums = A({1, 1, 1, 1, 1, 1});
    for (std::size_t i = 0; i < kStages; ++i)
        if (!equal(row_sums[i], kTime[i])) return false;
    return true;
}());

}  // namespace mensura::ode
