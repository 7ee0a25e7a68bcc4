#include "prototype.h"

namespace mensura::sos {

bool make_prototype(const mensura_sos_request &, Real, Prototype &) { return false; }

}  // namespace mensura::sos
