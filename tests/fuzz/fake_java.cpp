// The fake Java side (see fake_java.h).
#include "tests/fuzz/fake_java.h"
#include "tests/fuzz/check.h"

#include <algorithm>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <map>
#include <memory>
#include <utility>

namespace fakejava {

namespace {

// A Java object or class. `type` is a class name, or "[I", "[B" or "[L" for
// an array; an int or byte array, and a string, hold `values` (a string its
// bytes), an object array `elements`.
struct Object {
  Object(std::string type, std::vector<jint> values = {}, bool isClass = false)
      : type(std::move(type)), values(std::move(values)), isClass(isClass) {}
  std::string type;
  std::vector<jint> values;
  std::vector<std::shared_ptr<Object>> elements;
  bool isClass;
};

// A local or global reference: deleting it leaves the object to the others.
struct Ref {
  std::shared_ptr<Object> object;
  bool live = true;
};

struct Method {
  std::string name, signature;
};

std::vector<std::unique_ptr<Ref>> g_locals, g_globals;
std::deque<Method> g_methods;
std::map<std::string, jclass> g_classes;
std::vector<jint> g_ids;
std::vector<std::string> g_names;
size_t g_turn = 0;  // where the next id list starts in the pool

std::shared_ptr<Object>& Shared(jobject ref) {
  Check(ref != nullptr && reinterpret_cast<Ref*>(ref)->live);
  return reinterpret_cast<Ref*>(ref)->object;
}
Object& Of(jobject ref) { return *Shared(ref); }

jobject Keep(std::vector<std::unique_ptr<Ref>>& refs, std::shared_ptr<Object> object) {
  refs.push_back(std::make_unique<Ref>(Ref{std::move(object)}));
  return reinterpret_cast<jobject>(refs.back().get());
}

jobject Local(Object object) { return Keep(g_locals, std::make_shared<Object>(std::move(object))); }

Object String(const std::string& text) { return {"java/lang/String", {text.begin(), text.end()}}; }

jclass Class(const std::string& name) {
  jclass& cls = g_classes[name];
  if (cls == nullptr)
    cls = jclass(Keep(g_globals, std::make_shared<Object>(name, std::vector<jint>{}, true)));
  return cls;
}

// An array of `count` ids from the pool (null for a negative count).
jobject Ids(jint count) {
  if (count < 0) return nullptr;
  Object ids{"[I"};
  for (jint i = 0; i < std::min(count, 64); ++i)
    ids.values.push_back(g_ids[g_turn++ % g_ids.size()]);
  return Local(std::move(ids));
}

// The arguments as the signature says (ints and booleans, and objects, each
// one that is alive); the int arguments in order.
std::vector<jint> Arguments(jmethodID id, va_list args) {
  const std::string& signature = reinterpret_cast<Method*>(id)->signature;
  std::vector<jint> ints;
  for (size_t i = 1; signature[i] != ')'; ++i) {
    Check(std::strchr("JFD", signature[i]) == nullptr);
    if (signature[i] != 'L' && signature[i] != '[') {
      ints.push_back(va_arg(args, jint));
      continue;
    }
    while (signature[i] == '[') ++i;
    if (signature[i] == 'L') i = signature.find(';', i);
    if (jobject o = va_arg(args, jobject)) Of(o);
  }
  return ints;
}

template <typename Target>
jobject JNICALL CallObject(JNIEnv*, Target target, jmethodID id, va_list args) {
  const Method& m = *reinterpret_cast<Method*>(id);
  const Object& self = Of(target);
  const std::vector<jint> ints = Arguments(id, args);
  if (m.name == "getBytes") return Local({"[B", self.values});
  if (m.name == "getSymbolRowData") return Local(String("row"));
  if (m.name == "getManageObjectList" || m.name == "getAckObjectList") return Ids(ints[0]);
  if (m.signature == "()[I") return Ids(3);
  if (m.name == "getRootObjectSelectionNames") {
    Object array{"[L"};
    for (size_t i = 0; i < g_turn % (g_names.size() + 1); ++i)
      array.elements.push_back(std::make_shared<Object>(String(g_names[i])));
    ++g_turn;
    return Local(std::move(array));
  }
  if (m.name.rfind("add", 0) == 0) return Local({"reported"});
  return nullptr;
}

// Every other submap or object is in the cache.
template <typename Target>
jboolean JNICALL CallBoolean(JNIEnv*, Target target, jmethodID id, va_list args) {
  Of(target);
  const std::vector<jint> ints = Arguments(id, args);
  return !ints.empty() && ints[0] % 2 == 0;
}

template <typename Target>
void JNICALL CallVoid(JNIEnv*, Target target, jmethodID id, va_list args) {
  Of(target);
  Arguments(id, args);
}

jobject JNICALL NewObject(JNIEnv*, jclass cls, jmethodID id, va_list args) {
  if (reinterpret_cast<Method*>(id)->signature == "([B)V")
    return Local({"java/lang/String", Of(va_arg(args, jobject)).values});
  return Local({Of(cls).type});
}

jmethodID JNICALL GetMethodID(JNIEnv*, jclass cls, const char* name, const char* signature) {
  Check(Of(cls).isClass);
  return reinterpret_cast<jmethodID>(&g_methods.emplace_back(Method{name, signature}));
}

// Copies `length` elements of an int or byte array from `start`: out of it
// into `out`, or into it from `in`.
template <typename T>
void Region(jarray array, jsize start, jsize length, T* out, const T* in = nullptr) {
  std::vector<jint>& values = Of(array).values;
  Check(start >= 0 && length >= 0 && size_t(start) + size_t(length) <= values.size());
  for (jsize i = 0; i < length; ++i) {
    if (in != nullptr)
      values[start + i] = in[i];
    else
      out[i] = T(values[start + i]);
  }
}

JNIEnv_ g_env;
JNINativeInterface_ g_functions = [] {
  JNINativeInterface_ f{};
  f.FindClass = [](JNIEnv*, const char* name) { return Class(name); };
  f.ExceptionCheck = [](JNIEnv*) -> jboolean { return JNI_FALSE; };
  f.NewGlobalRef = [](JNIEnv*, jobject ref) { return Keep(g_globals, Shared(ref)); };
  f.DeleteLocalRef = [](JNIEnv*, jobject ref) {
    if (ref != nullptr) Check(std::exchange(reinterpret_cast<Ref*>(ref)->live, false));
  };
  f.IsSameObject = [](JNIEnv*, jobject a, jobject b) -> jboolean {
    return a == b || (a != nullptr && b != nullptr && &Of(a) == &Of(b));
  };
  f.GetObjectClass = [](JNIEnv*, jobject o) { return Class(Of(o).type); };
  f.GetMethodID = f.GetStaticMethodID = GetMethodID;
  f.CallObjectMethodV = CallObject<jobject>;
  f.CallStaticObjectMethodV = CallObject<jclass>;
  f.CallBooleanMethodV = CallBoolean<jobject>;
  f.CallStaticBooleanMethodV = CallBoolean<jclass>;
  f.CallVoidMethodV = CallVoid<jobject>;
  f.CallStaticVoidMethodV = CallVoid<jclass>;
  f.NewObjectV = NewObject;
  f.NewStringUTF = [](JNIEnv*, const char* text) { return jstring(Local(String(text))); };
  f.GetStringUTFChars = [](JNIEnv*, jstring s, jboolean*) -> const char* {
    const std::vector<jint>& bytes = Of(s).values;
    return strdup(std::string(bytes.begin(), bytes.end()).c_str());
  };
  f.ReleaseStringUTFChars = [](JNIEnv*, jstring s, const char* chars) {
    Of(s);
    std::free(const_cast<char*>(chars));
  };
  f.GetArrayLength = [](JNIEnv*, jarray a) {
    return jsize(Of(a).type == "[L" ? Of(a).elements.size() : Of(a).values.size());
  };
  f.GetObjectArrayElement = [](JNIEnv*, jobjectArray a, jsize i) {
    Check(i >= 0 && size_t(i) < Of(a).elements.size());
    return Keep(g_locals, Of(a).elements[i]);
  };
  f.NewByteArray = [](JNIEnv*, jsize n) { return jbyteArray(Local({"[B", std::vector<jint>(n)})); };
  f.NewIntArray = [](JNIEnv*, jsize n) { return jintArray(Local({"[I", std::vector<jint>(n)})); };
  f.GetByteArrayRegion = [](JNIEnv*, jbyteArray a, jsize s, jsize n, jbyte* out) {
    Region(a, s, n, out);
  };
  f.GetIntArrayRegion = [](JNIEnv*, jintArray a, jsize s, jsize n, jint* out) {
    Region(a, s, n, out);
  };
  f.SetByteArrayRegion = [](JNIEnv*, jbyteArray a, jsize s, jsize n, const jbyte* in) {
    Region<jbyte>(a, s, n, nullptr, in);
  };
  f.SetIntArrayRegion = [](JNIEnv*, jintArray a, jsize s, jsize n, const jint* in) {
    Region<jint>(a, s, n, nullptr, in);
  };
  return f;
}();

JNIInvokeInterface_ g_invoke = [] {
  JNIInvokeInterface_ i{};
  i.AttachCurrentThread = [](JavaVM*, void** env, void*) {
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
  return Keep(g_globals,
              std::make_shared<Object>("com/quenda/skiff/trellis/server/QxwEventDispatcher"));
}

size_t LiveLocals() {
  return std::count_if(g_locals.begin(), g_locals.end(), [](auto& r) { return r->live; });
}

void Return() { g_locals.clear(); }

}  // namespace fakejava
