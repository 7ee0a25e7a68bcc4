// A filter as a cascade of second-order sections.
#pragma once

#include <mensura/iir.h>

#include <array>
#include <cstddef>
#include <span>

#include "../iir/direct_form.h"

namespace mensura::sos {

// H(z) = (b0 + b1 z^-1 + b2 z^-2) / (a0 + a1 z^-1 + a2 z^-2) with a0 = 1: six numbers in the order of SciPy and MATLAB.
struct Section {
    double b0, b1, b2, a0, a1, a2;
};

using Cascade = std::span<const Section>;

// The sections that IIRFilter runs of a designed record.
class RecordSections {
  public:
    explicit RecordSections(const IIRCoeffs &c) : count_(iir::sections_to_run(c)) {
        for (std::size_t k = 0; k < count_; ++k)
            sections_[k] = {c.a0[k] * c.b0[k], c.a0[k] * c.b1[k], c.a0[k] * c.b2[k], 1.0, c.a1[k], c.a2[k]};
    }

    Cascade cascade() const { return {sections_.data(), count_}; }

  private:
    std::size_t count_;
    std::array<Section, MAX_IIR_SECTIONS> sections_{};
};

}  // namespace mensura::sos
