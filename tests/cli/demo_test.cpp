// mensura demo

#include "program.h"

// SciPy 1.10.1, with numpy as np, scipy.signal as s, x the record, fs = 360, d = 18 and
//     h = np.zeros_like(x); h[d:-d] = x[d:-d] - (x[:-2*d] + x[2*d:]) / 2
//     p = s.find_peaks(h, height=1, distance=73)[0]                                       46 beats
// The notch is butter(2, ...) with the half-power points of both passes together 4 Hz apart, the low-pass butter(6, ...)
// with theirs, or that of one pass, at 40 Hz; the heights are those of h at the largest sample within 3 of each peak.
TEST_F(CommandLine, demo_frees_the_beats_from_hum_and_says_what_it_costs) {
    ASSERT_EQ(run("demo -o ecg.csv"), 0) << err;
    EXPECT_EQ(err, "");
    EXPECT_HAS(out, "46 beats");
    const auto numbers = [this](const std::string &label) {
        std::vector<double> found(4, -1);
        const std::size_t at = out.find(label);
        EXPECT_NE(at, std::string::npos) << label;
        std::istringstream row(out.substr(std::min(at, out.size())).substr(label.size()));
        for (double &number : found) row >> number;
        return found;
    };
    EXPECT_EQ(numbers("R peak, median height (mV)"), (std::vector{1.736, 1.736, 1.666, 1.636}));
    EXPECT_EQ(numbers("kept of a beat, median (%)"), (std::vector{100.0, 100.0, 97.7, 95.4}));
    EXPECT_EQ(numbers("kept of a beat, worst (%)"), (std::vector{100.0, 99.8, 92.7, 90.7}));
    const std::vector<double> hum = numbers("60 Hz hum, amplitude (uV)"), delay = numbers("delay (ms)");
    EXPECT_LT(hum[1], 1e-3 * hum[0]);
    EXPECT_NEAR(delay[2], 0, 0.01);
    EXPECT_GT(delay[3], 14.7);  // that of a slow signal: 3.8637 / (2 fs tan(pi fc / fs))

    const auto table = rows(read("ecg.csv"));
    const std::vector<double> raw = column(table, 1);
    ASSERT_EQ(raw.size(), 10800u);
    mensura_sos_request notch;
    mensura_sos_default_request(&notch, sizeof notch);
    notch.pass_type = ptNotch;
    notch.poles = 2;
    notch.passes = 2;
    notch.band = MENSURA_SOS_CENTRE;
    notch.rate = 360;
    notch.edge[0] = 60;
    notch.edge[1] = 4;
    EXPECT_EQ(column(table, 2), both_ways(designed(notch), raw));
    EXPECT_EQ(column(table, 3), zero_phase(raw));
    EXPECT_EQ(column(table, 4), filtered(raw));
    EXPECT_EQ(shell("xmllint --noout ecg.svg && grep -o '>lowpass' ecg.svg | wc -l"), 0) << err;
    EXPECT_GE(std::strtol(out.c_str(), nullptr, 10), 2) << "in both panels";
}
