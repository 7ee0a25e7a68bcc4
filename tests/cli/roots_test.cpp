#include <complex>

#include "program.h"
#include "support/reference/roots.h"

using Complex = std::complex<double>;

TEST_F(CommandLine, roots_multiply_out_to_the_polynomial) {
    for (const std::string polynomial : {"1 -6 11 -6", "1 -.5", "-2e-3 0 -.5 1 7 0 0", "3 0 0", "1 0 0 1e-90"}) {
        ASSERT_EQ(run("roots " + polynomial), 0) << err;
        std::vector<Complex> product{std::stod(polynomial)};
        for (const std::vector<double> &z : rows(out))
            product = reference::product(product, {1, -Complex(z.at(0), z.at(1))});
        std::istringstream numbers(polynomial);
        double c = 0, largest = 0;
        for (const Complex rebuilt : product) {
            numbers >> c;
            largest = std::max(largest, std::abs(c));
            EXPECT_LE(std::abs(rebuilt - c), 1e-14 * (c == 0 ? largest : std::abs(c))) << polynomial << ": " << c;
        }
        EXPECT_FALSE(numbers >> c) << polynomial << ": roots are missing";
        for (const std::vector<double> &row : rows(out)) EXPECT_LT(row.at(2), 1e-14) << polynomial;
    }
}

// (x^2 + 1.25)^3 has huge wrong roots at first.  Threefold roots are found to the cube root of the precision.
TEST_F(CommandLine, roots_that_do_not_fit_are_reported_and_found_at_another_scale) {
    EXPECT_EQ(run("roots 1 0 3.75 0 4.6875 0 1.953125"), 0);
    EXPECT_HAS(err, "do not fit");
    ASSERT_EQ(rows(out).size(), 6u);
    for (const std::vector<double> &z : rows(out)) EXPECT_LT(std::abs(Complex(z[0], std::abs(z[1]) - 1.118034)), 1e-4);
    EXPECT_EQ(run("roots 1e-06 -1e+08 -1e-05 1e-06 1e-06 -1e+10 -0.0001"), 1);
    EXPECT_HAS(err, "no x = s t gives roots that fit");
    EXPECT_EQ(rows(out).size(), 6u);
}

TEST_F(CommandLine, roots_refuses_what_is_no_polynomial) {
    expect_refusals(
        "roots ",
        {{"0 1 2", "first coefficient"}, {"1 x", "\"x\" is not a number"}, {"$(yes 1 | head -102)", "2 to 101"}});
    EXPECT_EQ(run("roots $(yes 1 | head -101) --plot-script"), 0);
    EXPECT_HAS(out, "unit circle");
}
