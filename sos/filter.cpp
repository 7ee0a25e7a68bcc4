#include <mensura/sos.h>

int mensura_sos_filter(const double *, int, double *, const double *, ptrdiff_t, double *, ptrdiff_t, ptrdiff_t) {
    return MENSURA_SOS_UNREACHABLE;
}
int mensura_sos_filter_channels(const double *, int, double *, int, const double *, ptrdiff_t, ptrdiff_t, double *,
                                ptrdiff_t, ptrdiff_t, ptrdiff_t) {
    return MENSURA_SOS_UNREACHABLE;
}
