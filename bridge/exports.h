// Conventions of the exported native methods: each reports its entry to the
// platform's trace facility and, while JNI tracing is on, writes its own
// exported name on standard error.
#ifndef SKIFF_BRIDGE_EXPORTS_H_
#define SKIFF_BRIDGE_EXPORTS_H_

#include "bridge/tracescope.h"

// Write the name of every exported method on entry (QxwInterface.open sets
// it).
extern int s_doUseVerboseJNI;

namespace skiff::jni {

// Writes `name` followed by `end` on standard error while s_doUseVerboseJNI
// is set.
void TraceExportedMethod(const char* name, const char* end = "\n");

}  // namespace skiff::jni

// Opens the enclosing exported method: its trace scope and its name line.
#define SKIFF_EXPORTED_METHOD() \
  SKIFF_TRACE(__func__);        \
  ::skiff::jni::TraceExportedMethod(__func__)

#endif  // SKIFF_BRIDGE_EXPORTS_H_
