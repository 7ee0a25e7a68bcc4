#include <cmath>
#include <numbers>
#include <random>

#include "program.h"

class Spectrum : public CommandLine {
  protected:
    // n samples a second: noise with an offset, text, and a sine of amplitude 3 at 200 Hz.
    void write_record(int n) {
        std::mt19937 noise(1);
        std::ostringstream csv("\"a,\"\"b\"\"\",note,sine\n", std::ios::ate);
        csv.precision(17);
        mean_square = 0;
        for (int i = 0; i < n; ++i) {
            const double x = 1 + static_cast<double>(noise()) / 4294967296.0;
            mean_square += x * x / n;
            csv << x << ",text," << 3 * std::sin(2 * std::numbers::pi * 200 * i / n) << '\n';
        }
        write("x.csv", csv.str());
        input = " x.csv --rate " + std::to_string(n) + "Hz ";
    }
    double sum_of_second_column() const {
        double sum = 0;
        for (const std::vector<double> &row : rows(out)) sum += row.at(1);
        return sum;
    }
    double mean_square = 0;
    std::string input;
};

constexpr const char *kWindows[] = {"rectangle", "kaiser",           "sinc",     "hann",  "Hamming",       "flattop",
                                    "blackman",  "Blackman_Nuttall", "triangle", "gauss", "kaiser-bessel", "sine"};

// The side lobes of the line's mirror image, 400 bins away, lie below -80 dB.
TEST_F(Spectrum, a_sine_shows_its_amplitude_whatever_the_window_and_length) {
    for (const int n : {1024, 1000, 999}) {
        write_record(n);
        for (const std::string window : kWindows) {
            ASSERT_EQ(run("spectrum" + input + "--window " + window), 0) << err;
            EXPECT_NEAR(rows(out).at(200).at(2), 3, 3e-4) << n << window;
            ASSERT_EQ(run("tone 200Hz" + input + "--power --window " + window), 0) << err;
            EXPECT_NEAR(rows(out).at(0).at(2), 4.5, 1e-3) << n << window;
        }
    }
}

// Also with what lies at 0 Hz and, unless the length is odd, at Nyquist.
TEST_F(Spectrum, powers_add_up_to_the_mean_square) {
    for (const int n : {1, 7, 8, 999, 1000, 1024, 40000}) {
        write_record(n);
        ASSERT_EQ(run("spectrum --power" + input), 0) << err;
        EXPECT_EQ(out.substr(0, out.find('\n')), "frequency_Hz,\"a,\"\"b\"\"\",sine");
        const double padding = n == 40000 ? 65536.0 / n : 1;  // spreads a line over as many more bins
        EXPECT_NEAR(sum_of_second_column(), mean_square * padding, 1e-12 * mean_square) << n;
    }
    EXPECT_EQ(err, "mensura: 40000 samples are padded with zeros to 65536\n");
}

TEST_F(Spectrum, long_records_average_the_power_of_equal_parts) {
    ASSERT_EQ(shell("for a in 1 7; do yes \"$a,0,-$a,0\" | head -262144; done | tr , '\\n' |"
                    "\"$M\" spectrum --rate 4Hz --plot-script -o s.csv"),
              0);
    EXPECT_NEAR(rows(read("s.csv")).at(1 << 18).at(1), 5, 1e-12);  // sqrt((1 + 49) / 2)
    EXPECT_HAS(err, "2 parts of 1048576");
    EXPECT_LT(out.size(), 1u << 17);  // a point for a pixel column, not for a bin
}

TEST_F(Spectrum, tones_are_the_bins_of_the_spectrum) {
    write_record(1024);
    for (const std::string options : {"", "--no-mean", "--power"}) {
        ASSERT_EQ(run("spectrum" + input + options), 0);
        const auto bins = rows(out);
        if (options == "--no-mean") {
            EXPECT_NEAR(bins.at(0).at(1), 0, 1e-12);
        }
        ASSERT_EQ(run("tone 0 3 .2kHz .509kHz 512" + input + options), 0) << err;
        for (const std::vector<double> &tone : rows(out))
            EXPECT_NEAR(tone.at(1), bins.at(static_cast<std::size_t>(tone[0])).at(1), 1e-10) << options << tone[0];
    }
    expect_refused("tone 513" + input, "within 0 and 512 Hz");
    expect_refused("tone 5 4m" + input, "unknown unit \"m\"");
}

TEST_F(Spectrum, windows_have_their_shape_and_unit_mean) {
    ASSERT_EQ(run("window hamming 5"), 0);
    EXPECT_NEAR(rows(out).at(1).at(1), 0.77, 1e-15);  // numpy.hamming(7)[2]
    for (const std::string window : kWindows) {
        ASSERT_EQ(run("window --unity-gain " + window + " 100"), 0);
        EXPECT_NEAR(sum_of_second_column(), 100, 1e-11) << window;
    }
    ASSERT_EQ(run("window kaiser 3 --beta 12"), 0);
    EXPECT_HAS(err, "--beta 12 is outside the range of 0 to 10: 10 is taken");
    expect_refused("window cosine 3", "is none of rectangle, hanning, hann, hamming");
}
