#include <mensura/sos.h>

int mensura_sos_order(const mensura_sos_requirement *, int, double, mensura_sos_request *, int) {
    return MENSURA_SOS_UNREACHABLE;
}
