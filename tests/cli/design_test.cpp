// mensura design

#include <mensura/sos.h>

#include <algorithm>
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

    // The gain in dB of the sections that a design has printed.
    static double gain(const json &document, double frequency) {
        const std::complex<double> z =
            std::polar(1.0, -2 * pi * frequency / document["asked"]["rate_Hz"].get<double>());
        std::complex<double> h = 1;
        for (const json &s : document["sections"])
            h *= (s["b0"].get<double>() + z * (s["b1"].get<double>() + z * s["b2"].get<double>())) /
                 (1.0 + z * (s["a1"].get<double>() + z * s["a2"].get<double>()));
        return 20 * std::log10(std::abs(h));
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

TEST_F(Design, edges_have_the_level_asked_for) {
    struct Case {
        const char *call;
        std::vector<double> edges;  // Hz
        double level;               // dB, of one pass, relative to the gain at `reference`
        double reference;           // Hz
    };
    constexpr double kHalf = -3.010299956639812;
    // The root x of tan(pi x/360) tan(pi (x + 2)/360) = tan(pi 50/360)^2, by bisection in Python.
    constexpr double lower = 49.007321947;
    for (const auto &[call, edges, level, reference] :
         {Case{"lowpass --cutoff 40Hz", {40}, kHalf, 0},
          {"lowpass --cutoff 40Hz --family elliptic --poles 5 --at -0.5dB", {40}, -0.5, 0},
          {"lowpass --cutoff 6Hz --poles 4 --zero-phase", {6}, kHalf / 2, 0},
          {"highpass --cutoff 0.5Hz --family bessel --zero-phase --at -1", {0.5}, -0.5, 180},
          {"bandpass --from 0.5Hz --to 40Hz", {0.5, 40}, kHalf, 4.4003},
          {"bandpass --from 0.5Hz --to 40Hz --family papoulis --at -0.1dB", {0.5, 40}, -0.1, 4.4003},
          {"notch --cutoff 50Hz --bandwidth 2Hz --poles 2", {lower, lower + 2}, kHalf, 0}}) {
        SCOPED_TRACE(call);
        const json document = design(std::string(call) + " --rate 360Hz"), &measured = document["achieved"]["edges"];
        ASSERT_EQ(measured.size(), edges.size());
        for (std::size_t i = 0; i < edges.size(); ++i) {
            EXPECT_NEAR(measured[i]["at_Hz"], edges[i], 1e-7);
            const double achieved = gain(document, measured[i]["at_Hz"]) - gain(document, reference);
            EXPECT_NEAR(achieved, level, 1e-6);
            EXPECT_NEAR(measured[i]["level_dB"], achieved * document["designed"]["passes"].get<double>(), 1e-6);
        }
    }
    EXPECT_EQ(design("lowpass --cutoff 6 --poles 4 --zero-phase --rate 200")["summary"],
              "lowpass, butterworth, 4 poles, zero phase, -3 dB at 6 Hz");
    EXPECT_EQ(design("bandpass --from 0.5 --to 40 --rate 360 --at -0.1")["summary"],
              "bandpass, butterworth, 6 poles, -0.1 dB at 0.5 and 40 Hz");
}

// Judged by the rows of --response.
TEST_F(Design, requirements_are_met_by_the_family_with_the_fewest_poles) {
    struct Case {
        const char *call;
        double pass_from, pass_to, stop_from, stop_to;  // Hz
    };
    for (const auto &[call, pass_from, pass_to, stop_from, stop_to] :
         {Case{"lowpass --pass 40Hz:1dB --stop 60Hz:50dB", 0, 40, 60, 180},
          {"highpass --pass 1Hz:1dB --stop 0.5Hz:50dB --family butterworth", 1, 180, 0, 0.5},
          {"bandpass --pass 8:1 --pass 12:2 --stop 16:40 --stop 5:50 --zero-phase", 8, 12, 16, 180},
          {"notch --pass 45:1 --pass 55:1 --stop 49:50 --stop 51:50 --family chebyshev", 55, 180, 49, 51}}) {
        const std::string line = std::string(call) + " --rate 360Hz";
        SCOPED_TRACE(line);
        const json document = design(line);
        int fewest = 99;
        for (const json &family : document["families"])
            if (!family["poles"].is_null()) fewest = std::min(fewest, family["poles"].get<int>());
        if (!has(call, "--family")) {
            EXPECT_EQ(document["designed"]["poles"], fewest);
        }
        ASSERT_EQ(run("design " + line + " --response 36000"), 0);
        double pass = 0, stop = -999;
        for (const std::vector<double> &row : rows(out)) {
            if (row[0] >= pass_from && row[0] <= pass_to) pass = std::min(pass, row[1]);
            if (row[0] >= stop_from && row[0] <= stop_to && row.size() == 4) stop = std::max(stop, row[1]);
        }
        const double largest = document["achieved"]["reference_dB"];
        EXPECT_GT(pass, largest - 1 - 1e-6);
        EXPECT_LT(stop, largest - 50 + 1e-6);
    }
    ASSERT_EQ(run("design lowpass --pass 40Hz:1dB --stop 60Hz:50dB --rate 360Hz"), 0);
    EXPECT_HAS(out, "  bessel                    none will do\n");
    ASSERT_EQ(run("design lowpass --cutoff 1e-6 --poles 1 --rate 360"), 0);
    EXPECT_HAS(out, "  largest pole radius       1 - 1.75e-08\n");  // 2 pi 1e-6 / 360 below 1
}

TEST_F(Design, what_cannot_be_made_is_refused) {
    expect_refusals(
        "design --rate 360Hz ",
        {{"lowpass", "--cutoff is required"},
         {"lowpass --cutoff 180Hz", "--cutoff of 180 Hz: must lie above 0 and below 180 Hz"},
         {"lowpass --cutoff 40 --at 3dB", "--at 3 dB: must lie below 0"},
         {"lowpass --cutoff 40 --family elliptic --at -70", "--at -70 dB: not below -60 dB"},
         {"lowpass --cutoff 40 --poles 21", "--poles 21: butterworth has 1 to 20"},
         {"lowpass --cutoff 40 --ripple 1dB", "--ripple has no effect on butterworth"},
         {"lowpass --cutoff 40 --family chebyshev --ripple 11", "--ripple 11 dB: from 0.0001 to 10 dB"},
         {"lowpass --cutoff 40 --family elliptic --stopband 5", "--stopband 5 dB: from 10 to 200 dB"},
         {"lowpass --cutoff 40 --family adjustable --gamma 2", "--gamma 2: from -1 to 1"},
         {"lowpass --cutoff 40 --gain 201dB", "--gain 201 dB: from -200 to 200 dB"},
         {"lowpass --cutoff 40 --bandwidth 4", "--bandwidth is for bandpass and notch"},
         {"lowpass --cutoff 1e-9", "its edges are too near 0, half the rate or each other"},
         {"notch --cutoff 50", "notch needs its edges"},
         {"notch --from 48", "--from and --to belong together"},
         {"notch --from 52 --to 48", "the lower edge comes first"},
         {"notch --from 48 --to 52 --cutoff 50", "--from and --to and --cutoff exclude each other"},
         {"lowpass --pass 40:1 --stop 60:50 --poles 4", "--pass and --stop and --poles exclude each other"},
         {"lowpass --pass 40:1", "lowpass needs --pass once and --stop once"},
         {"bandpass --pass 40:1 --stop 60:50", "bandpass needs --pass twice and --stop twice"},
         {"lowpass --pass 40 --stop 60:50", "\"40\" is not a frequency and a loss"},
         {"lowpass --pass 60:1 --stop 40:50", "for lowpass: it passes what is below the stop edge"},
         {"notch --pass 8:1 --pass 12:1 --stop 6:50 --stop 16:50", "its stop edges lie between its pass edges"},
         {"lowpass --cutoff 40 --show step", "--show is for --plot and --plot-script"},
         {"lowpass --pass 40:1 --stop 40.001:190", "no family will do"},
         {"lowpass --pass 40:1 --stop 60:50 --family bessel", "no number of poles of bessel will do"},
         {"lowpass --cutoff 40 --leading-sections --at -1", "--leading-sections and --at exclude each other"},
         {"lowpass --cutoff 40 --response 0", "--response: 0 rows; 1 to 10000000 are possible"},
         {"lowpass --cutoff 40 --step 1e9", "--step"}});
    ASSERT_EQ(run("design lowpass --rate 360 --cutoff 40 --all-families --poles 14"), 0);
    EXPECT_EQ(err,
              "mensura: gaussian is left out: --poles 14: gaussian has 1 to 12\n"
              "mensura: bessel is left out: --poles 14: bessel has 1 to 12\n");
}

TEST_F(Design, exports_read_back_and_give_the_same_bits) {
    const std::string call = "design lowpass --cutoff 40Hz --rate 360Hz --family elliptic --poles 5 --export ";
    ASSERT_EQ(run(call + "sos"), 0);
    const auto table = rows(out);
    std::vector<double> sos;
    for (const std::vector<double> &row : table) sos.insert(sos.end(), row.begin(), row.end());
    const json document = design("lowpass --cutoff 40Hz --rate 360Hz --family elliptic --poles 5");
    ASSERT_EQ(table.size(), document["sections"].size());
    for (std::size_t k = 0; k < table.size(); ++k) {
        const json &s = document["sections"][k];
        EXPECT_EQ(table[k], (std::vector<double>{s["b0"], s["b1"], s["b2"], 1, s["a1"], s["a2"]}));
    }

    ASSERT_EQ(run(call + "c -o filter.h"), 0);
    write("run.c",
          "#include <stdio.h>\n#include \"filter.h\"\n"
          "int main(void) {\n    double state[FILTER_SECTIONS][4] = {{0}};\n"
          "    for (int i = 0; i < 200; ++i) printf(\"%.17g\\n\", filter(state, i * 37 % 101 - 50));\n    return "
          "0;\n}\n");
    ASSERT_EQ(shell(C_COMPILER " -std=c99 -pedantic -Wall -Wextra -Werror -ffp-contract=off -O2 run.c -o run && ./run"),
              0)
        << err;
    std::vector<double> x(200), state(4 * table.size());
    for (int i = 0; i < 200; ++i) x[static_cast<std::size_t>(i)] = i * 37 % 101 - 50;
    mensura_sos_filter(sos.data(), static_cast<int>(table.size()), state.data(), x.data(), 1, x.data(), 1, 200);
    EXPECT_EQ(column(rows(out), 0), x);

    const std::string unusable = "design lowpass --rate 360 --cutoff 1e-6 --leading-sections --export sos";
    expect_refused(unusable, "unusable: its gain is ", 1);
    EXPECT_EQ(run(unusable + " --force"), 0);
    EXPECT_EQ(rows(out).size(), 3u);
}

// One pole p: the step response differs from 1 by c p^n, with c p = 1 - b0 - p for n = 0.
TEST_F(Design, step_of_one_pole_is_the_closed_form) {
    const std::string call = "lowpass --cutoff 1Hz --rate 360Hz --poles 1";
    const json document = design(call);
    const double b0 = document["sections"][0]["b0"], p = -document["sections"][0]["a1"].get<double>();
    EXPECT_EQ(document["achieved"]["step_overshoot"], 0);
    EXPECT_NEAR(document["achieved"]["step_settling_s"], std::ceil(std::log(0.02 / (1 - b0)) / std::log(p)) / 360,
                1e-9);
    ASSERT_EQ(run("design " + call + " --step 500"), 0);
    const auto step = rows(out);
    ASSERT_EQ(step.size(), 500u);
    for (std::size_t n = 0; n < step.size(); ++n) {
        EXPECT_NEAR(step[n][0], static_cast<double>(n) / 360, 1e-12);
        EXPECT_NEAR(step[n][1], 1 - (1 - b0) * std::pow(p, static_cast<double>(n)), 1e-12);
    }
}

// Forwards and backwards the impulse response is even; its sum, the step response, is 1/2 around the step.
TEST_F(Design, responses_of_both_passes_are_symmetric) {
    const std::string call = "lowpass --cutoff 10Hz --rate 360Hz --zero-phase";
    ASSERT_EQ(run("design " + call + " --impulse 400"), 0);
    const auto impulse = rows(out);
    ASSERT_EQ(run("design " + call + " --step 400"), 0);
    const auto step = rows(out);
    double sum = step[0][1], highest = 0;
    for (std::size_t n = 1; n < 400; ++n) {
        EXPECT_NEAR(impulse[n][1], impulse[400 - n][1], 1e-9);
        EXPECT_NEAR(step[n][1] + step[399 - n][1], 1, 1e-9);
        sum += impulse[n][1];
        EXPECT_NEAR(step[n][1], sum, 1e-8);
        highest = std::max(highest, step[n][1]);
    }
    EXPECT_DOUBLE_EQ(step[200][0], 0);
    const json achieved = design(call)["achieved"];
    EXPECT_NEAR(achieved["step_overshoot"], highest - 1, 1e-8);
    EXPECT_EQ(achieved["group_delay_s"], 0);
}

TEST_F(Design, group_delay_is_the_slope_of_the_phase) {
    ASSERT_EQ(run("design bandpass --from 20 --to 60 --rate 360 --response 3600"), 0);
    const auto table = rows(out);
    for (std::size_t i = 200; i < 1500; i += 50) {
        const double turn = std::remainder(table[i + 1][2] - table[i - 1][2], 360);
        EXPECT_NEAR(table[i][3], -turn / 360 / (table[i + 1][0] - table[i - 1][0]), 1e-5);
    }
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
