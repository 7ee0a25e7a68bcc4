#include <nlohmann/json.hpp>

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
    write("y.csv", "a,b\n,1\n,-1e308\n");
    EXPECT_EQ(run("spectrum --rate 1 y.csv"), 2);
    EXPECT_EQ(err,
              "mensura: y.csv: a holds no numbers and is left out\n"
              "mensura: a sample of -1e+308 is too large: the squares of its spectrum overflow beyond 1e+140\n");
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

// python3-scipy: x = [float((t * t) % 17 - t % 3) for t in range(50)]; scipy.signal.periodogram(x, 10,
// window=numpy.hanning(52)[1:-1], detrend=False)[1][[0, 7, 25]]; scipy.signal.welch(x, 10, window=numpy.hanning(18)[1:-1],
// nperseg=16, noverlap=12, detrend='constant', average='mean')[1][[0, 3, 8]], and 'median'
TEST_F(Spectrum, densities_are_those_of_periodogram_and_welch) {
    std::string csv = "x\n";
    for (int t = 0; t < 50; ++t) csv += std::to_string(t * t % 17 - t % 3) + "\n";
    write("x.csv", csv);
    const std::string welch = "--average --no-mean --segment 16 --overlap 75";
    const std::vector<std::tuple<std::string, std::vector<std::size_t>, std::vector<double>>> cases{
        {"--window hanning", {0, 7, 25}, {166.60000000000002, 0.8311646695090663, 1.1669677008549025e-05}},
        {welch, {0, 3, 8}, {2.6044078769949657, 10.843850427148986, 0.015723585362148622}},
        {welch + " --median", {0, 3, 8}, {3.4822452841415106, 17.375966207278864, 0.019793165322331788}}};
    for (const auto &[options, bins, expected] : cases) {
        ASSERT_EQ(run("spectrum --density --rate 10Hz x.csv " + options), 0) << err;
        const auto table = rows(out);
        ASSERT_EQ(run("spectrum --db --density --rate 10Hz x.csv " + options), 0) << err;
        for (std::size_t i = 0; i < bins.size(); ++i) {
            EXPECT_NEAR(table.at(bins[i]).at(1), expected[i], 1e-12 * std::max(expected[i], 1.0)) << options << i;
            EXPECT_NEAR(rows(out).at(bins[i]).at(1), 10 * std::log10(table.at(bins[i]).at(1)), 1e-10);
        }
    }
}

// A segment of 700 samples is transformed by a chirp: the same as by the sum over the samples that tone takes.
TEST_F(Spectrum, every_length_of_a_segment_is_exact) {
    write_record(700);
    ASSERT_EQ(run("spectrum --average --window rectangle --segment 700" + input), 0) << err;
    const auto bins = rows(out);
    ASSERT_EQ(bins.size(), 351u);
    ASSERT_EQ(run("tone 0 1 7 173 200 350" + input), 0) << err;
    for (const std::vector<double> &tone : rows(out))
        EXPECT_NEAR(tone.at(1), bins.at(static_cast<std::size_t>(tone[0])).at(1), 1e-12) << tone[0];
}

// Bands count a bin by its share, so that those of a partition add up to the whole.
TEST_F(Spectrum, bands_have_the_rms_of_what_is_in_them) {
    std::string csv = "x\n";
    for (int t = 0; t < 1000; ++t)
        csv += std::to_string(0.5 * std::sin(0.64 * t) + 2 * std::sin(1.9 * t + 1)) + "\n";  // 20.4 and 60.5 Hz
    write("x.csv", csv);
    for (const std::string window : {"", "--window kaiser", "--window flattop", "--average"}) {
        ASSERT_EQ(run("spectrum --rate 200Hz --bands 10-45Hz,0.045kHz-1e2 x.csv " + window), 0) << err;
        EXPECT_EQ(out.substr(0, out.find("\nx,10,45,")), "column,from_Hz,to_Hz,rms");
        EXPECT_NEAR(rows(out).at(0).at(2), std::sqrt(0.125), 1e-4) << window;
        EXPECT_NEAR(rows(out).at(1).at(2), std::sqrt(2), 1e-3) << window;
    }
    for (const int n : {7, 8}) {
        write_record(n);
        ASSERT_EQ(run("spectrum --window rectangle --bands 0-.7,.7-1,1-3.3,3.3-" + std::to_string(n / 2.0) + input), 0);
        double sum = 0;
        for (std::size_t i = 0; i < 4; ++i) sum += std::pow(rows(out).at(i).at(2), 2);
        EXPECT_NEAR(sum, mean_square, 1e-12) << n;
    }
}

// Bins are 0.5 Hz apart.  Side lobes, the offset and rounding are no peaks.
TEST_F(Spectrum, peaks_lie_between_the_bins) {
    std::string csv = "x\n";
    for (int t = 0; t < 2000; ++t) {
        const double s = 2 * std::numbers::pi * t / 1000;
        csv += filled("@\n", {7 + 3 * std::sin(50.13 * s) + std::cos(120.77 * s) + 0.01 * std::sin(300.4 * s)});
    }
    write("x.csv", csv);
    const std::vector<double> frequencies{50.13, 120.77, 300.4}, amplitudes{3, 1, 0.01};
    for (const std::string options : {"", "--window blackman", "--window blackman-harris --no-mean", "--average"}) {
        ASSERT_EQ(run("spectrum --rate 1kHz --peaks 5 x.csv " + options), 0) << err;
        ASSERT_EQ(rows(out).size(), 3u) << options << out;
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_NEAR(rows(out)[i].at(0), frequencies[i], 0.5e-3 * (options == "--average" ? 4 : 1)) << options;
            EXPECT_NEAR(rows(out)[i].at(1), amplitudes[i], 1e-3 * amplitudes[i]) << options;
        }
    }
    ASSERT_EQ(run("spectrum --rate 1kHz --peaks 1 --from 200Hz --json x.csv"), 0) << err;
    const auto peaks = nlohmann::json::parse(out).at("columns").at(0).at("peaks");
    ASSERT_EQ(peaks.size(), 1u);
    EXPECT_NEAR(peaks[0].at("frequency_Hz"), 300.4, 1e-3);
}

TEST_F(Spectrum, reports_show_what_lies_between_two_frequencies) {
    write_record(1000);
    ASSERT_EQ(run("spectrum --db --from 199.5Hz --to 0.202kHz" + input), 0) << err;
    EXPECT_EQ(column(rows(out), 0), (std::vector<double>{200, 201, 202}));
    const std::vector<double> sine = column(rows(out), 2);
    ASSERT_EQ(run("spectrum --db --from 199.5Hz --to 0.202kHz --json" + input), 0) << err;
    const auto report = nlohmann::json::parse(out);
    EXPECT_EQ(report.at("frequency_Hz"), (std::vector<double>{200, 201, 202}));
    EXPECT_EQ(report.at("columns").at(1).at("amplitude_dB"), sine);
    expect_refusals("spectrum" + input, {{"--to 501Hz", "within 0 and 500 Hz"},
                                         {"--from 3.2 --to 3.4", "no frequency lies between"},
                                         {"--bands 5-4", "5 Hz to 4 Hz must lie within 0 and 500 Hz"},
                                         {"--bands 5", "\"5\" is not a band"},
                                         {"--peaks 0", "between 1 and 1000"},
                                         {"--average --segment 1001", "1000 samples in a row"},
                                         {"--average --overlap 100", "between 0 and 99"},
                                         {"--median", "belong to --average"}});
}

// The mean over time of the powers in a spectrogram is what --average gives.  Also of a sound, which is read in blocks: its
// header, of one channel with 8 bits at 8000 Hz, says that it goes on to its end.
TEST_F(Spectrum, spectrogram_is_welch_over_time) {
    write("x.wav", std::string("RIFF\xFF\xFF\xFF\xFFWAVEfmt \x10\0\0\0\1\0\1\0\x40\x1F\0\0\x40\x1F\0\0\1\0\x08\0"
                               "data\xFF\xFF\xFF\xFF",
                               44) +
                       std::string(read(RECORD), 0, 20001));
    const std::string options = " --power --segment 512 --overlap 60 ";
    for (const std::string file : {"x.wav", RECORD}) {
        ASSERT_EQ(run("spectrum --average" + options + file), 0) << err;
        const auto welch = rows(out);
        ASSERT_EQ(shell("cat " + file + " | $M spectrogram" + options), 0) << err;
        const auto table = rows(out);
        const std::size_t segments = table.size() / 257;
        std::vector<double> means(257);
        for (std::size_t i = 0; i < table.size(); ++i) means[i % 257] += table[i].at(2) / static_cast<double>(segments);
        for (std::size_t k = 0; k < 257; ++k) EXPECT_NEAR(means[k], welch.at(k).at(1), 1e-12 * means[1]) << file << k;
        const double rate = file == RECORD ? 360 : 8000;
        EXPECT_NEAR(table.at(257).at(0), (256 + 205) / rate, 1e-12);  // a step of 512 - 307 samples
    }
    expect_refused("spectrogram --segment 20002 x.wav", "has 20001 samples");
    expect_refused("spectrogram --plot x.wav", "colours");
}

// A sine in whose middle a third of the rows are gone.
TEST_F(Spectrum, segments_lie_between_the_holes) {
    std::string csv = "time,x\n";
    for (int t = 0; t < 3000; t += t == 999 ? 1001 : 1)
        csv += filled("@,@\n", {t / 100.0, std::sin(0.2 * std::numbers::pi * t)});
    write("x.csv", csv);
    const std::string options = " --gaps split x.csv --segment 500 --no-mean ";
    ASSERT_EQ(run("spectrum --average --peaks 1" + options), 0) << err;
    EXPECT_NEAR(rows(out).at(0).at(0), 10, 1e-4);
    EXPECT_NEAR(rows(out).at(0).at(1), 1, 1e-4);
    ASSERT_EQ(run("spectrogram --from 9.99Hz --to 10.01Hz" + options), 0) << err;
    EXPECT_EQ(column(rows(out), 0), (std::vector<double>{2.5, 5, 7.5, 22.5, 25, 27.5}));
    EXPECT_EQ(run("tone 5 --gaps split x.csv"), 2);
    EXPECT_HAS(err, "has holes, and no phase goes on behind them");
    EXPECT_EQ(run("spectrum --gaps split x.csv"), 2);
    EXPECT_HAS(err, "--average takes segments between");
}

TEST_F(Spectrum, spectrograms_have_bounded_pictures) {
    ASSERT_EQ(shell("seq 300000 | \"$M\" spectrogram --segment 1000 --overlap 90 --rate 1Hz --plot-script"), 0) << err;
    EXPECT_HAS(out, "with image");
    EXPECT_LT(out.size(), 800u * 400u * 8);
    ASSERT_EQ(run("spectrogram --json --to 10Hz --plot=x.svg " RECORD), 0) << err;
    const auto report = nlohmann::json::parse(out);
    EXPECT_EQ(report.at("frequency_Hz").size(),
              report.at("segments").at(82).at("columns").at(0).at("amplitude").size());
    EXPECT_HAS(read("x.svg"), "<image");
}
