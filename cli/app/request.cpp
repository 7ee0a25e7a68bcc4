#include "cli/app/request.h"

#include <fmt/format.h>

#include <cstddef>
#include <string>

#include "cli/app/diagnostics.h"
#include "cli/app/names.h"
#include "cli/app/quantity.h"
#include "iir/pass_types.h"
#include "iir/proto/limits.h"

namespace cli {

namespace {

using mensura::iir::Family;
using mensura::iir::kFamilies;
using mensura::iir::kPassTypes;
using mensura::iir::PassType;

void refuse_outside(const char *option, double frequency, double rate) {
    if (!(frequency > 0 && frequency < 0.5 * rate))
        reject("{} of {} Hz: must lie above 0 and below {} Hz, half the sampling rate", option, frequency, 0.5 * rate);
}

}  // namespace

const char *pass_type_name(int pass_type) { return kPassTypes[static_cast<std::size_t>(pass_type)].word; }
const char *family_name(int family) { return kFamilies[static_cast<std::size_t>(family)].word; }

void add_filter_request(const Command &app, FilterRequest &request) {
    constexpr mensura::iir::Range kGamma = mensura::iir::kGammaRange;
    ProtoSpec &prototype = request.prototype;
    const auto take_type = [&request](const std::string &text) {
        request.pass_type = row_named("TYPE", text, kPassTypes, &PassType::word).code;
    };
    const auto take_family = [&request](const std::string &text) {
        request.prototype.Family = row_named("--family", text, kFamilies, &Family::word).code;
    };
    app.add_option("TYPE", take_type, joined(kPassTypes, &PassType::word, " or ")).required();
    add_quantity(app, "--cutoff", request.cutoff, kHertz, "cut-off frequency, of band types the centre, in Hz");
    add_rate(app, request.rate, "sampling rate in Hz");
    app.add_option(
           "--family", take_family,
           fmt::format("{}; default {}", joined(kFamilies, &Family::word, " or "), family_name(prototype.Family)))
        .type_name("NAME");
    add_count(app, "--poles", prototype.NumPoles,
              fmt::format("poles of the low-pass prototype, default {}", prototype.NumPoles));
    add_quantity(app, "--ripple", prototype.Ripple, kDecibel,
                 fmt::format("pass-band ripple in dB, default {}", prototype.Ripple));
    add_quantity(app, "--stopband", prototype.StopBandDb, kDecibel,
                 fmt::format("stop-band attenuation in dB, default {}", prototype.StopBandDb));
    add_quantity(app, "--gamma", prototype.Gamma, kPlain,
                 fmt::format("shape of the adjustable family, {} (gaussian) to {} (steep), default {}", kGamma.least,
                             kGamma.most, prototype.Gamma));
    add_quantity(app, "--bandwidth", request.bandwidth, kHertz,
                 "bandwidth of bandpass and notch in Hz, default a twentieth of the sampling rate");
    add_quantity(app, "--gain", request.gain, kDecibel,
                 fmt::format("gain in the pass band in dB, default {}", request.gain));
}

double bandwidth_of(const FilterRequest &request, double rate) {
    return request.bandwidth.value_or(0.5 * mensura::iir::kDefaultBandwidth * rate);
}

void check_frequencies(const FilterRequest &request, double rate) {
    if (!request.cutoff) reject("--cutoff is required: the frequency in Hz, such as --cutoff 40Hz");
    refuse_outside("--cutoff", *request.cutoff, rate);
    if (request.bandwidth) refuse_outside("--bandwidth", *request.bandwidth, rate);
}

IIRDesignSpec design_spec(const FilterRequest &request, double rate) {
    check_frequencies(request, rate);
    if (request.bandwidth && !mensura::iir::is_band_type(request.pass_type))
        remark("--bandwidth is for bandpass and notch, and not used here");
    IIRDesignSpec spec = mensura::iir::default_request(request.pass_type, 2 * *request.cutoff / rate);
    if (request.bandwidth) spec.NormBandwidth = 2 * *request.bandwidth / rate;
    spec.GainDb = request.gain;
    spec.Proto = request.prototype;
    return spec;
}

}  // namespace cli
