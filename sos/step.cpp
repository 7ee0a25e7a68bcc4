#include <mensura/sos.h>

int mensura_sos_step_response(const double *, int, double *, ptrdiff_t) { return MENSURA_SOS_UNREACHABLE; }
int mensura_sos_impulse_response(const double *, int, double *, ptrdiff_t) { return MENSURA_SOS_UNREACHABLE; }
int mensura_sos_step_figures(const double *, int, double, ptrdiff_t, double *, ptrdiff_t *) {
    return MENSURA_SOS_UNREACHABLE;
}
