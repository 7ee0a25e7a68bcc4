#include "pipeline_kernel.h"

#include "../internal/lanes.h"
#include "../internal/target.h"
#include "pipeline.h"

namespace mensura::iir::MENSURA_TARGET {
namespace {

// A designed record and the registers of the filter that runs it.
struct RecordCascade {
    static constexpr bool kHasScale = true, kKeepsPeak = true;
    const IIRCoeffs &c;
    const RegisterArrays &r;

    LANES_INLINE double a0(std::size_t k) const { return c.a0[k]; }
    LANES_INLINE double a1(std::size_t k) const { return c.a1[k]; }
    LANES_INLINE double a2(std::size_t k) const { return c.a2[k]; }
    LANES_INLINE double b0(std::size_t k) const { return c.b0[k]; }
    LANES_INLINE double b1(std::size_t k) const { return c.b1[k]; }
    LANES_INLINE double b2(std::size_t k) const { return c.b2[k]; }
    LANES_INLINE double &x1(std::size_t k) const { return r.RegX1[k]; }
    LANES_INLINE double &x2(std::size_t k) const { return r.RegX2[k]; }
    LANES_INLINE double &y1(std::size_t k) const { return r.RegY1[k]; }
    LANES_INLINE double &y2(std::size_t k) const { return r.RegY2[k]; }
};

}  // namespace

double run_samples(const IIRCoeffs &c, std::size_t sections, const RegisterArrays &r, const double *in, double *out,
                   std::size_t n, std::ptrdiff_t stride) {
    return largest_of(run_groups(RecordCascade{c, r}, sections, {in, stride}, {out, stride}, n));
}

}  // namespace mensura::iir::MENSURA_TARGET
