#include <mensura/sos.h>

int mensura_sos_extension(const double *, int) { return MENSURA_SOS_UNREACHABLE; }
int mensura_sos_filtfilt(const double *, int, int, ptrdiff_t, const double *, ptrdiff_t, double *, ptrdiff_t, ptrdiff_t,
                         double *) {
    return MENSURA_SOS_UNREACHABLE;
}
