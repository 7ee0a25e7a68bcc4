#include <mensura/sos.h>

int mensura_sos_default_request(mensura_sos_request *, int) { return MENSURA_SOS_UNREACHABLE; }
int mensura_sos_design(const mensura_sos_request *, double *, int) { return MENSURA_SOS_UNREACHABLE; }
