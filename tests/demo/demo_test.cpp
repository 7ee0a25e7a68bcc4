// Runs the example program as a user would, each test in a directory of its own.

#include <gtest/gtest.h>
#include <mensura/iir.h>
#include <sys/wait.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <numbers>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Rows = std::vector<std::vector<double>>;

struct Outcome {
    int status;
    std::string out, err;
};

std::string contents(const fs::path &file) {
    std::ostringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    return text.str();
}

class CleanEcg : public testing::Test {
  protected:
    void SetUp() override {
        std::string name = (fs::temp_directory_path() / "clean_ecg_XXXXXX").string();
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        dir_ = name;
    }
    void TearDown() override { fs::remove_all(dir_); }

    void write_input(const std::string &text) const { std::ofstream(dir_ / "in.csv", std::ios::binary) << text; }
    Outcome run(const std::string &arguments) const {
        const std::string command = "cd '" + dir_.string() + "' && '" CLEAN_ECG "' " + arguments + " >out 2>err";
        const int result = std::system(command.c_str());
        return {WIFEXITED(result) ? WEXITSTATUS(result) : -1, contents(dir_ / "out"), contents(dir_ / "err")};
    }

    fs::path dir_;
};

// The numbers of a CSV file without its '#' lines and its header.
Rows read_csv(const fs::path &file) {
    Rows rows;
    std::ifstream in(file);
    for (std::string line; std::getline(in, line);) {
        if (line.find_first_of("#_") != std::string::npos) continue;
        std::istringstream fields(line);
        rows.emplace_back();
        for (std::string field; std::getline(fields, field, ',');) rows.back().push_back(std::stod(field));
    }
    return rows;
}

double printed(const Outcome &run, const std::string &label) {
    const std::size_t at = run.out.find(label);
    return at == std::string::npos ? std::nan("") : std::stod(run.out.substr(at + label.size()));
}

// |b0 + b1 z^-1 + b2 z^-2|^2 = b0^2 + b1^2 + b2^2 + 2 b1 (b0 + b2) cos w + 2 b0 b2 cos 2w: no complex arithmetic.
double power(double b0, double b1, double b2, double w) {
    return b0 * b0 + b1 * b1 + b2 * b2 + 2 * b1 * (b0 + b2) * std::cos(w) + 2 * b0 * b2 * std::cos(2 * w);
}

double gain_db(const IIRCoeffs &c, double f, double rate) {
    const double w = 2 * std::numbers::pi * f / rate;
    double db = 0;
    for (int k = 0; k < c.NumSections; ++k)
        db += 10 * std::log10(power(c.b0[k], c.b1[k], c.b2[k], w) / power(1, c.a1[k], c.a2[k], w));
    return db;
}

// Newton with a central difference, in dB, where a low-pass is nearly straight; a start above the solution converges.
double half_power_point(const IIRCoeffs &c, double start, double rate) {
    double f = start;
    for (int i = 0; i < 50; ++i) {
        const double slope = (gain_db(c, f + 1e-4, rate) - gain_db(c, f - 1e-4, rate)) / 2e-4;
        f -= (gain_db(c, f, rate) + 10 * std::log10(2.0)) / slope;
    }
    return f;
}

// From 58 to 62 Hz, at 30 s and 360 Hz: bins 1740 to 1860 of 10800, the phase reduced in integers.
double hum_rms(const std::vector<double> &x) {
    double sum = 0;
    for (std::size_t k = 1740; k <= 1860; ++k) {
        double re = 0, im = 0;
        for (std::size_t i = 0; i < x.size(); ++i) {
            const double angle = 2 * std::numbers::pi * static_cast<double>(i * k % x.size()) / 10800;
            re += x[i] * std::cos(angle);
            im += x[i] * std::sin(angle);
        }
        sum += 2 * (re * re + im * im);
    }
    return std::sqrt(sum) / 10800;
}

TEST_F(CleanEcg, prints_what_the_filter_did_and_writes_what_it_gave) {
    const Rows input = read_csv(RECORD);
    ASSERT_EQ(input.size(), 10800U);
    for (const auto &[cutoff, argument] : {std::pair{50.0, ""}, std::pair{70.0, " 70"}}) {
        const Outcome ran = run(std::string("'" RECORD "'") + argument);
        ASSERT_EQ(ran.status, 0) << ran.err;
        EXPECT_EQ(ran.err, "");

        TIIRFilter filter;
        initTIIRFilter(&filter, ptLowPass, cutoff, 360.0);
        Rows expected = input;
        std::vector<double> raw, clean;
        for (std::vector<double> &row : expected) {
            raw.push_back(row.at(1));
            clean.push_back(IIRFilter(&filter, row[1]));
            row.push_back(clean.back());
        }
        EXPECT_TRUE(read_csv(dir_ / "ecg_clean.csv") == expected) << "every digit reads back";

        const IIRCoeffs design = CalcIIRFilterCoeff(filter.Spec);
        const double gain = gain_db(design, 60, 360), raw_uv = printed(ran, "raw"), clean_uv = printed(ran, "clean");
        EXPECT_EQ(printed(ran, "samples"), 10800);
        EXPECT_EQ(printed(ran, "sampling rate"), 360);
        EXPECT_EQ(printed(ran, "requested"), cutoff);
        EXPECT_NEAR(printed(ran, "point, measured"), half_power_point(design, cutoff, 360), 6e-5);  // last digit 1e-4
        EXPECT_NEAR(printed(ran, "60 Hz, measured"), gain, 0.051);                                  // last digit 0.1
        EXPECT_NEAR(raw_uv, 1e3 * hum_rms(raw), 6e-4);                                              // last digit 1e-3
        EXPECT_NEAR(clean_uv, 1e3 * hum_rms(clean), 6e-4);
        // The record's ends differ; such a jump puts jump / (2 sin(pi 60 / 360)) = jump into each of the 121 bins.
        const double leak_uv = 1e3 * std::fabs(clean.back() - clean.front()) * std::sqrt(2.0 * 121) / 10800;
        EXPECT_NEAR(clean_uv, raw_uv * std::pow(10.0, gain / 20), leak_uv);
    }
}

TEST_F(CleanEcg, measures_long_and_slow_records_without_a_header) {
    std::ostringstream sine, slow;  // a sine of 1 mV has an rms of 1 / sqrt(2) mV, also in three parts of 50 s
    for (int i = 0; i < 150 * 250; ++i) sine << i / 250.0 << ',' << std::sin(2 * std::numbers::pi * 0.24 * i) << "\r\n";
    write_input(sine.str());
    const Outcome ran = run("in.csv 100");
    EXPECT_EQ(ran.status, 0) << ran.err;
    EXPECT_EQ(printed(ran, "samples"), 37500);
    EXPECT_EQ(printed(ran, "sampling rate"), 250);
    EXPECT_NEAR(printed(ran, "raw"), 1e3 / std::numbers::sqrt2, 0.01);

    for (int i = 0; i < 120; ++i) slow << i / 120.0 << ",1\n";
    write_input(slow.str());
    EXPECT_NE(run("in.csv").out.find("not measured"), std::string::npos);
}

TEST_F(CleanEcg, refuses_bad_input_in_one_line_and_leaves_no_output) {
    std::string good = "time_s,ecg_mV\n";
    for (int i = 0; i < 100; ++i) good += std::to_string(i / 360.0) + ",0.5\n";
    const struct {
        std::string text, arguments, complaint;
    } cases[] = {
        {good, "missing.csv", ": missing.csv: No such"},
        {good, ".", ": .: Is a directory"},
        {good, "in.csv 40 50", "too many arguments"},
        {good, "in.csv 40x", "40x: the cut-off"},
        {good, "in.csv ''", ": the cut-off"},
        {good, "in.csv nan", "nan: the cut-off"},
        {good, "in.csv 0", "0: the cut-off"},
        {good, "in.csv -40", "-40: the cut-off"},
        {good, "in.csv 180", "in.csv: the cut-off must be below"},
        {good, "in.csv 1e-9", "in.csv: the cut-off is too far below"},
        {"", "in.csv", "in.csv: too few samples"},
        {"# comment\ntime_s,ecg_mV\n0,1\n", "in.csv", "in.csv: too few samples"},
        {good.substr(0, good.find("0.100000")), "in.csv", "in.csv: too few samples"},
        {good + "1\n", "in.csv", "in.csv:102: expected two numbers"},
        {good + "\n", "in.csv", "in.csv:102: expected two numbers"},
        {good + "1,\n", "in.csv", "in.csv:102: expected two numbers"},
        {"0,1,2\n" + good, "in.csv", "in.csv:1: expected two numbers"},
        {"time_s,ecg_mV\n" + good, "in.csv", "in.csv:2: expected two numbers"},
        {good + "1,0.5 mV\n", "in.csv", "in.csv:102: expected two numbers"},
        {good + "1,inf\n", "in.csv", "in.csv:102: expected two numbers"},
        {good + "0.275,1\n", "in.csv", "in.csv:102: time does not increase"},
        {good + "1,1\n", "in.csv", "in.csv:102: not evenly sampled"},
        {good + "1," + std::string(2000, '0') + "\n", "in.csv", "in.csv:102: not text, or a line longer"},
        {good + std::string("1,\0"
                            "2\n",
                            5),
         "in.csv", "in.csv:102: not text"},
    };
    for (const auto &[text, arguments, complaint] : cases) {
        SCOPED_TRACE(arguments + ": " + complaint);
        write_input(text);
        const Outcome ran = run(arguments);
        EXPECT_EQ(ran.status, 2);
        EXPECT_NE(ran.err.find(complaint), std::string::npos) << ran.err;
        EXPECT_EQ(ran.err.find('\n') + 1, ran.err.size()) << ran.err;
        EXPECT_EQ(ran.out, "");
        EXPECT_EQ(std::distance(fs::directory_iterator(dir_), {}), 3) << "in.csv, out and err";
    }
}

TEST_F(CleanEcg, removes_its_output_when_it_cannot_complete_it) {
    fs::create_directory(dir_ / "ecg_clean.csv");
    const Outcome ran = run("'" RECORD "'");
    EXPECT_EQ(ran.status, 1);
    EXPECT_NE(ran.err.find("ecg_clean.csv: "), std::string::npos) << ran.err;
    EXPECT_EQ(ran.err.find('\n') + 1, ran.err.size()) << ran.err;
    EXPECT_EQ(std::distance(fs::directory_iterator(dir_), {}), 3) << "ecg_clean.csv, out and err";
}

}  // namespace
