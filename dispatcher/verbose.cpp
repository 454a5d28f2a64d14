// Writing the dispatcher's verbose lines.
#include "dispatcher/verbose.h"

#include <cstdio>

#include "dispatcher/main.h"

namespace skiff {

void DispatcherVerbose(const char* line) {
  if (QxwEventDispatcher::m_doUseVerboseMode) std::fputs(line, stderr);
}

}  // namespace skiff
