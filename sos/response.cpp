#include <mensura/sos.h>

int mensura_sos_response(const double *, int, double, const double *, double *, double *, ptrdiff_t) {
    return MENSURA_SOS_UNREACHABLE;
}
int mensura_sos_group_delay(const double *, int, double, const double *, double *, ptrdiff_t) {
    return MENSURA_SOS_UNREACHABLE;
}
