#include "bridge/exports.h"

#include <cstdio>

int s_doUseVerboseJNI = 0;

namespace skiff::jni {

void TraceExportedMethod(const char* name, const char* end) {
  if (s_doUseVerboseJNI) std::fprintf(stderr, "%s%s", name, end);
}

}  // namespace skiff::jni
