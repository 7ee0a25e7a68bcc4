// Filtering whole records without a phase shift.

#include <mensura/iir.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <optional>

#include "../internal/scratch.h"
#include "../spectral/dft.h"
#include "direct_form.h"
#include "pipeline_kernel.h"

using namespace mensura::iir;

namespace {

constexpr double kCutoffOverSignal = 15.0;  // the automatic cut-off over the highest frequency that counts as signal

constexpr std::ptrdiff_t kForwards = 1, kBackwards = -1;  // strides

// Runs the filter as IIRFilter does, sample by sample, along the stride.
void run_record(TIIRFilter &f, const double *in, double *out, std::size_t n, std::ptrdiff_t stride) {
    if (f.Primed == 0) prime(f, *in);
    run_samples(cascade_of(f.Coeffs, f), in, stride, out, stride, n);
}

// The magnitudes of bins 0 .. n / 2 - 1, not divided by n, because only their ratios matter; null without memory.
mensura::Scratch<double> magnitudes(const double *data, int n) {
    const auto points = static_cast<std::size_t>(std::max(n, 1)), bins = static_cast<std::size_t>(std::max(n / 2, 0));
    const auto re = mensura::scratch<double>(points), im = mensura::scratch<double>(points);
    auto magnitude = mensura::scratch<double>(std::max<std::size_t>(bins, 1));
    if (!re || !im || !magnitude) return nullptr;
    std::copy_n(data, std::max(n, 0), re.get());
    std::fill_n(im.get(), points, 0.0);
    if (!mensura::spectral::dft(re.get(), im.get(), n, 1)) return nullptr;
    for (std::size_t k = 0; k < bins; ++k) magnitude[k] = CplxDCabs({re[k], im[k]});
    return magnitude;
}

// The cut-off that dataZeroPhaseFilter finds in the spectrum of a record; prints the line that its header describes.
// Nothing when there is no memory.
std::optional<double> find_cutoff(const double *data, int n, double fs, double ratio) {
    const auto magnitude = magnitudes(data, n);
    if (!magnitude) return std::nullopt;
    const auto at = [&](int k) { return magnitude[static_cast<std::size_t>(k)]; };

    int peak = 0;
    double largest = 0.0;
    for (int k = 1; k < n / 2; ++k) {  // DC is no signal
        if (!(at(k) > largest)) continue;
        largest = at(k);
        peak = k;
    }
    int last = n / 2 - 1;
    while (last >= peak && at(last) <= ratio * largest) --last;
    std::printf("%f,%d,%d,%d\n", fs, last, n, peak);
    return last * fs / (n - 1.0) * kCutoffOverSignal;
}

}  // namespace

double *IIRFilterZeroPhase(TIIRFilter *filter, double *x, double *out, int n) {
    if (out == nullptr) out = x;
    if (n > 0) run_record(*filter, x, out, static_cast<std::size_t>(n), kForwards);
    filter->Primed = 0;
    if (n > 0) run_record(*filter, out + n - 1, out + n - 1, static_cast<std::size_t>(n), kBackwards);
    return out;
}

void dataZeroPhaseFilter(double *data, int n, double dt, double ratio, double fc) {
    const double fs = 1.0 / dt;
    if (fc <= 0.0) {
        const std::optional<double> found = find_cutoff(data, n, fs, ratio);
        if (!found) return;
        fc = *found;
    }
    TIIRFilter filter;
    initTIIRFilter(&filter, ptLowPass, fs * 0.5 < fc ? fs * 0.5 : fc, fs);
    IIRFilterZeroPhase(&filter, data, nullptr, n);
}
