// Moving averages: the window is summed anew for every sample, in the order of its slots.

#include <mensura/online.h>

#include <algorithm>

#include "channels.h"

using namespace mensura::online;

namespace {

void take(MovingAverageOnline &s, double x) {
    s.Buffer[s.Pos] = x;
    if (++s.Pos == s.Length) {
        s.Pos = 0;
        s.Full = 1;
    }
}

double mean(const MovingAverageOnline &s, double sum) { return sum / (s.Full == 0 ? s.Pos : s.Length); }

}  // namespace

void init_move_average_filter_online(MovingAverageOnline *s, int length) {
    s->Length = length;
    std::fill_n(s->Buffer, length, 0.0);
    s->Pos = 0;
    s->Full = 0;
}

double move_average_filter_online(MovingAverageOnline *s, double x) {
    take(*s, x);
    double sum = 0.0;
    for (int i = 0; i < s->Length; ++i) sum += s->Buffer[i];
    return mean(*s, sum);
}

void init_move_average_filter_onlines(MovingAverageBank *b, int length, int count) {
    b->Count = count;
    each(b->Filters, count, [&](MovingAverageOnline &channel) { init_move_average_filter_online(&channel, length); });
}

int move_average_filter_onlines(MovingAverageBank *b, const double *x, double *out) {
    run(move_average_filter_online, b->Filters, x, out, b->Count);
    return b->Count;
}
