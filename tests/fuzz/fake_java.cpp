// The fake Java side (see fake_java.h).
#include "tests/fuzz/fake_java.h"

#include <algorithm>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <map>
#include <memory>

namespace fakejava {

namespace {

void Check(bool holds) {
  if (!holds) std::abort();
}

// A Java object or class. `type` is a class name, or "[I", "[B" or "[L" for
// an array; `identity` is the object that a global reference copies.
struct Object {
  explicit Object(std::string type, bool isClass = false)
      : type(std::move(type)), isClass(isClass) {}
  std::string type;
  bool isClass;
  bool live = true;
  std::string text;  // a string's bytes
  std::vector<jint> ints;
  std::vector<jbyte> bytes;
  std::vector<jobject> elements;
  const Object* identity = this;
};

struct Method {
  std::string name, signature;
};

// Local and global references; the objects that arrays hold (no references).
std::vector<std::unique_ptr<Object>> g_locals, g_globals, g_held;
std::deque<Method> g_methods;
std::map<std::string, jclass> g_classes;
std::vector<jint> g_ids;
std::vector<std::string> g_names;
size_t g_turn = 0;  // where the next id list starts in the pool

Object& Of(jobject ref) {
  Check(ref != nullptr && reinterpret_cast<Object*>(ref)->live);
  return *reinterpret_cast<Object*>(ref);
}

// Keeps a new object (`copied` keeps the identity of the one it copies).
jobject Keep(std::vector<std::unique_ptr<Object>>& refs, Object object, bool copied = false) {
  refs.push_back(std::make_unique<Object>(std::move(object)));
  if (!copied) refs.back()->identity = refs.back().get();
  return reinterpret_cast<jobject>(refs.back().get());
}

jobject Local(Object object) { return Keep(g_locals, std::move(object)); }

Object String(std::string text) {
  Object o("java/lang/String");
  o.text = std::move(text);
  return o;
}

Object Bytes(std::vector<jbyte> bytes) {
  Object o("[B");
  o.bytes = std::move(bytes);
  return o;
}

Object Ints(std::vector<jint> ints) {
  Object o("[I");
  o.ints = std::move(ints);
  return o;
}

jclass Class(const std::string& name) {
  jclass& cls = g_classes[name];
  if (cls == nullptr) cls = static_cast<jclass>(Keep(g_globals, Object(name, true)));
  return cls;
}

// An array of `count` ids from the pool (null for a negative count).
jobject Ids(jint count) {
  if (count < 0) return nullptr;
  std::vector<jint> ids;
  for (jint i = 0; i < std::min(count, 64); ++i) ids.push_back(g_ids[g_turn++ % g_ids.size()]);
  return Local(Ints(std::move(ids)));
}

// The arguments as the signature says, each object one that is alive; the
// int arguments in order.
std::vector<jint> Arguments(const Method& method, va_list args) {
  std::vector<jint> ints;
  for (size_t i = 1; method.signature[i] != ')'; ++i) {
    char c = method.signature[i];
    if (c == 'J') {
      va_arg(args, jlong);
    } else if (c == 'F' || c == 'D') {
      va_arg(args, double);
    } else if (c == 'L' || c == '[') {
      while (method.signature[i] == '[') ++i;
      if (method.signature[i] == 'L') i = method.signature.find(';', i);
      if (jobject o = va_arg(args, jobject)) Of(o);
    } else {
      ints.push_back(va_arg(args, jint));
    }
  }
  return ints;
}

jobject JNICALL CallObject(JNIEnv*, jobject target, jmethodID id, va_list args) {
  const Method& m = *reinterpret_cast<Method*>(id);
  Object& self = Of(target);
  const std::vector<jint> ints = Arguments(m, args);
  if (m.name == "getBytes") return Local(Bytes({self.text.begin(), self.text.end()}));
  if (m.name == "getSymbolRowData") return Local(String("row"));
  if (m.name == "getManageObjectList" || m.name == "getAckObjectList") return Ids(ints[0]);
  if (m.signature == "()[I") return Ids(3);
  if (m.name == "getRootObjectSelectionNames") {
    Object array("[L");
    for (size_t i = 0; i < g_turn % (g_names.size() + 1); ++i)
      array.elements.push_back(Keep(g_held, String(g_names[i])));
    ++g_turn;
    return Local(std::move(array));
  }
  if (m.name.rfind("add", 0) == 0) return Local(Object("reported"));
  return nullptr;
}

jobject JNICALL NewObject(JNIEnv*, jclass cls, jmethodID id, va_list args) {
  const Method& m = *reinterpret_cast<Method*>(id);
  Object& type = Of(cls);
  if (m.signature == "([B)V") {
    Object& bytes = Of(va_arg(args, jobject));
    return Local(String(std::string(bytes.bytes.begin(), bytes.bytes.end())));
  }
  return Local(Object(type.type));
}

jboolean JNICALL CallBoolean(JNIEnv*, jobject target, jmethodID id, va_list args) {
  Of(target);
  const std::vector<jint> ints = Arguments(*reinterpret_cast<Method*>(id), args);
  return !ints.empty() && ints[0] % 2 == 0;  // every other submap or object is in the cache
}

void JNICALL CallVoid(JNIEnv*, jobject target, jmethodID id, va_list args) {
  Of(target);
  Arguments(*reinterpret_cast<Method*>(id), args);
}

jmethodID JNICALL GetMethodID(JNIEnv*, jclass cls, const char* name, const char* signature) {
  Check(Of(cls).isClass);
  return reinterpret_cast<jmethodID>(&g_methods.emplace_back(Method{name, signature}));
}

template <typename T>
void Region(std::vector<T>& array, jsize start, jsize length) {
  Check(start >= 0 && length >= 0 && size_t(start) + size_t(length) <= array.size());
}

JNIEnv_ g_env;
JNINativeInterface_ g_functions = [] {
  JNINativeInterface_ f{};
  f.FindClass = [](JNIEnv*, const char* name) { return Class(name); };
  f.ExceptionDescribe = f.ExceptionClear = [](JNIEnv*) {};
  f.ExceptionCheck = [](JNIEnv*) -> jboolean { return JNI_FALSE; };
  f.NewGlobalRef = [](JNIEnv*, jobject ref) { return Keep(g_globals, Of(ref), true); };
  f.DeleteLocalRef = [](JNIEnv*, jobject ref) {
    if (ref != nullptr) Of(ref).live = false;
  };
  f.IsSameObject = [](JNIEnv*, jobject a, jobject b) -> jboolean {
    return a == b || (a != nullptr && b != nullptr && Of(a).identity == Of(b).identity);
  };
  f.GetObjectClass = [](JNIEnv*, jobject o) { return Class(Of(o).type); };
  f.GetMethodID = f.GetStaticMethodID = GetMethodID;
  f.CallObjectMethodV = CallObject;
  f.CallStaticObjectMethodV = [](JNIEnv* e, jclass c, jmethodID m, va_list a) {
    return CallObject(e, c, m, a);
  };
  f.CallBooleanMethodV = CallBoolean;
  f.CallStaticBooleanMethodV = [](JNIEnv* e, jclass c, jmethodID m, va_list a) {
    return CallBoolean(e, c, m, a);
  };
  f.CallVoidMethodV = CallVoid;
  f.CallStaticVoidMethodV = [](JNIEnv* e, jclass c, jmethodID m, va_list a) {
    CallVoid(e, c, m, a);
  };
  f.NewObjectV = NewObject;
  f.NewStringUTF = [](JNIEnv*, const char* text) {
    return static_cast<jstring>(Local(String(text)));
  };
  f.GetStringUTFChars = [](JNIEnv*, jstring s, jboolean*) -> const char* {
    return strdup(Of(s).text.c_str());
  };
  f.ReleaseStringUTFChars = [](JNIEnv*, jstring s, const char* chars) {
    Of(s);
    std::free(const_cast<char*>(chars));
  };
  f.GetArrayLength = [](JNIEnv*, jarray a) {
    Object& o = Of(a);
    return jsize(o.type == "[I"   ? o.ints.size()
                 : o.type == "[B" ? o.bytes.size()
                                  : o.elements.size());
  };
  f.GetObjectArrayElement = [](JNIEnv*, jobjectArray a, jsize i) {
    Region(Of(a).elements, i, 1);
    return Local(Of(Of(a).elements[i]));
  };
  f.NewByteArray = [](JNIEnv*, jsize n) {
    return static_cast<jbyteArray>(Local(Bytes(std::vector<jbyte>(n))));
  };
  f.NewIntArray = [](JNIEnv*, jsize n) {
    return static_cast<jintArray>(Local(Ints(std::vector<jint>(n))));
  };
  f.GetByteArrayRegion = [](JNIEnv*, jbyteArray a, jsize start, jsize n, jbyte* out) {
    Region(Of(a).bytes, start, n);
    std::copy_n(Of(a).bytes.begin() + start, n, out);
  };
  f.GetIntArrayRegion = [](JNIEnv*, jintArray a, jsize start, jsize n, jint* out) {
    Region(Of(a).ints, start, n);
    std::copy_n(Of(a).ints.begin() + start, n, out);
  };
  f.SetByteArrayRegion = [](JNIEnv*, jbyteArray a, jsize start, jsize n, const jbyte* in) {
    Region(Of(a).bytes, start, n);
    std::copy_n(in, n, Of(a).bytes.begin() + start);
  };
  f.SetIntArrayRegion = [](JNIEnv*, jintArray a, jsize start, jsize n, const jint* in) {
    Region(Of(a).ints, start, n);
    std::copy_n(in, n, Of(a).ints.begin() + start);
  };
  return f;
}();

JNIInvokeInterface_ g_invoke = [] {
  JNIInvokeInterface_ i{};
  i.AttachCurrentThread = [](JavaVM*, void** env, void*) {
    *env = &g_env;
    return jint(JNI_OK);
  };
  i.GetEnv = [](JavaVM*, void** env, jint) {
    *env = &g_env;
    return jint(JNI_OK);
  };
  return i;
}();
JavaVM g_vm{&g_invoke};

}  // namespace

jobject Install(std::vector<jint> ids, std::vector<std::string> names) {
  g_env.functions = &g_functions;
  g_ids = std::move(ids);
  g_names = std::move(names);
  JNI_OnLoad(&g_vm, nullptr);
  return Keep(g_globals, Object("com/quenda/skiff/trellis/server/QxwEventDispatcher"));
}

size_t LiveLocals() {
  return std::count_if(g_locals.begin(), g_locals.end(), [](auto& o) { return o->live; });
}

void Return() {
  g_locals.clear();
  g_held.clear();
}

}  // namespace fakejava
