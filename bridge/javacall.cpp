#include "bridge/javacall.h"

#include <cstdio>

namespace skiff::jni {

namespace {

std::atomic<JavaVM*> s_virtualMachine{nullptr};

// Resolves `method` in `cls` (an instance or static method, by its kind).
// When it does not resolve, clears the error, writes "<context>: Java method
// <name> <signature> not found\n" on standard error and gives null.
jmethodID Resolve(JNIEnv* pEnv, jclass cls, const JavaMethod& method, const char* context) {
  jmethodID id = method.kind == JavaMethod::Static
                     ? pEnv->GetStaticMethodID(cls, method.name, method.signature)
                     : pEnv->GetMethodID(cls, method.name, method.signature);
  if (pEnv->ExceptionCheck()) {
    // NoSuchMethodError: the id stays null and the method is never called.
    pEnv->ExceptionClear();
    id = nullptr;
  }
  if (id == nullptr) {
    std::fprintf(stderr, "%s: Java method %s %s not found\n", context, method.name,
                 method.signature);
  }
  return id;
}

// The ids of `methods` in `cls`, each in its method's slot.
std::vector<jmethodID> ResolveAll(JNIEnv* pEnv, jclass cls,
                                  const std::vector<const JavaMethod*>& methods,
                                  const char* context) {
  std::vector<jmethodID> ids;
  for (const JavaMethod* method : methods) {
    const size_t slot = static_cast<size_t>(method->slot);
    if (ids.size() <= slot) ids.resize(slot + 1, nullptr);
    ids[slot] = Resolve(pEnv, cls, *method, context);
  }
  return ids;
}

}  // namespace

JavaVM* VirtualMachine() { return s_virtualMachine.load(std::memory_order_acquire); }

JNIEnv* AttachedEnv() {
  JavaVM* pJVM = VirtualMachine();
  if (pJVM == nullptr) return nullptr;
  JNIEnv* pEnv = nullptr;
  if (pJVM->AttachCurrentThread(reinterpret_cast<void**>(&pEnv), nullptr) != JNI_OK) return nullptr;
  return pEnv;
}

PeerRegistry::PeerRegistry(const char* context, std::initializer_list<const JavaMethod*> methods)
    : context_(context), methods_(methods) {}

const JavaPeer* PeerRegistry::Bind(JNIEnv* pEnv, jobject object) {
  if (pEnv == nullptr || object == nullptr) return nullptr;
  std::lock_guard<std::mutex> lock(bindLock_);
  for (const std::unique_ptr<JavaPeer>& peer : bound_) {
    if (pEnv->IsSameObject(peer->object_, object)) return peer.get();
  }
  LocalRef<jclass> cls(pEnv, pEnv->GetObjectClass(object));
  if (Threw(pEnv, "JNI function", "GetObjectClass") || !cls) return nullptr;
  std::unique_ptr<JavaPeer> peer(new JavaPeer());
  peer->object_ = pEnv->NewGlobalRef(object);
  peer->class_ = static_cast<jclass>(pEnv->NewGlobalRef(cls.get()));
  if (peer->object_ == nullptr || peer->class_ == nullptr) {
    Threw(pEnv, "JNI function", "NewGlobalRef");
    return nullptr;  // what was made stays behind: a global reference too many
  }
  peer->ids_ = ResolveAll(pEnv, peer->class_, methods_, context_);
  bound_.push_back(std::move(peer));
  return bound_.back().get();
}

const JavaPeer* BindClass(JNIEnv* pEnv, const char* className,
                          std::initializer_list<const JavaMethod*> methods) {
  if (pEnv == nullptr) return nullptr;
  LocalRef<jclass> local(pEnv, pEnv->FindClass(className));
  if (Threw(pEnv, "JNI function", "FindClass") || !local) return nullptr;
  auto* peer = new JavaPeer();  // kept for the life of the process
  peer->class_ = static_cast<jclass>(pEnv->NewGlobalRef(local.get()));
  peer->ids_ = ResolveAll(pEnv, peer->class_, methods, className);
  return peer;
}

LocalFrame::LocalFrame(JNIEnv* pEnv, jint capacity) {
  if (pEnv == nullptr) return;
  if (pEnv->PushLocalFrame(capacity) == 0) {
    env_ = pEnv;
  } else {
    Threw(pEnv, "JNI function", "PushLocalFrame");
  }
}

bool Threw(JNIEnv* pEnv, const char* kind, const char* name) {
  if (!pEnv->ExceptionCheck()) return false;
  std::fprintf(stderr, "%s %s threw an exception\n", kind, name);
  pEnv->ExceptionDescribe();  // writes the exception and its stack, and clears it
  return true;
}

}  // namespace skiff::jni

// The virtual machine is taken once, when it loads the library, so no later
// call has to write it while other threads read it.
extern "C" JNIEXPORT jint JNICALL JNI_OnLoad(JavaVM* pJVM, void*) {
  skiff::jni::s_virtualMachine.store(pJVM, std::memory_order_release);
  return JNI_VERSION_1_8;
}
