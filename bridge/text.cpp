#include "bridge/text.h"

#include <cstdio>
#include <cstring>

namespace {

using skiff::jni::JavaMethod;

// java.lang.String and the two members the conversions use, resolved once
// by the first conversion of the process (on whichever thread).
struct StringClass {
  jclass cls = nullptr;
  JavaMethod getBytes{"getBytes", "()[B", JavaMethod::Instance};
  JavaMethod fromBytes{"<init>", "([B)V", JavaMethod::Instance};

  explicit StringClass(JNIEnv* pEnv) {
    cls = skiff::jni::FindGlobalClass(pEnv, "java/lang/String");
    if (cls == nullptr) return;
    skiff::jni::Resolve(pEnv, cls, getBytes, "jstring2mb");
    skiff::jni::Resolve(pEnv, cls, fromBytes, "mb2jstring");
  }
};

const StringClass& Strings(JNIEnv* pEnv) {
  static const StringClass strings(pEnv);  // made once, under the language's guard
  return strings;
}

}  // namespace

jbyteArray jstring2mb(JNIEnv* pEnv, jstring str) {
  if (str == nullptr) return nullptr;
  return skiff::jni::CallObject<jbyteArray>(pEnv, str, Strings(pEnv).getBytes).release();
}

jstring mb2jstring(JNIEnv* pEnv, const char* text) {
  const StringClass& strings = Strings(pEnv);
  if (text == nullptr) text = "";
  const jsize length = static_cast<jsize>(std::strlen(text));
  skiff::jni::LocalRef<jbyteArray> bytes(pEnv, pEnv->NewByteArray(length));
  if (skiff::jni::Threw(pEnv, "JNI function", "NewByteArray") || !bytes) return nullptr;
  pEnv->SetByteArrayRegion(bytes.get(), 0, length, reinterpret_cast<const jbyte*>(text));
  return skiff::jni::NewObject<jstring>(pEnv, strings.cls, strings.fromBytes, bytes.get())
      .release();
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

void PrintErrorInJava(JavaVM* pJVM, jclass cls, const JavaMethod& printError, const char* context,
                      const char* errorString) {
  char joined[kErrorTextSize];
  if (context != nullptr) {
    std::snprintf(joined, sizeof(joined), "%s%s", context,
                  errorString != nullptr ? errorString : "");
    errorString = joined;
  }
  JNIEnv* pEnv = AttachedEnv(pJVM);
  if (pEnv == nullptr) return;
  LocalRef<jstring> text(pEnv, mb2jstring(pEnv, errorString));
  if (text) CallStaticVoid(pEnv, cls, printError, text.get());
}

}  // namespace skiff::jni
