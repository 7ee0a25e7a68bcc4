// Running a bank: one sample of every channel a call, with the bits of IIRFilter.

#include <cstddef>
#include <cstdint>

#include "bank_kernel.h"
#include "direct_form.h"

using namespace mensura::iir;

namespace {

// Whether [p, p + p_size) and [q, q + q_size) have a byte in common.
bool overlap(const void *p, std::size_t p_size, const void *q, std::size_t q_size) {
    const auto p0 = reinterpret_cast<std::uintptr_t>(p), q0 = reinterpret_cast<std::uintptr_t>(q);
    return q0 < p0 + p_size && p0 < q0 + q_size;
}

// Whether no output overwrites the input or the filter of a later channel, and no filter the input of another.
bool channels_are_independent(const TIIRFilterBank &bank, const double *in, const double *out) {
    const auto bytes = static_cast<std::size_t>(bank.Count) * sizeof(double);
    return !overlap(in, bytes, &bank, sizeof bank) && !overlap(out, bytes, &bank, sizeof bank) &&
           (in == out || !overlap(in, bytes, out, bytes));
}

// Whether pairs are faster.  A single section gains nothing.  A pair packs the outputs of two sections into one register,
// so that the next sample of either waits for both: two or three channels of up to three sections have too little else to
// do meanwhile.
bool pairs_pay(const TIIRFilterBank &bank) {
    const int sections = bank.Filters[0].Coeffs.NumSections;
    return sections > 3 ? bank.Count > 1 : sections > 1 && bank.Count > 3;
}

}  // namespace

int IIRFilters(TIIRFilterBank *bank, const double *x, double *out) {
    const int count = bank->Count;
    if (count < 1) return count;
    int i = 0;
    if (pairs_pay(*bank) && channels_are_independent(*bank, x, out)) i = run_pairs(bank->Filters, count, x, out);
    for (; i < count; ++i) out[i] = run_filter(bank->Filters[i], x[i]);
    return count;
}
