// JavaTexts: the Java strings of platform texts that one report sends again
// and again (a submap's name for each hit on it, a symbol type, the
// selection name of an object with several symbols), each made once while
// the cache lives instead of once per upcall.
#ifndef SKIFF_BRIDGE_TEXTCACHE_H_
#define SKIFF_BRIDGE_TEXTCACHE_H_

#include <jni.h>

#include <cstddef>
#include <string>
#include <vector>

#include "bridge/javacall.h"

namespace skiff::jni {

class JavaTexts {
 public:
  // Keeps the strings of the last `capacity` different texts asked for
  // (at least one): that many local references at most, all deleted with
  // the cache.
  JavaTexts(JNIEnv* pEnv, size_t capacity);

  JavaTexts(const JavaTexts&) = delete;
  JavaTexts& operator=(const JavaTexts&) = delete;

  // The Java string of platform text `text` (null is ""), as mb2jstring
  // makes it; owned by the cache, valid until the cache ends or makes room
  // for `capacity` other texts. Null when Java fails.
  jstring Get(const char* text);

 private:
  struct Entry {
    std::string text;
    LocalRef<jstring> str;
  };
  JNIEnv* env_;
  std::vector<Entry> entries_;
  size_t capacity_;
  size_t next_ = 0;  // the entry replaced next once the cache is full
};

}  // namespace skiff::jni

#endif  // SKIFF_BRIDGE_TEXTCACHE_H_
