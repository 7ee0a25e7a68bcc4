#include <mensura/sos.h>

const char *mensura_sos_message(int) { return ""; }
