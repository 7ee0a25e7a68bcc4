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

constexpr double kSafety = 15.0;  // cut-off over the highest frequency that counts as signal

constexpr std::ptrdiff_t kForwards = 1, kBackwards = -1;

// As IIRFilter, sample by sample; in pieces, so that all sections of a long cascade find their input in the cache.
void run_record(TIIRFilter &f, const double *in, double *out, std::size_t n, std::ptrdiff_t step) {
    if (f.Primed == 0) prime(f, *in);
    for (std::size_t i = 0; i < n; i += kPiece) {
        const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(i) * step;
        run_samples(f.Coeffs, sections_to_run(f.Coeffs), arrays_of(f), in + at, out + at, std::min(kPiece, n - i),
                    step);
    }
}

// The cut-off that the spectrum of a record suggests; prints how it came about.  Nothing when there is no memory.
std::optional<double> find_cutoff(const double *data, int n, double fs, double ratio) {
    const int half = n / 2;
    const auto points = static_cast<std::size_t>(std::max(n, 1)), bins = static_cast<std::size_t>(std::max(half, 1));
    const auto re = mensura::scratch<double>(points), im = mensura::scratch<double>(points);
    const auto magnitude = mensura::scratch<double>(bins);
    if (!re || !im || !magnitude) return std::nullopt;
    std::copy_n(data, std::max(n, 0), re.get());
    std::fill_n(im.get(), points, 0.0);
    if (!mensura::spectral::dft(re.get(), im.get(), n, 1)) return std::nullopt;  // not divided by n: only ratios matter

    int peak = 0;
    double largest = 0.0;
    for (int i = 0; i < half; ++i) {
        const auto k = static_cast<std::size_t>(i);
        magnitude[k] = CplxDCabs({re[k], im[k]});
        if (i == 0 || !(magnitude[k] > largest)) continue;  // DC is no signal
        largest = magnitude[k];
        peak = i;
    }
    int last = half - 1;
    while (last >= peak && magnitude[static_cast<std::size_t>(last)] <= ratio * largest) --last;
    std::printf("%f,%d,%d,%d\n", fs, last, n, peak);
    return last * fs / (n - 1.0) * kSafety;
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
