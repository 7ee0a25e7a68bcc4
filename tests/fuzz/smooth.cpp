// Smoothers with any length and any samples.
#include "support/reference/smooth.h"

#include "input.h"

void fuzz::test(Input &input) {
    const reference::Smoother smoother = input.PickValueInArray(reference::kSmoothers);
    const int n = input.ConsumeIntegralInRange(-1, input.ConsumeBool() ? 40 : 1000);
    const Doubles x = numbers(input, n, 200);
    Doubles y(x.size());
    smoother.run(x.data(), y.data(), n);
    check(same_bits(y, reference::smoothed(smoother, x.data(), x.size())));
}
