// mensura design

#include <array>
#include <complex>
#include <nlohmann/json.hpp>
#include <numbers>

#include "program.h"

using nlohmann::json, std::numbers::pi;

class Design : public CommandLine {
  protected:
    json design(const std::string &arguments) {
        EXPECT_EQ(run("design " + arguments + " --json"), 0) << err;
        return json::parse(out, nullptr, false);
    }
};

TEST_F(Design, units_mean_the_same_frequency) {
    ASSERT_EQ(run("design lowpass --leading-sections --cutoff 40 --rate 360"), 0);
    const std::string plain = out;
    for (const char *call :
         {"--cutoff 40Hz --rate 360Hz", "--cutoff 0.04kHz --rate 0.36kHz", "--cutoff '40 Hz' --rate 3.6e2",
          "--cutoff 40000mHz --rate=0.00036MHz", "--cutoff +40.0 --rate 360"}) {
        EXPECT_EQ(run(std::string("design low-pass --leading-sections ") + call), 0);
        EXPECT_EQ(out, plain) << call;
    }
    EXPECT_EQ(err, "");
}

// The sections are the library's to the last bit. With SciPy: brentq(lambda f: (h(f) / h(f0))**2 - 0.5, ...),
// h = lambda f: abs(sosfreqz(sos, [f], fs=8000)[1][0]), and max(abs(np.roots(s[3:])).max() for s in sos).
TEST_F(Design, json_holds_the_cascade_and_what_it_achieves) {
    const std::string types[] = {"lowpass", "highpass", "bandpass", "notch"};
    const std::vector<double> half_power[] = {{382.69024528889605},
                                              {2158.648214371564},
                                              {961.2157922672335, 1040.0026325678527},
                                              {742.6626769941643, 1322.175990451445}};
    const double pole_radius[] = {0.723382265898913, 0.6562260813640889, 0.9669984823874971, 0.9552187575419783};
    for (int type = ptLowPass; type <= ptNotch; ++type) {
        TIIRFilter filter;
        initTIIRFilter(&filter, type, 1000, 8000);
        filter.Spec.NormBandwidth = 2 * 200 / 8000.0;
        filter.Spec.Proto.Family = pfPapoulis;
        const IIRCoeffs c = CalcIIRFilterCoeff(filter.Spec);
        const json document = design(types[type] + " --leading-sections --cutoff 1kHz --rate 8kHz --family papoulis" +
                                     (type == ptBandPass || type == ptNotch ? " --bandwidth 0.2kHz" : ""));
        const json &sections = document["sections"], &achieved = document["achieved"];
        EXPECT_EQ(sections.size(), static_cast<std::size_t>(c.NumSections));
        for (std::size_t k = 0; k < sections.size(); ++k) {
            const json &s = sections[k];
            EXPECT_EQ((std::vector<double>{s["a0"], s["a1"], s["a2"], s["b0"], s["b1"], s["b2"]}),
                      (std::vector<double>{c.a0[k], c.a1[k], c.a2[k], c.b0[k], c.b1[k], c.b2[k]}));
        }
        EXPECT_NEAR(achieved["largest_pole_radius"], pole_radius[type], 1e-12);
        ASSERT_EQ(achieved["half_power_Hz"].size(), half_power[type].size());
        for (std::size_t i = 0; i < half_power[type].size(); ++i)
            EXPECT_NEAR(achieved["half_power_Hz"][i], half_power[type][i], 1e-8);
    }
}

TEST_F(Design, design_names_every_clamped_value_and_unusable_designs) {
    EXPECT_EQ(run("design lowpass --leading-sections --cutoff 40Hz --rate 360Hz --poles 25 --ripple 3dB"), 0);
    const std::string range = " is outside the range of butterworth: its prototype is made with ";
    EXPECT_EQ(err, "mensura: --poles 25" + range + "20\nmensura: --ripple 3" + range + "1\n");
    for (const auto &[options, warning] :
         {std::pair{"40 --family inverse-chebyshev --poles 12", "gains up to 13.9 dB in its stop band"},
          {"40 --poles 60", "all zero"},
          {"1e-6", "far below the sampling rate"}}) {
        const json document = design(std::string("lowpass --leading-sections --rate 360 --cutoff ") + options);
        EXPECT_HAS(err, warning);
        EXPECT_HAS(document["warnings"].dump(), warning);
    }
}

// From order 16 on the ripple of a Chebyshev design is limited, at 20 poles to 0.1 dB.
TEST_F(Design, clamped_ripple_is_reported_in_every_form) {
    const std::string call =
        "lowpass --leading-sections --cutoff 40Hz --rate 360Hz --family chebyshev --poles 20 --ripple ";
    ASSERT_EQ(run("design " + call + "1dB"), 0);
    EXPECT_HAS(out, "  ripple                    0.1 dB (asked: 1 dB)\n");
    EXPECT_EQ(err, "mensura: --ripple 1 is outside the range of chebyshev: its prototype is made with 0.1\n");
    const json clamped = design(call + "1dB"), same = design(call + "0.1dB");
    EXPECT_EQ(clamped["asked"]["ripple_dB"], 1);
    EXPECT_EQ(clamped["designed"]["ripple_dB"], 0.1);
    EXPECT_EQ(clamped["sections"], same["sections"]);
}

TEST_F(Design, response_is_that_of_the_library) {
    constexpr int kPoints = 300;
    TIIRFilter filter;
    initTIIRFilter(&filter, ptHighPass, 40, 360);
    std::array<double, kPoints> re, im;
    IIRFreqResponse(filter.Coeffs, filter.Coeffs.NumSections, re.data(), im.data(), kPoints);
    ASSERT_EQ(run("design highpass --leading-sections --cutoff 40Hz --rate 360Hz --response 300"), 0);
    const auto table = rows(out);
    ASSERT_EQ(table.size(), re.size());
    for (std::size_t i = 1; i < re.size(); ++i) {  // at DC, a zero, the phase means nothing
        EXPECT_DOUBLE_EQ(table[i][0], static_cast<double>(i) * 180 / kPoints);
        const std::complex<double> h = std::polar(std::pow(10, table[i][1] / 20), table[i][2] * pi / 180);
        EXPECT_LT(std::abs(h - std::complex<double>(re[i], im[i])), 1e-13 * std::abs(h) + 1e-18);  // near the zeros
    }
    expect_refused("design highpass --leading-sections --cutoff 40Hz --rate 360Hz --response 0", "--response");
}
