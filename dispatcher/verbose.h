// The dispatcher's verbose lines.
#ifndef SKIFF_DISPATCHER_VERBOSE_H_
#define SKIFF_DISPATCHER_VERBOSE_H_

namespace skiff {

// Writes `line` on standard error in the dispatcher's verbose mode
// (QxwEventDispatcher::m_doUseVerboseMode).
void DispatcherVerbose(const char* line);

}  // namespace skiff

#endif  // SKIFF_DISPATCHER_VERBOSE_H_
