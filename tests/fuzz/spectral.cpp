// Transforms, single frequencies and windows with any length, code and parameter.
#include <mensura/spectral.h>

#include "input.h"

using namespace fuzz;

static void transform_fast(Input &input) {
    const int n = input.ConsumeBool() ? 1 << input.ConsumeIntegralInRange(0, 12) : code(input, -1, 4100);
    const int dir = code(input, -1, 2), padded = RequiredFFTSize(n);
    law(IsValidFFTSize(padded) != 0 && (n > 1048576 || padded >= n));
    const bool valid = IsValidFFTSize(n) != 0;
    Doubles re = numbers(input, valid ? n : 1), im = numbers(input, valid ? n : 1);
    const Doubles re_before = re, im_before = im;
    FFT(re.data(), im.data(), n, dir);
    if (!valid || (dir != 0 && dir != 1)) law(same(re, re_before) && same(im, im_before));
    const int steps = valid ? n : input.ConsumeIntegralInRange(-1, 7);  // in steps from 1 point on
    Doubles tmp_re = numbers(input, steps), tmp_im = tmp_re, buf_re = tmp_re, buf_im = tmp_re, tw_re(tmp_re.size() / 2);
    Doubles tw_im = tw_re;
    std::vector<int> index(tmp_re.size());
    ReArrangeInput(tmp_re.data(), tmp_im.data(), buf_re.data(), buf_im.data(), index.data(), steps);
    for (const int i : index) law(i >= 0 && i < steps);
    if (steps >= 8) FillTwiddleArray(tw_re.data(), tw_im.data(), steps, dir);
    Transform(tmp_re.data(), tmp_im.data(), buf_re.data(), buf_im.data(), tw_re.data(), tw_im.data(), steps);
}

static void transform_any_length(Input &input) {
    const int n = input.ConsumeIntegralInRange(-1, 500), dir = code(input, -1, 2), kind = code(input, -1, 16);
    const double f = number(input), beta = number(input);
    Doubles re = numbers(input, n), im = numbers(input, n), windowed = re;
    const Doubles x = re;
    WindowData(windowed.data(), n, kind, f, beta, dir);
    law((kind > wkRectangle && kind <= wkSine) || same(windowed, x));
    law(!(Bessel(f) < 1) && !(std::abs(Sinc(f)) > 1));
    law(!(SingleFreqDFT(x.data(), n, f) < 0) && !(Goertzel(x.data(), n, f) <= 0));
    DFT(re.data(), im.data(), n, dir);
    law(dir == 0 || dir == 1 || same(re, x));
    re.assign(x.size(), 77.0);
    RealSigDFT(x.data(), re.data(), im.data(), n);
    const std::size_t left_out = x.size() / 2 + 1;  // of an odd length
    if (x.size() % 2 == 1 && left_out < x.size()) law(re[left_out] == 77);
}

void fuzz::test(Input &input) { input.PickValueInArray({transform_fast, transform_any_length})(input); }
