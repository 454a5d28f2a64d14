// The one layer through which native code calls into Java: the calling
// thread's environment, local references that delete themselves, Java
// methods resolved once, and calls that never leave an exception pending.
//
// Every call into Java goes through CallObject, CallBoolean, CallVoid,
// CallStaticVoid or NewObject. Each returns null, false or nothing when the
// method did not resolve (it is then never called) or when it threw (the
// exception is then reported on standard error and cleared).
#ifndef SKIFF_BRIDGE_JAVACALL_H_
#define SKIFF_BRIDGE_JAVACALL_H_

#include <jni.h>

namespace skiff::jni {

// The calling thread's environment, attaching the thread to the virtual
// machine first when it is not a Java thread yet; threads are never
// detached. Null when there is no virtual machine or attaching fails.
JNIEnv* AttachedEnv(JavaVM* pJVM);

// Owns one local reference and deletes it when it goes out of scope.
template <typename T = jobject>
class LocalRef {
 public:
  LocalRef() = default;
  LocalRef(JNIEnv* pEnv, T ref) : env_(pEnv), ref_(ref) {}
  LocalRef(LocalRef&& other) noexcept : env_(other.env_), ref_(other.release()) {}
  LocalRef& operator=(LocalRef&& other) noexcept {
    if (this != &other) {
      reset();
      env_ = other.env_;
      ref_ = other.release();
    }
    return *this;
  }
  ~LocalRef() { reset(); }

  LocalRef(const LocalRef&) = delete;
  LocalRef& operator=(const LocalRef&) = delete;

  T get() const { return ref_; }
  explicit operator bool() const { return ref_ != nullptr; }
  // Gives up ownership: the caller deletes the reference.
  T release() {
    T ref = ref_;
    ref_ = nullptr;
    return ref;
  }
  void reset() {
    if (ref_ != nullptr) env_->DeleteLocalRef(ref_);
    ref_ = nullptr;
  }

 private:
  JNIEnv* env_ = nullptr;
  T ref_ = nullptr;
};

// A Java method known by name and JNI signature; `id` stays null until the
// method resolves.
struct JavaMethod {
  enum Kind { Instance, Static };

  constexpr JavaMethod(const char* methodName, const char* methodSignature, Kind methodKind)
      : name(methodName), signature(methodSignature), kind(methodKind) {}

  const char* name;
  const char* signature;
  Kind kind;
  jmethodID id = nullptr;
};

// Resolves `method` in `cls` (an instance or static method, by its kind).
// When it does not resolve, clears the error, writes "<context>: Java method
// <name> <signature> not found\n" on standard error and leaves the id null.
bool Resolve(JNIEnv* pEnv, jclass cls, JavaMethod& method, const char* context);

// A global reference to the named class ("java/util/Properties"), kept for
// the life of the process; null when the class cannot be found (reported as
// Threw reports it).
jclass FindGlobalClass(JNIEnv* pEnv, const char* className);

// True when the last JNI call left an exception pending: the exception is
// then reported on standard error, after "<kind> <name> threw an
// exception\n" (kind "Java method" or "JNI function"), and cleared.
bool Threw(JNIEnv* pEnv, const char* kind, const char* name);

template <typename R = jobject, typename... Args>
LocalRef<R> CallObject(JNIEnv* pEnv, jobject target, const JavaMethod& method, Args... args) {
  if (pEnv == nullptr || method.id == nullptr) return {};
  jobject result = pEnv->CallObjectMethod(target, method.id, args...);
  if (Threw(pEnv, "Java method", method.name)) return {};
  return LocalRef<R>(pEnv, static_cast<R>(result));
}

template <typename... Args>
bool CallBoolean(JNIEnv* pEnv, jobject target, const JavaMethod& method, Args... args) {
  if (pEnv == nullptr || method.id == nullptr) return false;
  jboolean result = pEnv->CallBooleanMethod(target, method.id, args...);
  if (Threw(pEnv, "Java method", method.name)) return false;
  return result != JNI_FALSE;
}

template <typename... Args>
void CallVoid(JNIEnv* pEnv, jobject target, const JavaMethod& method, Args... args) {
  if (pEnv == nullptr || method.id == nullptr) return;
  pEnv->CallVoidMethod(target, method.id, args...);
  Threw(pEnv, "Java method", method.name);
}

template <typename... Args>
void CallStaticVoid(JNIEnv* pEnv, jclass cls, const JavaMethod& method, Args... args) {
  if (pEnv == nullptr || method.id == nullptr) return;
  pEnv->CallStaticVoidMethod(cls, method.id, args...);
  Threw(pEnv, "Java method", method.name);
}

// A new Java int[] holding `count` values; null (reported as Threw reports
// it) when Java cannot make it.
LocalRef<jintArray> NewIntArray(JNIEnv* pEnv, const jint* values, jsize count);

// Constructs an object of `cls` with the constructor `method`.
template <typename R = jobject, typename... Args>
LocalRef<R> NewObject(JNIEnv* pEnv, jclass cls, const JavaMethod& method, Args... args) {
  if (pEnv == nullptr || method.id == nullptr) return {};
  jobject result = pEnv->NewObject(cls, method.id, args...);
  if (Threw(pEnv, "Java method", method.name)) return {};
  return LocalRef<R>(pEnv, static_cast<R>(result));
}

}  // namespace skiff::jni

#endif  // SKIFF_BRIDGE_JAVACALL_H_
