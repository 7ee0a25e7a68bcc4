// Streaming filters for many channels, with any samples.
#include <mensura/online.h>

#include "input.h"
#include "support/reference/online.h"

using namespace fuzz;

// run(values), in place, has for each channel what the plain filter has.
template <class Plain, class Run>
static void compare(Input &input, int channels, Plain plain, Run run) {
    std::vector<Plain> expected(static_cast<std::size_t>(channels), plain);
    for (int step = 0; step < 25; ++step) {
        const Doubles x = numbers(input, channels, 3);
        Doubles out = x;
        run(out.data());
        for (std::size_t i = 0; i < x.size(); ++i) check(same_bits(out[i], expected[i](x[i])));
    }
}

void fuzz::test(Input &input) {
    static MovingAverageBank averages;
    const int window = input.ConsumeIntegralInRange(1, input.ConsumeBool() ? 20 : 300);
    const int n = input.ConsumeIntegralInRange(1, 10);
    const double setting = number(input);
    const Doubles x = numbers(input, window - 2);
    Doubles dx = x;
    central_difference(x.data(), dx.data(), window - 2, setting);
    for (std::size_t i = 0; i < x.size() && window > 3; ++i)
        check(same_bits(dx[i], reference::central_difference(x, i, setting)));
    std::vector<CentralDiffOnline> derivatives(static_cast<std::size_t>(n));
    std::vector<AmplitudeLimitOnline> limits(derivatives.size());
    std::vector<LimitAverageOnline> both(derivatives.size());
    const reference::AmplitudeLimit limit(setting);
    const reference::MovingAverage average(window);
    init_central_difference_onlines(derivatives.data(), n, setting);
    init_amlitude_limit_filer_onlines(limits.data(), n, setting);
    init_move_average_filter_onlines(&averages, window, n);
    init_amlitude_limit_move_average_filter_onlines(both.data(), window, n, setting);
    compare(input, n, reference::Difference(setting),
            [&](double *v) { central_difference_onlines(derivatives.data(), v, v, n); });
    compare(input, n, limit, [&](double *v) { amlitude_limit_filer_onlines(limits.data(), v, v, n); });
    compare(input, n, average, [&](double *v) { move_average_filter_onlines(&averages, v, v); });
    compare(
        input, n, [l = limit, a = average](double v) mutable { return a(l(v)); },
        [&](double *v) { amlitude_limit_move_average_filter_onlines(both.data(), v, v, n); });
}
