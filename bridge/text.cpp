#include "bridge/text.h"

#include <cstdio>
#include <cstring>

namespace {

using skiff::jni::JavaMethod;
using skiff::jni::JavaPeer;

constexpr JavaMethod kGetBytes{"getBytes", "()[B", JavaMethod::Instance, 0};
constexpr JavaMethod kFromBytes{"<init>", "([B)V", JavaMethod::Instance, 1};

// java.lang.String and the two members the conversions use, bound by the
// first conversion of the process (on whichever thread) under the language's
// once-only guard.
const JavaPeer* StringClass(JNIEnv* pEnv) {
  static const JavaPeer* const strings =
      skiff::jni::BindClass(pEnv, "java/lang/String", {&kGetBytes, &kFromBytes});
  return strings;
}

// A new local Java string of the `length` bytes at `text` decoded in the
// default character set; null when Java fails.
jstring Decode(JNIEnv* pEnv, const JavaPeer* strings, const char* text, jsize length) {
  skiff::jni::LocalRef<jbyteArray> bytes(pEnv, pEnv->NewByteArray(length));
  if (skiff::jni::Threw(pEnv, "JNI function", "NewByteArray") || !bytes) return nullptr;
  pEnv->SetByteArrayRegion(bytes.get(), 0, length, reinterpret_cast<const jbyte*>(text));
  return skiff::jni::NewObject<jstring>(pEnv, strings, kFromBytes, bytes.get()).release();
}

// True when the default character set decodes each of the bytes 1 to 127 as
// the character of that code, so that ASCII text may cross as modified
// UTF-8. Every character set a virtual machine defaults to on this system
// does; the check makes it a fact rather than an assumption.
bool AsciiDecodesAsItself(JNIEnv* pEnv, const JavaPeer* strings) {
  constexpr jsize kCodes = 127;
  char probe[kCodes];
  for (jsize i = 0; i < kCodes; ++i) probe[i] = static_cast<char>(i + 1);
  skiff::jni::LocalRef<jstring> decoded(pEnv, Decode(pEnv, strings, probe, kCodes));
  if (!decoded || pEnv->GetStringLength(decoded.get()) != kCodes) return false;
  jchar chars[kCodes];
  pEnv->GetStringRegion(decoded.get(), 0, kCodes, chars);
  if (skiff::jni::Threw(pEnv, "JNI function", "GetStringRegion")) return false;
  for (jsize i = 0; i < kCodes; ++i) {
    if (chars[i] != static_cast<jchar>(i + 1)) return false;
  }
  return true;
}

}  // namespace

jbyteArray jstring2mb(JNIEnv* pEnv, jstring str) {
  if (str == nullptr) return nullptr;
  return skiff::jni::CallObjectOn<jbyteArray>(pEnv, str, StringClass(pEnv), kGetBytes).release();
}

jstring mb2jstring(JNIEnv* pEnv, const char* text) {
  const JavaPeer* strings = StringClass(pEnv);
  if (text == nullptr) text = "";
  // Most platform text is ASCII, which modified UTF-8 carries as the same
  // bytes: one call instead of an array, a copy and a constructor.
  size_t length = 0;
  bool ascii = true;
  for (; text[length] != '\0'; ++length) {
    if (static_cast<unsigned char>(text[length]) >= 0x80) ascii = false;
  }
  static const bool asciiIsItself = AsciiDecodesAsItself(pEnv, strings);
  if (ascii && asciiIsItself) {
    jstring str = pEnv->NewStringUTF(text);
    return skiff::jni::Threw(pEnv, "JNI function", "NewStringUTF") ? nullptr : str;
  }
  return Decode(pEnv, strings, text, static_cast<jsize>(length));
}

namespace skiff::jni {

Utf8Chars::Utf8Chars(JNIEnv* pEnv, jstring str) : env_(pEnv), str_(str) {
  if (str_ == nullptr) return;
  chars_ = env_->GetStringUTFChars(str_, nullptr);
  if (Threw(env_, "JNI function", "GetStringUTFChars")) chars_ = nullptr;
}

Utf8Chars::~Utf8Chars() {
  if (chars_ != nullptr) env_->ReleaseStringUTFChars(str_, chars_);
}

LocalRef<jstring> NewUtf8String(JNIEnv* pEnv, const char* text) {
  jstring str = pEnv->NewStringUTF(text);
  if (Threw(pEnv, "JNI function", "NewStringUTF")) return {};
  return LocalRef<jstring>(pEnv, str);
}

void PrintErrorInJava(const JavaPeer* peer, const JavaMethod& printError, const char* context,
                      const char* errorString) {
  char joined[kErrorTextSize];
  if (context != nullptr) {
    std::snprintf(joined, sizeof(joined), "%s%s", context,
                  errorString != nullptr ? errorString : "");
    errorString = joined;
  }
  JNIEnv* pEnv = AttachedEnv();
  if (pEnv == nullptr || peer == nullptr) return;
  LocalRef<jstring> text(pEnv, mb2jstring(pEnv, errorString));
  if (text) CallVoid(pEnv, peer, printError, text.get());
}

}  // namespace skiff::jni
