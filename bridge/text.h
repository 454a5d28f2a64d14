// Text crossing between Java and the platform. Platform text is
// NUL-terminated multibyte text in the virtual machine's default character
// set, so it crosses through java.lang.String's getBytes() and its
// byte-array constructor, never through modified UTF-8.
#ifndef SKIFF_BRIDGE_TEXT_H_
#define SKIFF_BRIDGE_TEXT_H_

#include <jni.h>

#include "bridge/javacall.h"

// A new local byte array holding the string's bytes in the default character
// set, without a NUL; null for a null string (or when Java fails).
jbyteArray jstring2mb(JNIEnv* pEnv, jstring str);

// A new local Java string decoded from the text's bytes in the default
// character set; a null text gives the empty string. Null only when Java
// fails.
jstring mb2jstring(JNIEnv* pEnv, const char* text);

namespace skiff::jni {

// The modified UTF-8 characters of a Java string, released when the scope
// ends; get() is null for a null string.
class Utf8Chars {
 public:
  Utf8Chars(JNIEnv* pEnv, jstring str);
  ~Utf8Chars();

  Utf8Chars(const Utf8Chars&) = delete;
  Utf8Chars& operator=(const Utf8Chars&) = delete;

  const char* get() const { return chars_; }

 private:
  JNIEnv* env_;
  jstring str_;
  const char* chars_ = nullptr;
};

// A new local Java string of text that needs no conversion: modified UTF-8,
// such as ASCII. Null only when Java fails.
LocalRef<jstring> NewUtf8String(JNIEnv* pEnv, const char* text);

// The size of an error text passed to Java, NUL included.
constexpr int kErrorTextSize = 1024;

// Reports an error text to Java through the static `printError` of the
// peer's class, on the calling thread (attached first): `context` (may be
// null) followed by `errorString`, cut to kErrorTextSize - 1 bytes when there
// is a context. Nothing without a peer.
void PrintErrorInJava(const JavaPeer* peer, const JavaMethod& printError, const char* context,
                      const char* errorString);

}  // namespace skiff::jni

#endif  // SKIFF_BRIDGE_TEXT_H_
