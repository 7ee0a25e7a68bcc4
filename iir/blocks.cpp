// Filtering a record that starts from rest, with registers that belong to the process.

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "direct_form.h"
#include "pipeline_kernel.h"

using namespace mensura::iir;

namespace {

constexpr double kBlowUp = 1e20;            // a sum beyond this sets all registers to 0
constexpr double kMaxRegValAtRest = 1e-12;  // MaxRegVal after that

struct Registers {
    double RegX1[MAX_IIR_SECTIONS], RegX2[MAX_IIR_SECTIONS];
    double RegY1[MAX_IIR_SECTIONS], RegY2[MAX_IIR_SECTIONS];
    double MaxRegVal;  // largest feed-forward sum or output since the registers were set to 0
    int MessageShown;  // 1 after the first blow-up
};
constinit Registers shared{};

void clear_registers() {
    for (double *registers : {shared.RegX1, shared.RegX2, shared.RegY1, shared.RegY2})
        std::fill_n(registers, MAX_IIR_SECTIONS, 0.0);
    shared.MaxRegVal = kMaxRegValAtRest;
}

// To be called before each section runs: clears the registers after a blow-up and at the start of a record.
void start_section(bool starts_record) {
    const bool blown_up = shared.MaxRegVal > kBlowUp;
    if (blown_up) shared.MessageShown = 1;
    if (blown_up || starts_record) clear_registers();
}

double run_guarded(const IIRCoeffs &c, std::size_t k, double x) {
    const auto [s, y] = run_section(c, shared, k, x);
    for (const double sum : {s, y})
        if (std::fabs(sum) > shared.MaxRegVal) shared.MaxRegVal = std::fabs(sum);
    return y;
}

// Sample by sample: each section call first checks whether the call before it blew up.
void run_block_guarded(const IIRCoeffs &c, const double *in, double *out, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        double u = in[i];
        for (std::size_t k = 0; k < sections_to_run(c); ++k) {
            start_section(false);
            u = run_guarded(c, k, u);
        }
        out[i] = u;
    }
}

// A block without the checks.  If the peak shows afterwards that a section has blown up, the block is run again with
// them, from copies of its input and of the registers.
void run_block(const IIRCoeffs &c, const double *in, double *out, std::size_t n) {
    const Registers before = shared;
    double input[kBlockSize];
    std::copy_n(in, n, input);
    const double peak = run_and_keep_peak(cascade_of(c, shared), in, out, n);
    shared.MaxRegVal = std::max(shared.MaxRegVal, peak);
    if (shared.MaxRegVal <= kBlowUp) return;
    shared = before;
    run_block_guarded(c, input, out, n);
}

}  // namespace

double SectCalc(double x, int k, int j, IIRCoeffs coeffs) {
    if (j < 0 || j >= MAX_IIR_SECTIONS) return x;
    start_section(k == 0 && j == 0);
    return run_guarded(coeffs, static_cast<std::size_t>(j), x);
}

void FilterWithIIR(const double *x, double *out, int n, IIRCoeffs coeffs) {
    if (n < 1) return;
    start_section(true);
    const auto size = static_cast<std::size_t>(n);
    for (std::size_t i = 0; i < size; i += kBlockSize)
        run_block(coeffs, x + i, out + i, std::min(kBlockSize, size - i));
}
