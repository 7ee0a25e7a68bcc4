// The forms for several channels: an array of records, a sample of each.
#pragma once

namespace mensura::online {

template <typename Record, typename Init>
void each(Record *s, int count, Init init) {
    for (int i = 0; i < count; ++i) init(s[i]);
}

template <typename Record>
void run(double (*step)(Record *, double), Record *s, const double *x, double *out, int count) {
    for (int i = 0; i < count; ++i) out[i] = step(&s[i], x[i]);
}

}  // namespace mensura::online
