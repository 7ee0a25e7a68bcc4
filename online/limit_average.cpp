// The spike filter, followed by the moving average.

#include <mensura/online.h>

#include "channels.h"

using namespace mensura::online;

void init_amlitude_limit_move_average_filter_online(LimitAverageOnline *s, int length, double limit) {
    init_amlitude_limit_filer_online(&s->Limiter, limit);
    init_move_average_filter_online(&s->Average, length);
}

double amlitude_limit_move_average_filter_online(LimitAverageOnline *s, double x) {
    return move_average_filter_online(&s->Average, amlitude_limit_filer_online(&s->Limiter, x));
}

void init_amlitude_limit_move_average_filter_onlines(LimitAverageOnline *s, int length, int count, double limit) {
    each(s, count,
         [&](LimitAverageOnline &channel) { init_amlitude_limit_move_average_filter_online(&channel, length, limit); });
}

void amlitude_limit_move_average_filter_onlines(LimitAverageOnline *s, const double *x, double *out, int count) {
    run(amlitude_limit_move_average_filter_online, s, x, out, count);
}
