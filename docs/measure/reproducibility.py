"""docs/numbers.md: where the impulse response of the default low-pass becomes subnormal, and what passes through."""

import sys

from binding import CplxD, TIIRFilter, doubles
from figures import require

LOW_PASS, SAMPLES = 0, 3000


def names(library):
    filter = TIIRFilter()
    library.initTIIRFilter(filter, LOW_PASS, 40.0, 360.0)
    impulse, out = doubles([1.0] + [0.0] * (SAMPLES - 1)), doubles(SAMPLES)
    library.FilterWithIIR(impulse, out, SAMPLES, filter.Coeffs)
    nonzero = [i for i, y in enumerate(out) if y != 0]
    first_subnormal = next(i for i in nonzero if abs(out[i]) < sys.float_info.min)
    require(max(i for i in nonzero if abs(out[i]) >= sys.float_info.min) == first_subnormal - 1,
            "the normal outputs end where the subnormal ones begin")

    re, im = doubles([1e-310] + [0.0] * 7), doubles(8)
    library.FFT(re, im, 8, 0)
    require(all(abs(bin - 1.25e-311) < 1e-315 for bin in re), "FFT of 1e-310 and seven zeros: 1.25e-311")
    roots = (CplxD * 2)()
    require(library.FindRoots(2, doubles([1e-310, -3e-310, 2e-310]), roots) == 2, "two roots of subnormal coefficients")
    require(all(abs(r.re - want) < 1e-9 for r, want in zip(sorted(roots, key=lambda r: r.re), (1, 2))), "roots 1 and 2")
    return {"first_subnormal": first_subnormal, "last_nonzero": nonzero[-1]}
