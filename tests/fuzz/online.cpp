// Streaming filters, for one channel and for many, with any samples.
#include <mensura/online.h>

#include "input.h"
#include "support/reference/online.h"

using namespace fuzz;

template <class State, class RunAll, class RunOne, class Reference>
static void compare(Input &input, State *all, std::size_t channels, RunAll run_all, RunOne run_one, Reference fresh) {
    std::vector<State> alone(all, all + channels);
    std::vector<Reference> expected(channels, fresh);
    for (int step = 0; step < 25; ++step) {
        const Doubles x = numbers(input, static_cast<int>(channels), 3);
        Doubles out = x;
        run_all(all, out.data(), out.data(), static_cast<int>(channels));
        for (std::size_t i = 0; i < channels; ++i) {
            const double y = expected[i](x[i]);
            check(same_bits(out[i], y));
            check(same_bits(run_one(&alone[i], x[i]), y));
        }
    }
}

void fuzz::test(Input &input) {
    static MovingAverageBank bank;
    const int window = input.ConsumeIntegralInRange(1, input.ConsumeBool() ? 20 : 300);
    const int channels = input.ConsumeIntegralInRange(1, 10);
    const double setting = number(input);
    const Doubles x = numbers(input, window - 2);
    Doubles dx = x;
    central_difference(x.data(), dx.data(), window - 2, setting);
    for (std::size_t i = 0; i < x.size() && window > 3; ++i)
        check(same_bits(dx[i], reference::central_difference(x, i, setting)));
    std::vector<CentralDiffOnline> derivatives(static_cast<std::size_t>(channels));
    std::vector<AmplitudeLimitOnline> limits(derivatives.size());
    std::vector<LimitAverageOnline> both(derivatives.size());
    init_central_difference_onlines(derivatives.data(), channels, setting);
    init_amlitude_limit_filer_onlines(limits.data(), channels, setting);
    init_move_average_filter_onlines(&bank, window, channels);
    init_amlitude_limit_move_average_filter_onlines(both.data(), window, channels, setting);
    const auto average_all = [](auto *, const double *from, double *out, int) {
        move_average_filter_onlines(&bank, from, out);
    };
    const reference::AmplitudeLimit limit(setting);
    const reference::MovingAverage average(window);
    const auto limit_and_average = [l = limit, a = average](double v) mutable { return a(l(v)); };
    const std::size_t n = both.size();
    compare(input, derivatives.data(), n, central_difference_onlines, central_difference_online,
            reference::Difference(setting));
    compare(input, limits.data(), n, amlitude_limit_filer_onlines, amlitude_limit_filer_online, limit);
    compare(input, bank.Filters, n, average_all, move_average_filter_online, average);
    compare(input, both.data(), n, amlitude_limit_move_average_filter_onlines,
            amlitude_limit_move_average_filter_online, limit_and_average);
}
