// Transforms, single frequencies and windows with any length, code and parameter.
#include "support/reference/spectral.h"
#include "input.h"

using namespace fuzz;

static void transform_fast(Input &input) {
    const int n = input.ConsumeBool() ? 1 << input.ConsumeIntegralInRange(0, 12) : code(input, -1, 4100);
    const int dir = code(input, -1, 2), padded = RequiredFFTSize(n);
    check(IsValidFFTSize(padded) != 0 && (n > 1048576 || padded >= n));
    const bool valid = IsValidFFTSize(n) != 0;
    Doubles re = numbers(input, valid ? n : 1), im = numbers(input, valid ? n : 1), plain_re = re, plain_im = im;
    FFT(re.data(), im.data(), n, dir);
    if (valid && (dir == 0 || dir == 1)) reference::fft(plain_re.data(), plain_im.data(), n, dir);
    check(same_bits(re, plain_re) && same_bits(im, plain_im));
    const int steps = input.ConsumeIntegralInRange(-1, 20);  // the plain steps go from 1 point on
    Doubles x_re = numbers(input, steps), x_im = x_re, y_re = x_re, y_im = x_re, w_re(x_re.size() / 2), w_im = w_re;
    std::vector<int> index(x_re.size());
    ReArrangeInput(x_re.data(), x_im.data(), y_re.data(), y_im.data(), index.data(), steps);
    for (const int i : index) check(i >= 0 && i < steps);
    FillTwiddleArray(w_re.data(), w_im.data(), steps, dir);
    Transform(x_re.data(), x_im.data(), y_re.data(), y_im.data(), w_re.data(), w_im.data(), steps);
}

static void transform_any_length(Input &input) {
    const int n = input.ConsumeIntegralInRange(-1, 100), dir = code(input, -1, 2), kind = code(input, -1, 16);
    const double f = number(input), beta = number(input);
    Doubles re = numbers(input, n), im = numbers(input, n), plain_re = re, plain_im = im, windowed = re;
    const Doubles x = re;
    WindowData(windowed.data(), n, kind, f, beta, dir);
    check((kind > wkRectangle && kind <= wkSine) || same_bits(windowed, x));
    check(!(Bessel(f) < 1) && !(std::abs(Sinc(f)) > 1));
    check(!(SingleFreqDFT(x.data(), n, f) < 0) && !(Goertzel(x.data(), n, f) <= 0));
    DFT(re.data(), im.data(), n, dir);
    if (n > 0 && (dir == 0 || dir == 1)) reference::dft(plain_re.data(), plain_im.data(), n, dir);
    check(same_bits(re, plain_re) && same_bits(im, plain_im));
    re.assign(x.size(), 77.0);
    RealSigDFT(x.data(), re.data(), im.data(), n);
    const std::size_t left_out = x.size() / 2 + 1;  // of an odd length
    if (x.size() % 2 == 1 && left_out < x.size()) check(re[left_out] == 77);
}

void fuzz::test(Input &input) { input.PickValueInArray({transform_fast, transform_any_length})(input); }
