// The submap report's baseline: the Java upcalls of one submap report, made
// from arguments held in memory, with no platform in between. It calls the
// dispatcher object through the library's own method ids and helpers, so the
// difference from a real report is the platform and the library's own work.
#include <algorithm>
#include <string>
#include <vector>

#include "bridge/javacall.h"
#include "bridge/properties.h"
#include "bridge/text.h"
#include "com_quenda_skiff_trellis_bench_SubmapBench.h"
#include "dispatcher/main.h"

using skiff::jni::LocalRef;

namespace {

constexpr int kSubmapId = 2;

// What one node symbol's report sends, the same as the library sends it.
struct Symbol {
  jint fields[11];  // symbol, submap, plane, status, object, child submap, hidden,
                    // placement, x, y, predecessor
  std::string label;
  std::string type;
  size_t firstProperty;
  size_t endProperty;
};

struct Property {
  std::string key;
  std::string value;
  bool isPlatformText;
};

std::vector<Symbol> s_symbols;
std::vector<Property> s_properties;

// The dispatcher objects this loop calls, bound to the library's own
// dispatcher method table.
skiff::jni::PeerRegistry& Dispatchers() {
  using D = QxwEventDispatcher;
  static skiff::jni::PeerRegistry peers(
      "SubmapBench", {&D::m_addSubmap, &D::m_addNodeSymbol, &D::m_qxwdbObjectFieldValuesInCache,
                      &D::m_setQxwdbObjectFieldValues});
  return peers;
}

std::string Text(JNIEnv* pEnv, jobjectArray array, jsize i) {
  LocalRef<jstring> str(pEnv, static_cast<jstring>(pEnv->GetObjectArrayElement(array, i)));
  skiff::jni::Utf8Chars chars(pEnv, str.get());
  return chars.get() != nullptr ? chars.get() : "";
}

}  // namespace

JNIEXPORT void JNICALL Java_com_quenda_skiff_trellis_bench_SubmapBench_load(
    JNIEnv* pEnv, jclass, jintArray symbolFields, jobjectArray labels, jobjectArray types,
    jintArray propertyStarts, jobjectArray keys, jobjectArray values,
    jbooleanArray isPlatformText) {
  const jsize count = pEnv->GetArrayLength(labels);
  std::vector<jint> fields(static_cast<size_t>(count) * 11);
  pEnv->GetIntArrayRegion(symbolFields, 0, count * 11, fields.data());
  std::vector<jint> starts(static_cast<size_t>(count) + 1);
  pEnv->GetIntArrayRegion(propertyStarts, 0, count + 1, starts.data());
  s_symbols.assign(static_cast<size_t>(count), Symbol{});
  for (jsize i = 0; i < count; ++i) {
    Symbol& symbol = s_symbols[i];
    std::copy_n(&fields[i * 11], 11, symbol.fields);
    symbol.label = Text(pEnv, labels, i);
    symbol.type = Text(pEnv, types, i);
    symbol.firstProperty = static_cast<size_t>(starts[i]);
    symbol.endProperty = static_cast<size_t>(starts[i + 1]);
  }
  const jsize numProperties = pEnv->GetArrayLength(keys);
  std::vector<jboolean> platform(static_cast<size_t>(numProperties));
  pEnv->GetBooleanArrayRegion(isPlatformText, 0, numProperties, platform.data());
  s_properties.clear();
  for (jsize k = 0; k < numProperties; ++k) {
    s_properties.push_back({Text(pEnv, keys, k), Text(pEnv, values, k), platform[k] != 0});
  }
}

JNIEXPORT void JNICALL Java_com_quenda_skiff_trellis_bench_SubmapBench_replay(JNIEnv* pEnv, jclass,
                                                                              jobject dispatcher) {
  using D = QxwEventDispatcher;
  const skiff::jni::JavaPeer* peer = Dispatchers().Bind(pEnv, dispatcher);
  {
    LocalRef<jstring> name(pEnv, mb2jstring(pEnv, "wide"));
    LocalRef<jstring> background(pEnv, mb2jstring(pEnv, ""));
    skiff::jni::CallObject(pEnv, peer, D::m_addSubmap, jint{1}, jint{kSubmapId}, name.get(),
                           jint{0}, jboolean{JNI_FALSE}, background.get());
  }
  for (const Symbol& s : s_symbols) {
    const jint* f = s.fields;
    {
      LocalRef<jstring> label(pEnv, mb2jstring(pEnv, s.label.c_str()));
      LocalRef<jstring> annotation = skiff::jni::NewUtf8String(pEnv, "");
      LocalRef<jstring> type(pEnv, mb2jstring(pEnv, s.type.c_str()));
      skiff::jni::CallObject(pEnv, peer, D::m_addNodeSymbol, f[0], f[1], label.get(),
                             annotation.get(), type.get(), f[2], f[3], f[4], f[5],
                             static_cast<jboolean>(f[6] != 0), f[7], f[8], f[9], f[10], jint{0});
    }
    if (skiff::jni::CallBoolean(pEnv, peer, D::m_qxwdbObjectFieldValuesInCache, f[4])) {
      continue;
    }
    LocalRef<jobject> properties = skiff::jni::NewProperties(pEnv);
    for (size_t k = s.firstProperty; k < s.endProperty; ++k) {
      const Property& p = s_properties[k];
      LocalRef<jstring> key = skiff::jni::NewUtf8String(pEnv, p.key.c_str());
      LocalRef<jstring> value = p.isPlatformText
                                    ? LocalRef<jstring>(pEnv, mb2jstring(pEnv, p.value.c_str()))
                                    : skiff::jni::NewUtf8String(pEnv, p.value.c_str());
      skiff::jni::PutProperty(pEnv, properties.get(), key.get(), value.get());
    }
    skiff::jni::CallVoid(pEnv, peer, D::m_setQxwdbObjectFieldValues, f[4], properties.get());
  }
}
