// Smoothers with any length and any samples.
#include <mensura/smooth.h>

#include <algorithm>

#include "input.h"

void fuzz::test(Input &input) {
    constexpr decltype(&linearSmooth3) kSmoothers[] = {linearSmooth3,    linearSmooth5,  linearSmooth7,
                                                       linearSmooth9,    linearSmooth11, quadraticSmooth5,
                                                       quadraticSmooth7, cubicSmooth5,   cubicSmooth7};
    constexpr int kWindows[] = {3, 5, 7, 9, 11, 5, 7, 5, 7};
    const int which = input.ConsumeIntegralInRange(0, 8), window = kWindows[which];
    const int n = input.ConsumeIntegralInRange(-1, input.ConsumeBool() ? 40 : 1000);
    Doubles x = numbers(input, n, 200), y(x.size()), mirrored = y;
    kSmoothers[which](x.data(), y.data(), n);
    if (n < window) law(same(x, y));
    std::ranges::reverse(x);
    kSmoothers[which](x.data(), mirrored.data(), n);
    const std::size_t edge = std::min(y.size(), static_cast<std::size_t>(window / 2));
    for (std::size_t i = 0; i < edge; ++i) law(same(y[i], mirrored[y.size() - 1 - i]));  // one edge mirrors the other
}
