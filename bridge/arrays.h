// Java arrays read by native code: id arrays checked against the count a
// request announced, string arrays walked element by element, and a Java
// string's bytes in the platform's character set. None of them can be
// misled by a count: the array's own length bounds every read.
#ifndef SKIFF_BRIDGE_ARRAYS_H_
#define SKIFF_BRIDGE_ARRAYS_H_

#include <jni.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "bridge/javacall.h"

namespace skiff::jni {

// The length of a Java array; -1 for a null array.
jsize ArrayLength(JNIEnv* pEnv, jarray array);

// The elements of `array` as unsigned 32-bit ids (a negative Java int is an
// id of 2^31 or more), when the array holds exactly `count` of them. Nothing
// when the array is null, when `count` is negative or differs from the
// array's length, or when Java fails to give the elements.
std::optional<std::vector<uint32_t>> IdsOfIntArray(JNIEnv* pEnv, jintArray array, int count);

// A new Java int[] of the ids (an id of 2^31 or more is negative there);
// null (reported as Threw reports it) when Java cannot make it.
LocalRef<jintArray> IntArrayOfIds(JNIEnv* pEnv, const std::vector<uint32_t>& ids);

// Calls `visit` with each element of a Java String[] in order, as modified
// UTF-8; a null element, or one Java cannot convert, is passed as null. Each
// element's local reference is gone before the next is read. Nothing for a
// null array.
void ForEachString(JNIEnv* pEnv, jobjectArray array,
                   const std::function<void(const char* text)>& visit);

// A Java string's bytes in the platform's character set with a NUL after
// them, in a buffer of malloc with four bytes per byte and four more, room
// for a caller that rewrites the text longer.
struct PlatformText {
  std::unique_ptr<char, decltype(&std::free)> text{nullptr, &std::free};
  size_t length = 0;         // bytes before the added NUL
  bool outOfMemory = false;  // the buffer could not be had; text is null
  // True when the bytes hold a NUL of their own, so that the text would read
  // shorter than the Java string.
  bool HoldsNul() const;
};
// A null string gives the empty text.
PlatformText PlatformTextOf(JNIEnv* pEnv, jstring str);

}  // namespace skiff::jni

#endif  // SKIFF_BRIDGE_ARRAYS_H_
