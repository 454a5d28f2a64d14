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

}  // namespace

jbyteArray jstring2mb(JNIEnv* pEnv, jstring str) {
  if (str == nullptr) return nullptr;
  return skiff::jni::CallObjectOn<jbyteArray>(pEnv, str, StringClass(pEnv), kGetBytes).release();
}

jstring mb2jstring(JNIEnv* pEnv, const char* text) {
  const JavaPeer* strings = StringClass(pEnv);
  if (text == nullptr) text = "";
  const jsize length = static_cast<jsize>(std::strlen(text));
  skiff::jni::LocalRef<jbyteArray> bytes(pEnv, pEnv->NewByteArray(length));
  if (skiff::jni::Threw(pEnv, "JNI function", "NewByteArray") || !bytes) return nullptr;
  pEnv->SetByteArrayRegion(bytes.get(), 0, length, reinterpret_cast<const jbyte*>(text));
  return skiff::jni::NewObject<jstring>(pEnv, strings, kFromBytes, bytes.get()).release();
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
