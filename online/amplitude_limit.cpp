// The spike filter: a sample that differs too much from the last good one is replaced by it.

#include <mensura/online.h>

#include <cmath>

#include "channels.h"

using namespace mensura::online;

namespace {

constexpr int kWarmUp = 6;           // samples that pass unchecked
constexpr int kMostRejections = 18;  // in a row; the next sample is accepted as a new level

}  // namespace

void init_amlitude_limit_filer_online(AmplitudeLimitOnline *s, double limit) { *s = {limit, 0.0, 0}; }

double amlitude_limit_filer_online(AmplitudeLimitOnline *s, double x) {
    if (s->Count < kWarmUp) {
        ++s->Count;
    } else if (std::fabs(x - s->Last) > s->Limit && s->Count < kWarmUp + kMostRejections) {
        ++s->Count;
        return s->Last;
    } else {
        s->Count = kWarmUp;
    }
    return s->Last = x;
}

void init_amlitude_limit_filer_onlines(AmplitudeLimitOnline *s, int count, double limit) {
    each(s, count, [&](AmplitudeLimitOnline &channel) { init_amlitude_limit_filer_online(&channel, limit); });
}

void amlitude_limit_filer_onlines(AmplitudeLimitOnline *s, const double *x, double *out, int count) {
    run(amlitude_limit_filer_online, s, x, out, count);
}
