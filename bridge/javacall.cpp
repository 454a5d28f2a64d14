#include "bridge/javacall.h"

#include <cstdio>

namespace skiff::jni {

JNIEnv* AttachedEnv(JavaVM* pJVM) {
  if (pJVM == nullptr) return nullptr;
  JNIEnv* pEnv = nullptr;
  if (pJVM->AttachCurrentThread(reinterpret_cast<void**>(&pEnv), nullptr) != JNI_OK) return nullptr;
  return pEnv;
}

bool Resolve(JNIEnv* pEnv, jclass cls, JavaMethod& method, const char* context) {
  method.id = method.kind == JavaMethod::Static
                  ? pEnv->GetStaticMethodID(cls, method.name, method.signature)
                  : pEnv->GetMethodID(cls, method.name, method.signature);
  if (pEnv->ExceptionCheck()) {
    // NoSuchMethodError: the id stays null and the method is never called.
    pEnv->ExceptionClear();
    method.id = nullptr;
  }
  if (method.id == nullptr) {
    std::fprintf(stderr, "%s: Java method %s %s not found\n", context, method.name,
                 method.signature);
    return false;
  }
  return true;
}

jclass FindGlobalClass(JNIEnv* pEnv, const char* className) {
  jclass local = pEnv->FindClass(className);
  if (Threw(pEnv, "JNI function", "FindClass") || local == nullptr) return nullptr;
  jclass global = static_cast<jclass>(pEnv->NewGlobalRef(local));
  pEnv->DeleteLocalRef(local);
  return global;
}

LocalRef<jintArray> NewIntArray(JNIEnv* pEnv, const jint* values, jsize count) {
  LocalRef<jintArray> array(pEnv, pEnv->NewIntArray(count));
  if (Threw(pEnv, "JNI function", "NewIntArray") || !array) return {};
  if (count > 0) pEnv->SetIntArrayRegion(array.get(), 0, count, values);
  return array;
}

bool Threw(JNIEnv* pEnv, const char* kind, const char* name) {
  if (!pEnv->ExceptionCheck()) return false;
  std::fprintf(stderr, "%s %s threw an exception\n", kind, name);
  pEnv->ExceptionDescribe();  // writes the exception and its stack, and clears it
  return true;
}

}  // namespace skiff::jni
