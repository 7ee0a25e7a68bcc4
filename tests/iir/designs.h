// Requests and records for the tests of filters.
#pragma once

#include <mensura/iir.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <functional>
#include <span>
#include <vector>

#include "iir/proto/limits.h"
#include "support/noise.h"

namespace designs {

using mensura::iir::kFamilies;

constexpr int kPassTypes[] = {ptLowPass, ptHighPass, ptBandPass, ptNotch, ptAllPass};
constexpr int kUnknownFamily = 8;

inline IIRDesignSpec request(int pass, int family, int poles, double cutoff = 0.2) {
    return {pass, cutoff, 0.1, 0.0, {family, poles, 0.1, 60.0, 0.0}};
}

inline LowPassProto prototype(int family, int poles, double ripple = 0.1, double stop = 60, double gamma = 0) {
    return CalcLowPassProtoCoeff({family, poles, ripple, stop, gamma});
}

// All numbers of a designed record, arrays in the order of its declaration, and its count of sections.
template <typename Record>
std::vector<double> numbers(const Record &record) {
    constexpr std::size_t kSize = sizeof(Record) / sizeof(double) - 1;
    const auto *const first = reinterpret_cast<const double *>(&record);
    std::vector<double> all(first, first + kSize);
    int count = 0;
    std::memcpy(&count, first + kSize, sizeof count);
    all.push_back(count);
    return all;
}

// RegX1, RegX2, RegY1 and RegY2, one after the other.
inline std::span<double> registers(TIIRFilter &f) {
    auto *const first = reinterpret_cast<std::byte *>(&f) + offsetof(TIIRFilter, RegX1);
    return {reinterpret_cast<double *>(first), std::size_t{4 * MAX_IIR_SECTIONS}};
}

// Coefficients and registers in [-1, 1), a0 of 1.
inline void fill_with_noise(TIIRFilter &f, support::Noise &noise) {
    IIRCoeffs &c = f.Coeffs;
    for (auto *values : {&c.a1, &c.a2, &c.b0, &c.b1, &c.b2}) std::ranges::generate(*values, std::ref(noise));
    std::ranges::generate(registers(f), std::ref(noise));
    std::ranges::fill(c.a0, 1.0);
}

}  // namespace designs
