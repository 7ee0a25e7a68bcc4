#include "../internal/target.h"

namespace mensura::sos::MENSURA_TARGET {}
