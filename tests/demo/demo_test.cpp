// Runs the example program as a user would, each test in a directory of its own.

#include <gtest/gtest.h>
#include <mensura/iir.h>
#include <sys/wait.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <numbers>
#include <sstream>

namespace {

using std::filesystem::is_regular_file, std::filesystem::path, std::numbers::pi;

std::string contents(const path &file) {
    return {std::istreambuf_iterator<char>(std::ifstream(file, std::ios::binary).rdbuf()), {}};
}

class CleanEcg : public testing::Test {
  protected:
    void SetUp() override { ASSERT_NE(mkdtemp(dir_.data()), nullptr); }
    void TearDown() override { std::filesystem::remove_all(dir_); }

    void write_input(const std::string &text) const { std::ofstream(dir_ + "/in.csv", std::ios::binary) << text; }
    int run(const std::string &arguments) {
        const int result = std::system(("cd '" + dir_ + "' && '" CLEAN_ECG "' " + arguments + " >out 2>err").c_str());
        out_ = contents(dir_ + "/out");
        return WIFEXITED(result) ? WEXITSTATUS(result) : -1;
    }
    double printed(const std::string &label) const {
        const std::size_t at = out_.find(label);
        return at == std::string::npos ? std::nan("") : std::stod(out_.substr(at + label.size()));
    }
    void expect_one_line_and_no_output(const std::string &complaint) const {
        const std::string err = contents(dir_ + "/err");
        EXPECT_NE(err.find(complaint), std::string::npos) << err;
        EXPECT_EQ(err.find('\n') + 1, err.size()) << err;
        EXPECT_EQ(out_, "");
        for (const char *file : {"/ecg_clean.csv", "/ecg_clean.csv.tmp"}) EXPECT_FALSE(is_regular_file(dir_ + file));
    }

    std::string dir_ = (std::filesystem::temp_directory_path() / "clean_ecg_").string() + std::string(6, 'X'), out_;
};

// All numbers below the header, row by row.
std::vector<double> numbers_in(const std::string &file) {
    std::string text = contents(file);
    std::replace(text.begin(), text.end(), ',', ' ');
    std::istringstream in(text.substr(text.find("mV\n") + 3));
    return {std::istream_iterator<double>(in), {}};
}

// |b0 + b1 z^-1 + b2 z^-2|^2 = b0^2 + b1^2 + b2^2 + 2 b1 (b0 + b2) cos w + 2 b0 b2 cos 2w: no complex arithmetic.
double power(double b0, double b1, double b2, double w) {
    return b0 * b0 + b1 * b1 + b2 * b2 + 2 * b1 * (b0 + b2) * std::cos(w) + 2 * b0 * b2 * std::cos(2 * w);
}

double gain_db(const IIRCoeffs &c, double f) {
    const double w = 2 * pi * f / 360;
    double db = 0;
    for (int k = 0; k < c.NumSections; ++k)
        db += 10 * std::log10(power(c.b0[k], c.b1[k], c.b2[k], w) / power(1, c.a1[k], c.a2[k], w));
    return db;
}

// In uV, from 58 to 62 Hz: bins 1740 to 1860 of 30 s, the phase reduced in integers.
double hum_rms(const std::vector<double> &x) {
    double sum = 0;
    for (std::size_t k = 1740; k <= 1860; ++k) {
        std::complex<double> bin;
        for (std::size_t i = 0; i < 10800; ++i)
            bin += x[i] * std::polar(1.0, -2 * pi * static_cast<double>(i * k % 10800) / 10800);
        sum += 2 * std::norm(bin);
    }
    return 1e3 * std::sqrt(sum) / 10800;
}

TEST_F(CleanEcg, prints_what_the_filter_did_and_writes_what_it_gave) {
    const std::vector<double> input = numbers_in(RECORD);
    ASSERT_EQ(input.size(), 2 * 10800U);
    for (const double cutoff : {50.0, 70.0}) {
        ASSERT_EQ(run(cutoff == 50.0 ? "'" RECORD "'" : "'" RECORD "' 70"), 0);
        EXPECT_EQ(contents(dir_ + "/err"), "");

        TIIRFilter filter;
        initTIIRFilter(&filter, ptLowPass, cutoff, 360.0);
        std::vector<double> raw, clean, rows;
        for (std::size_t i = 0; i < input.size(); i += 2) {
            raw.push_back(input[i + 1]);
            clean.push_back(IIRFilter(&filter, input[i + 1]));
            rows.insert(rows.end(), {input[i], raw.back(), clean.back()});
        }
        EXPECT_TRUE(numbers_in(dir_ + "/ecg_clean.csv") == rows) << "every bit reads back";

        const IIRCoeffs design = CalcIIRFilterCoeff(filter.Spec);
        const double corner = printed("-3 dB point, measured");
        EXPECT_EQ(printed("samples"), 10800);
        EXPECT_EQ(printed("sampling rate"), 360);
        EXPECT_EQ(printed("requested"), cutoff);
        EXPECT_GT(gain_db(design, corner - 6e-5), 10 * std::log10(0.5));  // printed to 1e-4 Hz
        EXPECT_LT(gain_db(design, corner + 6e-5), 10 * std::log10(0.5));
        EXPECT_NEAR(printed("60 Hz, measured"), gain_db(design, 60), 0.051);  // printed to 0.1 dB
        EXPECT_NEAR(printed("raw"), hum_rms(raw), 6e-4);                      // printed to 1e-3 uV
        EXPECT_NEAR(printed("clean"), hum_rms(clean), 6e-4);
        // The record's ends differ; at 60 Hz that puts jump / (2 sin(pi 60 / 360)) = jump into each of the 121 bins.
        const double leak_uv = 1e3 * std::fabs(clean.back() - clean.front()) * std::sqrt(2.0 * 121) / 10800;
        EXPECT_NEAR(printed("clean"), printed("raw") * std::pow(10.0, gain_db(design, 60) / 20), leak_uv);
    }
}

TEST_F(CleanEcg, measures_a_long_record_in_parts) {
    std::ostringstream sine;  // 1 mV at 60 Hz: an rms of 1 / sqrt(2) mV, here over three parts of 50 s
    for (int i = 0; i < 150 * 250; ++i) sine << i / 250.0 << ',' << std::sin(2 * pi * 0.24 * i) << "\r\n";
    write_input(sine.str());
    EXPECT_EQ(run("in.csv 100"), 0);
    EXPECT_EQ(printed("samples"), 37500);
    EXPECT_EQ(printed("sampling rate"), 250);
    EXPECT_NEAR(printed("raw"), 1e3 / std::numbers::sqrt2, 0.01);  // six digits in, three decimals out
}

TEST_F(CleanEcg, complains_in_one_line_and_leaves_no_output) {
    std::string good = "time_s,ecg_mV\n";
    for (int i = 0; i < 100; ++i) good += std::to_string(i / 360.0) + ",0.5\n";
    const std::string cases[][3] = {
        {good, "missing.csv", ": missing.csv: No such"},
        {good, ".", ": .: Is a directory"},
        {good, "in.csv 40 50", "too many arguments"},
        {good, "in.csv 40x", "40x: the cut-off"},
        {good, "in.csv nan", "nan: the cut-off"},
        {good, "in.csv 0", "0: the cut-off"},
        {good, "in.csv 180", "in.csv: the cut-off must be below"},
        {good, "in.csv 1e-9", "in.csv: the cut-off is too far below"},
        {"", "in.csv", "in.csv: too few samples"},
        {good.substr(0, good.find("0.100000")), "in.csv", "in.csv: too few samples"},
        {good + "1\n", "in.csv", "in.csv:102: expected two numbers"},
        {"# comment\n0,1,2\n" + good, "in.csv", "in.csv:2: expected two numbers"},
        {good + "1,high\n", "in.csv", "in.csv:102: expected two numbers"},
        {good + "1,inf\n", "in.csv", "in.csv:102: expected two numbers"},
        {good + "0.275,1\n", "in.csv", "in.csv:102: time does not increase"},
        {good + "1,1\n", "in.csv", "in.csv:102: not evenly sampled"},
        {good + "1," + std::string(2000, '0') + "\n", "in.csv", "in.csv:102: not text, or a line longer"},
    };
    for (const auto &[text, arguments, complaint] : cases) {
        SCOPED_TRACE(arguments + " " + complaint);
        write_input(text);
        EXPECT_EQ(run(arguments), 2);
        expect_one_line_and_no_output(complaint);
    }

    std::filesystem::create_directory(dir_ + "/ecg_clean.csv");
    EXPECT_EQ(run("'" RECORD "'"), 1);
    expect_one_line_and_no_output(": ecg_clean.csv: ");  // complete, but not to be renamed
}

}  // namespace
