#include "bridge/tracescope.h"

namespace skiff {

const bool TraceScope::s_active = _QXtraceActive() != 0;

}  // namespace skiff
