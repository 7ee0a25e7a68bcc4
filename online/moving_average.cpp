// Moving averages: the window is summed anew for every sample, in the order of its slots.

#include <mensura/online.h>

#include <algorithm>
#include <cstddef>

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

// An ordered sum waits for each of its additions, so the sums of several channels cost no more than one.
constexpr std::size_t kSideBySide = 5;

// The next sample of kCount channels of one length.
template <std::size_t kCount>
void step(MovingAverageOnline *s, const double *x, double *out) {
    for (std::size_t c = 0; c < kCount; ++c) take(s[c], x[c]);
    double sums[kCount] = {};
    for (int i = 0; i < s->Length; ++i)
        for (std::size_t c = 0; c < kCount; ++c) sums[c] += s[c].Buffer[i];
    for (std::size_t c = 0; c < kCount; ++c) out[c] = mean(s[c], sums[c]);
}

// As many of the `left` channels as have the length of the first, up to kMost; returns their number.
template <std::size_t kMost = kSideBySide>
std::size_t step_alike(MovingAverageOnline *s, const double *x, double *out, std::size_t left) {
    if constexpr (kMost > 1) {
        const auto alike = [&](const MovingAverageOnline &channel) { return channel.Length == s->Length; };
        if (left < kMost || !std::all_of(s, s + kMost, alike)) return step_alike<kMost - 1>(s, x, out, left);
    }
    step<kMost>(s, x, out);
    return kMost;
}

}  // namespace

void init_move_average_filter_online(MovingAverageOnline *s, int length) {
    s->Length = length;
    std::fill_n(s->Buffer, length, 0.0);
    s->Pos = 0;
    s->Full = 0;
}

double move_average_filter_online(MovingAverageOnline *s, double x) {
    double y;
    step<1>(s, &x, &y);
    return y;
}

void init_move_average_filter_onlines(MovingAverageBank *b, int length, int count) {
    b->Count = count;
    each(b->Filters, count, [&](MovingAverageOnline &channel) { init_move_average_filter_online(&channel, length); });
}

int move_average_filter_onlines(MovingAverageBank *b, const double *x, double *out) {
    const auto count = static_cast<std::size_t>(std::max(b->Count, 0));
    for (std::size_t i = 0; i < count;) i += step_alike(b->Filters + i, x + i, out + i, count - i);
    return b->Count;
}
