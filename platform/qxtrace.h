// The platform's trace facility: entry and exit records of named scopes.
//
// The facility is active when the platform was configured with a trace file;
// callers test _QXtraceActive once and skip the records when it is 0, so
// tracing costs nothing while inactive.
#ifndef SKIFF_PLATFORM_QXTRACE_H_
#define SKIFF_PLATFORM_QXTRACE_H_

#ifdef __cplusplus
extern "C" {
#endif

// 1 when records are written, 0 otherwise. Constant for the process.
int _QXtraceActive(void);
// Records entry into and exit from the named scope.
void _QXtraceEnter(const char* scope);
void _QXtraceExit(const char* scope);

#ifdef __cplusplus
}
#endif

#endif  // SKIFF_PLATFORM_QXTRACE_H_
