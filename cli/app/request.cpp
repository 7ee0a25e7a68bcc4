#include "cli/app/request.h"

#include <algorithm>
#include <string>

#include "cli/app/diagnostics.h"
#include "cli/app/names.h"
#include "cli/app/quantity.h"

namespace cli {

namespace {

struct Named {
    const char *name;
    int code;
};

constexpr Named kPassTypes[] = {{"lowpass", ptLowPass},
                                {"highpass", ptHighPass},
                                {"bandpass", ptBandPass},
                                {"notch", ptNotch},
                                {"allpass", ptAllPass}};

struct Family {
    const char *name;
    int code, most_poles;
    double least_ripple;
};

constexpr Family kFamilies[] = {
    {"butterworth", pfButterworth, 20, 0.0001}, {"gaussian", pfGaussian, 12, 0.0001},
    {"bessel", pfBessel, 12, 0.0001},           {"adjustable", pfAdjustable, 20, 0.0001},
    {"chebyshev", pfChebyshev, 20, 0.0001},     {"inverse-chebyshev", pfInverseChebyshev, 15, 0.0001},
    {"papoulis", pfPapoulis, 20, 0.0001},       {"elliptic", pfElliptic, 15, 0.001}};

void refuse_outside(const char *what, double frequency, double rate) {
    if (!(frequency > 0 && frequency < 0.5 * rate))
        reject("{} of {} Hz: must lie above 0 and below {} Hz, half the sampling rate", what, frequency, 0.5 * rate);
}

}  // namespace

bool is_band_type(int pass_type) { return pass_type == ptBandPass || pass_type == ptNotch; }
const char *pass_type_name(int pass_type) { return kPassTypes[pass_type].name; }
const char *family_name(int family) { return kFamilies[family].name; }

void add_filter_request(const Command &app, FilterRequest &request) {
    app.add_option(
           "TYPE",
           [&request](const std::string &text) { request.pass_type = entry_called("TYPE", text, kPassTypes).code; },
           "lowpass, highpass, bandpass, notch or allpass")
        .required();
    add_quantity(app, "--cutoff", request.cutoff, kHertz, "cut-off frequency, of band types the centre, in Hz");
    add_rate(app, request.rate, "sampling rate in Hz");
    app.add_option(
           "--family",
           [&request](const std::string &text) { request.family = entry_called("--family", text, kFamilies).code; },
           "butterworth (default), gaussian, bessel, adjustable, chebyshev, inverse-chebyshev, papoulis or elliptic")
        .type_name("NAME");
    add_count(app, "--poles", request.poles, "poles of the low-pass prototype, default 6");
    add_quantity(app, "--ripple", request.ripple, kDecibel, "pass-band ripple in dB, default 0.1");
    add_quantity(app, "--stopband", request.stop_band, kDecibel, "stop-band attenuation in dB, default 60");
    add_quantity(app, "--gamma", request.gamma, kPlain,
                 "shape of the adjustable family, -1 (gaussian) to 1 (steep), default 0");
    add_quantity(app, "--bandwidth", request.bandwidth, kHertz,
                 "bandwidth of bandpass and notch in Hz, default a twentieth of the sampling rate");
    add_quantity(app, "--gain", request.gain, kDecibel, "gain in the pass band in dB, default 0");
}

double bandwidth_of(const FilterRequest &request, double rate) { return request.bandwidth.value_or(0.05 * rate); }

void check_frequencies(const FilterRequest &request, double rate) {
    if (!request.cutoff) reject("--cutoff is required: the frequency in Hz, such as --cutoff 40Hz");
    refuse_outside("--cutoff", *request.cutoff, rate);
    if (request.bandwidth) refuse_outside("--bandwidth", *request.bandwidth, rate);
}

IIRDesignSpec design_spec(const FilterRequest &request, double rate) {
    check_frequencies(request, rate);
    TIIRFilter filter;
    initTIIRFilter(&filter, request.pass_type, *request.cutoff, rate);
    IIRDesignSpec spec = filter.Spec;
    if (request.bandwidth) {
        spec.NormBandwidth = 2 * *request.bandwidth / rate;
        if (!is_band_type(request.pass_type)) remark("--bandwidth is for bandpass and notch, and not used here");
    }
    spec.GainDb = request.gain;
    spec.Proto = {.Family = request.family,
                  .NumPoles = request.poles,
                  .Ripple = request.ripple,
                  .StopBandDb = request.stop_band,
                  .Gamma = request.gamma};
    return spec;
}

ProtoSpec clamped(ProtoSpec spec) {
    const Family &family = kFamilies[spec.Family];
    spec.NumPoles = std::clamp(spec.NumPoles, 1, family.most_poles);
    spec.Ripple = std::clamp(spec.Ripple, family.least_ripple, 1.0);
    spec.StopBandDb = std::clamp(spec.StopBandDb, 20.0, 120.0);
    spec.Gamma = std::clamp(spec.Gamma, -1.0, 1.0);
    return spec;
}

void report_clamps(const ProtoSpec &spec) {
    const ProtoSpec taken = clamped(spec);
    const auto report = [family = family_name(spec.Family)](const char *setting, double asked, double held) {
        if (asked != held)
            remark("--{} {} is outside the range of {}: its prototype is made with {}", setting, asked, family, held);
    };
    report("poles", spec.NumPoles, taken.NumPoles);
    report("ripple", spec.Ripple, taken.Ripple);
    report("stopband", spec.StopBandDb, taken.StopBandDb);
    report("gamma", spec.Gamma, taken.Gamma);
}

}  // namespace cli
