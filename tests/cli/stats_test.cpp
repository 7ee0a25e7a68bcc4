// mensura stats.
#include <nlohmann/json.hpp>

#include "program.h"

using Stats = CommandLine;

// python3: x = [1, -2, 4, 5]; numpy.mean(x), numpy.sqrt(numpy.mean(numpy.square(x))), numpy.std(x, ddof=1)
TEST_F(Stats, a_column_each_and_a_row_for_each_figure) {
    write("x.csv", "time,a,note,\"b,c\",none\n0,1,x,7,\n1,-2,y,NaN,NA\n2,4,z,,\n3,5,x,,\n");
    ASSERT_EQ(run("stats x.csv"), 0) << err;
    EXPECT_EQ(out,
              "statistic,a,\"b,c\",none\nn,4,1,0\nmissing,0,3,4\nmean,2,7,\nrms,3.391164991562634,7,\n"
              "standard_deviation,3.1622776601683795,,\nmin,-2,7,\nmax,5,7,\npeak_to_peak,7,0,\n"
              "crest_factor,1.4744195615489712,1,\n");
    ASSERT_EQ(run("stats --json --column a --column none x.csv"), 0) << err;
    const auto columns = nlohmann::json::parse(out).at("columns");
    EXPECT_EQ(columns.at(0).at("n"), 4);
    EXPECT_EQ(columns.at(0).at("peak_to_peak"), 7);
    EXPECT_TRUE(columns.at(1).at("rms").is_null());
    expect_refused("stats /dev/null", "/dev/null: is empty");
    expect_refused("stats --column note x.csv", "x.csv:2:3: \"x\" is not a number");
}

// The noise is +-0.5 in turn, exactly; the plain formula sum x^2 - n mean^2 has no digit left of it.
TEST_F(Stats, a_large_offset_costs_no_digits) {
    ASSERT_EQ(shell("yes '1000000000.5\n999999999.5' | head -1000000 | \"$M\" stats"), 0) << err;
    const std::vector<double> values = column(rows(out), 0);
    EXPECT_EQ(values.at(1), 1e9);
    EXPECT_NEAR(values.at(3), std::sqrt(0.25 * 1e6 / (1e6 - 1)), 1e-15);
}
