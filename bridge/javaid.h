// Platform ids as Java sees them.
#ifndef SKIFF_BRIDGE_JAVAID_H_
#define SKIFF_BRIDGE_JAVAID_H_

#include <jni.h>

#include <cstdint>

namespace skiff {

// An id as Java's int: an id of 2^31 or more is negative there.
inline jint JavaId(uint32_t id) { return static_cast<jint>(id); }

}  // namespace skiff

#endif  // SKIFF_BRIDGE_JAVAID_H_
