#include "bridge/properties.h"

namespace skiff::jni {

namespace {

constexpr JavaMethod kInit{"<init>", "()V", JavaMethod::Instance, 0};
constexpr JavaMethod kPut{"put", "(Ljava/lang/Object;Ljava/lang/Object;)Ljava/lang/Object;",
                          JavaMethod::Instance, 1};

// java.util.Properties with its constructor and put, bound by the first call
// of the process (on whichever thread) under the language's once-only guard.
const JavaPeer* PropertiesClass(JNIEnv* pEnv) {
  static const JavaPeer* const properties =
      BindClass(pEnv, "java/util/Properties", {&kInit, &kPut});
  return properties;
}

}  // namespace

LocalRef<jobject> NewProperties(JNIEnv* pEnv) {
  return NewObject(pEnv, PropertiesClass(pEnv), kInit);
}

void PutProperty(JNIEnv* pEnv, jobject properties, jstring key, jstring value) {
  if (properties == nullptr || key == nullptr || value == nullptr) return;
  // put's result is the value it replaced.
  CallObjectOn(pEnv, properties, PropertiesClass(pEnv), kPut, key, value);
}

}  // namespace skiff::jni
