// Moving averages.  The window, a ring buffer, is summed anew for every sample, in the order in which it lies in memory.

#include <mensura/online.h>

#include <algorithm>
#include <cstddef>

#include "average_kernel.h"
#include "channels.h"

using namespace mensura::online;

namespace {

void put(MovingAverageOnline &s, double x) {
    s.Buffer[s.Pos] = x;
    if (++s.Pos == s.Length) {
        s.Pos = 0;
        s.Full = 1;
    }
}

double mean(const MovingAverageOnline &s, double sum) { return sum / (s.Full == 0 ? s.Pos : s.Length); }

// An ordered sum waits for each of its additions, so the sums of this many channels take no longer than one.
constexpr std::size_t kSideBySide = 5;

// The next sample of kCount channels that have the same length.
template <std::size_t kCount>
void run_together(MovingAverageOnline *s, const double *x, double *out) {
    for (std::size_t c = 0; c < kCount; ++c) put(s[c], x[c]);
    double sums[kCount] = {};
    for (int i = 0; i < s->Length; ++i)
        for (std::size_t c = 0; c < kCount; ++c) sums[c] += s[c].Buffer[i];
    for (std::size_t c = 0; c < kCount; ++c) out[c] = mean(s[c], sums[c]);
}

// The next sample of as many of the `left` channels as have the length of the first one, up to kMost; returns their
// number.
template <std::size_t kMost = kSideBySide>
std::size_t run_alike(MovingAverageOnline *s, const double *x, double *out, std::size_t left) {
    if constexpr (kMost > 1) {
        const auto alike = [&](const MovingAverageOnline &channel) { return channel.Length == s->Length; };
        if (left < kMost || !std::all_of(s, s + kMost, alike)) return run_alike<kMost - 1>(s, x, out, left);
    }
    run_together<kMost>(s, x, out);
    return kMost;
}

constexpr int kWorthUnrolling = 20;  // samples

// A vector of channels waits until their new samples have left the processor's store buffer: with fewer samples than this
// to add, and with two channels, it does not pay.
constexpr std::size_t kWorthVectors = 200;

bool is_worth_vectors(const MovingAverageOnline *s, std::size_t count) {
    const auto alike = [&](const MovingAverageOnline &channel) { return channel.Length == s->Length; };
    return count > 2 && count <= kMostTogether && s->Length > 0 &&
           count * static_cast<std::size_t>(s->Length) >= kWorthVectors && std::all_of(s, s + count, alike);
}

// The next sample of `count` channels that have the same length, a vector of channels at a time.
void run_in_vectors(MovingAverageOnline *s, const double *x, double *out, std::size_t count) {
    for (std::size_t c = 0; c < count; ++c) put(s[c], x[c]);
    double sums[kMostTogether];
    sum_windows(s, count, static_cast<std::size_t>(s->Length), sums);
    for (std::size_t c = 0; c < count; ++c) out[c] = mean(s[c], sums[c]);
}

}  // namespace

void init_move_average_filter_online(MovingAverageOnline *s, int length) {
    s->Length = length;
    std::fill_n(s->Buffer, length, 0.0);
    s->Pos = 0;
    s->Full = 0;
}

double move_average_filter_online(MovingAverageOnline *s, double x) {
    if (s->Length < kWorthUnrolling) {
        double y;
        run_together<1>(s, &x, &y);
        return y;
    }
    put(*s, x);
    double sum = 0.0;
#pragma GCC unroll 8
    for (int i = 0; i < s->Length; ++i) sum += s->Buffer[i];
    return mean(*s, sum);
}

void init_move_average_filter_onlines(MovingAverageBank *b, int length, int count) {
    b->Count = count;
    each(b->Filters, count, [&](MovingAverageOnline &channel) { init_move_average_filter_online(&channel, length); });
}

int move_average_filter_onlines(MovingAverageBank *b, const double *x, double *out) {
    const auto count = static_cast<std::size_t>(std::max(b->Count, 0));
    if (is_worth_vectors(b->Filters, count))
        run_in_vectors(b->Filters, x, out, count);
    else
        for (std::size_t i = 0; i < count;) i += run_alike(b->Filters + i, x + i, out + i, count - i);
    return b->Count;
}
