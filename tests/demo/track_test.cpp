// Runs the tracking example and reads the table it prints.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>

namespace {

struct Errors {
    double position, velocity;  // m, m/s; NaN if the row is missing
};

Errors row(const std::string &table, const std::string &label) {
    Errors errors{std::nan(""), std::nan("")};
    const std::size_t at = table.find("\n" + label + " ");
    if (at == std::string::npos) return errors;
    std::istringstream(table.substr(at + 1 + label.size())) >> errors.position >> errors.velocity;
    return errors;
}

TEST(TrackPosition, beats_differences_and_average_by_what_its_bandwidth_promises) {
    std::FILE *const out = popen("'" TRACK_POSITION "'", "r");
    ASSERT_NE(out, nullptr);
    std::string table;
    for (int c = std::fgetc(out); c != EOF; c = std::fgetc(out)) table += static_cast<char>(c);
    ASSERT_EQ(pclose(out), 0);
    const Errors raw = row(table, "samples, differences"), average = row(table, "average of 16");
    const Errors kalman = row(table, "Kalman filter");

    EXPECT_NEAR(raw.position, 0.05, 0.003);  // the rms of 1000 uniform numbers scatters by 1.4 %, and three decimals
    EXPECT_NEAR(raw.velocity, 0.05 / (0.01 * std::sqrt(2)), 0.2);
    EXPECT_NEAR(average.position, 0.34, 0.02);  // 75 ms late, at 4.5 m/s rms
    // 3 Hz at 100 Hz lets a third of the noise through, and 0.11 m/s of velocity; the manoeuvres add 7 mm and 0.11 m/s.
    EXPECT_LT(2.5 * kalman.position, raw.position);
    EXPECT_GT(4 * kalman.position, raw.position);
    EXPECT_LT(20 * kalman.velocity, raw.velocity) << table;
    EXPECT_LT(2 * kalman.velocity, average.velocity);
}

TEST(TrackPosition, fails_if_nobody_can_read_the_table) {
    for (const char *command : {"'" TRACK_POSITION "' >/dev/full", "'" TRACK_POSITION "' >&-"}) {
        const int result = std::system(command);
        EXPECT_TRUE(WIFEXITED(result) && WEXITSTATUS(result) == 1) << command;
    }
}

}  // namespace
