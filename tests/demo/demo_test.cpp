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
    double printed(const std::string &label, std::size_t column = 0) const {
        const std::size_t at = out_.find(label);
        std::istringstream in(at == std::string::npos ? "" : out_.substr(at + label.size()));
        const std::vector<double> row{std::istream_iterator<double>(in), {}};
        return column < row.size() ? row[column] : std::nan("");
    }
    void expect_one_line_and_no_output(const std::string &complaint) const {
        const std::string err = contents(dir_ + "/err");
        EXPECT_NE(err.find(complaint), std::string::npos) << err;
        EXPECT_EQ(err.find('\n') + 1, err.size()) << err;
        EXPECT_EQ(out_, "");
        for (const char *file : {"/ecg_clean.csv", "/ecg_clean.csv.tmp", "/ecg_spectrum.csv", "/ecg_spectrum.csv.tmp"})
            EXPECT_FALSE(is_regular_file(dir_ + file)) << file;
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

// At DC the filter lags by the sum of 2 zeta, here 4 cos 15 deg + 2 cos 45 deg, over 2 fs tan(pi fc / fs).
double lag_ms(double cutoff) { return 5.27792 / 0.72 / std::tan(pi * cutoff / 360); }

// Amplitude in bin k of 16384 of 30 s under a Hann window, the phase reduced in integers.
double amplitude(const std::vector<double> &x, std::size_t k) {
    std::complex<double> bin;
    for (std::size_t i = 0; i < 10800; ++i)
        bin += x[i] * (1 - std::cos(2 * pi * static_cast<double>(i + 1) / 10801)) *
               std::polar(2.0 / 10801, -2 * pi * static_cast<double>(i * k % 16384) / 16384);
    return std::abs(bin);
}

TEST_F(CleanEcg, prints_what_the_filter_did_and_writes_what_it_gave) {
    const std::vector<double> input = numbers_in(RECORD);
    ASSERT_EQ(input.size(), 2 * 10800U);
    for (const double cutoff : {50.0, 70.0}) {
        ASSERT_EQ(run(cutoff == 50.0 ? "'" RECORD "'" : "'" RECORD "' 70"), 0);
        EXPECT_EQ(contents(dir_ + "/err"), "");

        TIIRFilter filter;
        initTIIRFilter(&filter, ptLowPass, cutoff, 360.0);
        std::vector<double> signals[3], rows;
        for (std::size_t i = 1; i < input.size(); i += 2) signals[0].push_back(input[i]);
        for (const double x : signals[0]) signals[1].push_back(IIRFilter(&filter, x));
        filter.Primed = 0;
        signals[2] = signals[0];
        IIRFilterZeroPhase(&filter, signals[2].data(), nullptr, 10800);
        for (std::size_t i = 0; i < 10800; ++i)
            rows.insert(rows.end(), {input[2 * i], signals[0][i], signals[1][i], signals[2][i]});
        EXPECT_TRUE(numbers_in(dir_ + "/ecg_clean.csv") == rows) << "every bit reads back";

        const IIRCoeffs design = CalcIIRFilterCoeff(filter.Spec);
        const double corner = printed("-3 dB point, measured");
        EXPECT_EQ(printed("samples"), 10800);
        EXPECT_EQ(printed("sampling rate"), 360);
        EXPECT_EQ(printed("requested"), cutoff);
        EXPECT_GT(gain_db(design, corner - 6e-5), 10 * std::log10(0.5));  // printed to 1e-4 Hz
        EXPECT_LT(gain_db(design, corner + 6e-5), 10 * std::log10(0.5));
        EXPECT_NEAR(printed("60 Hz, measured"), gain_db(design, 60), 0.051);  // printed to 0.1 dB

        const std::vector<double> spectrum = numbers_in(dir_ + "/ecg_spectrum.csv");
        ASSERT_EQ(spectrum.size(), 4 * 8193U);
        EXPECT_LT(spectrum[1], 0.01);  // the mean, -0.27 mV, does not count
        for (std::size_t k = 0; k <= 8192; ++k) ASSERT_EQ(spectrum[4 * k], static_cast<double>(k) * 360 / 16384);
        for (std::size_t s = 0; s < 3; ++s) {
            double sum = 0;  // 58 to 62 Hz are bins 2640 to 2821; the window has a noise bandwidth of 1.5 / 30 s
            for (std::size_t k = 2640; k <= 2821; ++k) {
                ASSERT_NEAR(spectrum[4 * k + 1 + s], amplitude(signals[s], k), 1e-10);  // mV; the mean leaks 2e-11
                sum += std::pow(spectrum[4 * k + 1 + s], 2) / 2 * 10801 / 1.5 / 16384;
            }
            EXPECT_NEAR(printed("rms 58-62 Hz (uV)", s), 1e3 * std::sqrt(sum), 6e-4);  // printed to 1e-3 uV
        }
        EXPECT_LT(std::fabs(printed("R peaks (ms)", 2)), 1e3 / 360);  // the flanks differ, which moves the tops
        EXPECT_NEAR(printed("R peaks (ms)", 1) - printed("R peaks (ms)", 2), lag_ms(cutoff), 0.5e3 / 360);
    }
}

TEST_F(CleanEcg, finds_beats_of_either_sign_and_how_far_they_move) {
    for (const double sign : {1.0, -1.0}) {
        std::ostringstream record;  // symmetric beats, one a second, on a drifting baseline
        for (int i = 0; i < 20 * 360; ++i) {
            const double beat = std::exp(-1e3 * std::pow(std::remainder(i / 360.0 - 0.3, 1), 2));
            record << i / 360.0 << ',' << 2 * std::sin(i / 1800.0) + sign * beat << '\n';
        }
        write_input(record.str());
        EXPECT_EQ(run("in.csv"), 0);
        EXPECT_EQ(printed("R peaks  "), 20);
        EXPECT_NEAR(printed("R peaks (ms)", 1), lag_ms(50), 0.1);
        EXPECT_NEAR(printed("R peaks (ms)", 2), 0, 0.02);
    }
}

TEST_F(CleanEcg, shows_the_amplitude_and_rms_of_a_sine) {
    std::ostringstream sine;  // 1 mV in bin 15729 of 65536, at 60.0014 Hz
    for (int i = 0; i < 150 * 250; ++i) sine << i / 250.0 << ',' << std::sin(2 * pi * 15729 / 65536 * i) << "\r\n";
    write_input(sine.str());
    EXPECT_EQ(run("in.csv 100"), 0);
    EXPECT_EQ(printed("sampling rate"), 250);
    EXPECT_NEAR(printed("rms 58-62 Hz (uV)"), 1e3 / std::numbers::sqrt2, 0.01);
    EXPECT_NE(out_.find("no R peaks found"), std::string::npos);
    EXPECT_NEAR(numbers_in(dir_ + "/ecg_spectrum.csv").at(4 * 15729 + 1), 1, 1e-5);  // six digits in
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

    for (const std::string file : {"ecg_spectrum.csv.tmp", "ecg_spectrum.csv", "ecg_clean.csv"}) {
        std::filesystem::create_directory(dir_ + '/' + file);
        EXPECT_EQ(run("'" RECORD "'"), 1);
        expect_one_line_and_no_output(": " + file + ": ");
    }
}

}  // namespace
