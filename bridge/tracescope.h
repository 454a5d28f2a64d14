// TraceScope: reports an operation's entry and exit to the platform's trace
// facility. Whether the facility is active is read once, at load; while it
// is inactive a scope costs one test of a constant.
#ifndef SKIFF_BRIDGE_TRACESCOPE_H_
#define SKIFF_BRIDGE_TRACESCOPE_H_

#include "platform/qxtrace.h"

namespace skiff {

class TraceScope {
 public:
  // `name` must outlive the scope (a string literal).
  explicit TraceScope(const char* name) : name_(s_active ? name : nullptr) {
    if (name_ != nullptr) _QXtraceEnter(name_);
  }
  ~TraceScope() {
    if (name_ != nullptr) _QXtraceExit(name_);
  }

  TraceScope(const TraceScope&) = delete;
  TraceScope& operator=(const TraceScope&) = delete;

 private:
  static const bool s_active;
  const char* name_;
};

}  // namespace skiff

// Traces the enclosing function under the given name.
#define SKIFF_TRACE(name) ::skiff::TraceScope skiffTraceScope_(name)

#endif  // SKIFF_BRIDGE_TRACESCOPE_H_
