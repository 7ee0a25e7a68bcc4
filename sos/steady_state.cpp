#include <mensura/sos.h>

int mensura_sos_steady_state(const double *, int, double, double *) { return MENSURA_SOS_UNREACHABLE; }
