// The one layer through which native code calls into Java: the calling
// thread's environment, local references that delete themselves, Java peers
// bound once, and calls that never leave an exception pending.
//
// A Java peer is a Java object (or class) that native code calls, bound
// together with the ids of the methods it calls. A binding never changes and
// is never freed, so a thread that took one may go on using it while another
// thread binds a newer one.
//
// Every call into Java goes through CallObject, CallBoolean, CallVoid or
// NewObject. Each returns null, false or nothing when there is no peer, when
// the method did not resolve (it is then never called) or when it threw (the
// exception is then reported on standard error and cleared).
#ifndef SKIFF_BRIDGE_JAVACALL_H_
#define SKIFF_BRIDGE_JAVACALL_H_

#include <jni.h>

#include <atomic>
#include <cstddef>
#include <initializer_list>
#include <memory>
#include <mutex>
#include <vector>

namespace skiff::jni {

// The virtual machine that loaded the library; null outside one.
JavaVM* VirtualMachine();

// The calling thread's environment, attaching the thread to the virtual
// machine first when it is not a Java thread yet; threads are never
// detached. Null when there is no virtual machine or attaching fails.
JNIEnv* AttachedEnv();

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

// A frame of local references around one unit of work: every local
// reference made while it lives is gone when it ends, as when a native
// method returns. A thread that stays in one native call for good (the
// dispatcher thread in its event loop) opens one per event, so that a
// reference some path forgets to delete is freed with its event instead of
// piling up for the life of the session. A null environment, or a frame
// that cannot be opened (said on standard error), leaves references as they
// are.
class LocalFrame {
 public:
  // `capacity` is the number of references the work holds at once at most.
  LocalFrame(JNIEnv* pEnv, jint capacity);
  ~LocalFrame() {
    if (env_ != nullptr) env_->PopLocalFrame(nullptr);
  }

  LocalFrame(const LocalFrame&) = delete;
  LocalFrame& operator=(const LocalFrame&) = delete;

 private:
  JNIEnv* env_ = nullptr;  // null when no frame was opened
};

// A Java method known by name and JNI signature. `slot` is its place in the
// method table of the peers that call it.
struct JavaMethod {
  enum Kind { Instance, Static };
  const char* name;
  const char* signature;
  Kind kind;
  int slot;
};

// A Java object, or a class alone, with the ids of its methods; made by
// PeerRegistry or BindClass, immutable, alive for the life of the process.
class JavaPeer {
 public:
  // Global references; object() is null for a class binding.
  jobject object() const { return object_; }
  jclass cls() const { return class_; }
  // The method's id, null when it did not resolve.
  jmethodID id(const JavaMethod& method) const {
    const size_t slot = static_cast<size_t>(method.slot);
    return slot < ids_.size() ? ids_[slot] : nullptr;
  }

 private:
  friend class PeerRegistry;
  friend const JavaPeer* BindClass(JNIEnv*, const char*, std::initializer_list<const JavaMethod*>);
  JavaPeer() = default;

  jobject object_ = nullptr;
  jclass class_ = nullptr;
  std::vector<jmethodID> ids_;
};

// The peers of one kind (the dispatcher object, the client object): binds
// Java objects to one method table and publishes the one in use. Any thread.
class PeerRegistry {
 public:
  // `context` names the binder in messages ("QxwEventDispatcher::Open").
  PeerRegistry(const char* context, std::initializer_list<const JavaMethod*> methods);

  // The binding of `object`: an earlier binding of the same object is
  // reused, else a new one is made (a method that does not resolve is
  // reported and keeps a null id). Null when Java fails. Not published.
  const JavaPeer* Bind(JNIEnv* pEnv, jobject object);
  // The peer in use, null until one is published.
  const JavaPeer* Current() const { return current_.load(std::memory_order_acquire); }
  // Makes `peer` (from Bind, or null) the one in use.
  void Publish(const JavaPeer* peer) { current_.store(peer, std::memory_order_release); }

 private:
  const char* context_;
  std::vector<const JavaMethod*> methods_;
  std::mutex bindLock_;
  std::vector<std::unique_ptr<JavaPeer>> bound_;  // guarded by bindLock_
  std::atomic<const JavaPeer*> current_{nullptr};
};

// A binding of the named class ("java/util/Properties") and the methods
// given, made once by the caller (under a once-only guard) and kept for the
// life of the process; null when the class cannot be found (reported as
// Threw reports it).
const JavaPeer* BindClass(JNIEnv* pEnv, const char* className,
                          std::initializer_list<const JavaMethod*> methods);

// True when the last JNI call left an exception pending: the exception is
// then reported on standard error, after "<kind> <name> threw an
// exception\n" (kind "Java method" or "JNI function"), and cleared.
bool Threw(JNIEnv* pEnv, const char* kind, const char* name);

// Calls on `target`, an object of the peer's class. A static method is
// called on the class, whatever the target.
template <typename R = jobject, typename... Args>
LocalRef<R> CallObjectOn(JNIEnv* pEnv, jobject target, const JavaPeer* peer,
                         const JavaMethod& method, Args... args) {
  jmethodID id = peer != nullptr ? peer->id(method) : nullptr;
  if (pEnv == nullptr || id == nullptr || target == nullptr) return {};
  jobject result = method.kind == JavaMethod::Static
                       ? pEnv->CallStaticObjectMethod(peer->cls(), id, args...)
                       : pEnv->CallObjectMethod(target, id, args...);
  if (Threw(pEnv, "Java method", method.name)) return {};
  return LocalRef<R>(pEnv, static_cast<R>(result));
}

template <typename... Args>
bool CallBooleanOn(JNIEnv* pEnv, jobject target, const JavaPeer* peer, const JavaMethod& method,
                   Args... args) {
  jmethodID id = peer != nullptr ? peer->id(method) : nullptr;
  if (pEnv == nullptr || id == nullptr || target == nullptr) return false;
  jboolean result = method.kind == JavaMethod::Static
                        ? pEnv->CallStaticBooleanMethod(peer->cls(), id, args...)
                        : pEnv->CallBooleanMethod(target, id, args...);
  if (Threw(pEnv, "Java method", method.name)) return false;
  return result != JNI_FALSE;
}

template <typename... Args>
void CallVoidOn(JNIEnv* pEnv, jobject target, const JavaPeer* peer, const JavaMethod& method,
                Args... args) {
  jmethodID id = peer != nullptr ? peer->id(method) : nullptr;
  if (pEnv == nullptr || id == nullptr || target == nullptr) return;
  if (method.kind == JavaMethod::Static) {
    pEnv->CallStaticVoidMethod(peer->cls(), id, args...);
  } else {
    pEnv->CallVoidMethod(target, id, args...);
  }
  Threw(pEnv, "Java method", method.name);
}

// Where a method of the peer is called: its class for a static method, else
// its object.
inline jobject Target(const JavaPeer* peer, const JavaMethod& method) {
  return method.kind == JavaMethod::Static ? static_cast<jobject>(peer->cls()) : peer->object();
}

// The same on the peer's own object (its class for a static method).
template <typename R = jobject, typename... Args>
LocalRef<R> CallObject(JNIEnv* pEnv, const JavaPeer* peer, const JavaMethod& method, Args... args) {
  return peer != nullptr ? CallObjectOn<R>(pEnv, Target(peer, method), peer, method, args...)
                         : LocalRef<R>();
}

template <typename... Args>
bool CallBoolean(JNIEnv* pEnv, const JavaPeer* peer, const JavaMethod& method, Args... args) {
  if (peer == nullptr) return false;
  return CallBooleanOn(pEnv, Target(peer, method), peer, method, args...);
}

template <typename... Args>
void CallVoid(JNIEnv* pEnv, const JavaPeer* peer, const JavaMethod& method, Args... args) {
  if (peer != nullptr) CallVoidOn(pEnv, Target(peer, method), peer, method, args...);
}

// Constructs an object of the peer's class with the constructor `method`.
template <typename R = jobject, typename... Args>
LocalRef<R> NewObject(JNIEnv* pEnv, const JavaPeer* peer, const JavaMethod& method, Args... args) {
  jmethodID id = peer != nullptr ? peer->id(method) : nullptr;
  if (pEnv == nullptr || id == nullptr) return {};
  jobject result = pEnv->NewObject(peer->cls(), id, args...);
  if (Threw(pEnv, "Java method", method.name)) return {};
  return LocalRef<R>(pEnv, static_cast<R>(result));
}

}  // namespace skiff::jni

#endif  // SKIFF_BRIDGE_JAVACALL_H_
