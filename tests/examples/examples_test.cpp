// Runs the examples and reads what they print.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

// What a command that ends with this status writes to standard output.
static std::string output_of(const std::string &command, int status = 0) {
    std::FILE *const out = popen(command.c_str(), "r");
    std::string text;
    for (int c = std::fgetc(out); c != EOF; c = std::fgetc(out)) text += static_cast<char>(c);
    const int result = pclose(out);
    EXPECT_TRUE(WIFEXITED(result)) << command;
    EXPECT_EQ(WEXITSTATUS(result), status) << command;
    return text;
}

using Pair = std::pair<double, double>;

// The two numbers of the row that begins with label, whatever stands between them; NaN where there is no such row.
static Pair row(const std::string &table, const std::string &label) {
    std::smatch numbers;
    const std::regex line(label + R"( +[a-z]* +([0-9.]+)[a-zV ]* ([0-9.]+)[mV ]*\n)");
    if (!std::regex_search(table, numbers, line)) return {std::nan(""), std::nan("")};
    return {std::stod(numbers[1]), std::stod(numbers[2])};
}

static std::vector<Pair> columns(std::istream &table) {
    std::vector<Pair> rows;
    for (std::string line; std::getline(table, line);) {
        std::istringstream in(line);
        char comma = 0;
        if (Pair r{}; in >> r.first >> comma >> r.second && comma == ',') rows.push_back(r);
    }
    return rows;
}

TEST(CleanEcg, the_notch_takes_the_hum_and_leaves_the_beats) {
    const std::string table = output_of("'" CLEAN_ECG "' 2>&1 >/dev/null <'" RECORD "'");  // hum in uV, beats in mV
    const Pair raw = row(table, "raw"), low_pass = row(table, "low-pass, 40 Hz"), notch = row(table, "notch, 60 Hz");
    EXPECT_NEAR(raw.first, 8.8, 0.1) << table;  // an amplitude: SciPy finds the same
    EXPECT_LT(100 * notch.first, raw.first);
    EXPECT_LT(50 * low_pass.first, raw.first);
    EXPECT_NEAR(notch.second / raw.second, 1, 0.005);
    EXPECT_LT(low_pass.second / raw.second, 0.98);
}

TEST(CleanEcg, writes_the_record_without_its_hum_and_without_delay) {
    std::ifstream file(RECORD);
    std::istringstream written(output_of("'" CLEAN_ECG "' 2>/dev/null <'" RECORD "'"));
    const std::vector<Pair> raw = columns(file), clean = columns(written);
    ASSERT_EQ(raw.size(), 10800U);
    ASSERT_EQ(clean.size(), raw.size());
    double largest = 0, squares = 0;
    for (std::size_t i = 0; i < raw.size(); ++i) {
        largest = std::max(largest, std::fabs(clean[i].first - raw[i].first));
        squares += std::pow(clean[i].second - raw[i].second, 2);
    }
    EXPECT_LT(largest, 1e-6);                     // the times, printed to 1 us
    EXPECT_LT(std::sqrt(squares / 10800), 0.02);  // mV rms; a delay of one sample would make 0.05 of the beats
}

TEST(TrackPosition, beats_differences_and_average_by_what_its_bandwidth_promises) {
    const std::string table = output_of("'" TRACK_POSITION "'");  // errors: position in m, velocity in m/s
    const Pair raw = row(table, "samples, differences"), average = row(table, "average of 16");
    const Pair kalman = row(table, "Kalman filter");

    EXPECT_NEAR(raw.first, 0.05, 0.003)
        << table;  // the rms of 1000 uniform numbers scatters by 1.4 %, and three decimals
    EXPECT_NEAR(raw.second, 0.05 / (0.01 * std::sqrt(2)), 0.2);
    EXPECT_NEAR(average.first, 0.34, 0.02);  // 75 ms late, at 4.5 m/s rms
    // 3 Hz at 100 Hz lets a third of the noise through, and 0.11 m/s of velocity; the manoeuvres add 7 mm and 0.11 m/s.
    EXPECT_LT(2.5 * kalman.first, raw.first);
    EXPECT_GT(4 * kalman.first, raw.first);
    EXPECT_LT(20 * kalman.second, raw.second);
    EXPECT_LT(2 * kalman.second, average.second);
}

TEST(Examples, fail_without_a_record_or_a_reader) {
    output_of("'" CLEAN_ECG "' </dev/null 2>/dev/null", 1);
    output_of("'" CLEAN_ECG "' <'" RECORD "' 2>/dev/null >/dev/full", 1);
    output_of("'" TRACK_POSITION "' >/dev/full", 1);
    output_of("'" TRACK_POSITION "' >&-", 1);
}
