// Filters for several channels: an array of filter records, one for each channel, and one sample of each channel a call.
#pragma once

namespace mensura::online {

template <typename Record, typename Init>
void each(Record *s, int count, Init init) {
    for (int i = 0; i < count; ++i) init(s[i]);
}

template <typename Record>
void run(double (*filter)(Record *, double), Record *s, const double *x, double *out, int count) {
    for (int i = 0; i < count; ++i) out[i] = filter(&s[i], x[i]);
}

}  // namespace mensura::online
