#include "state/idfetch.h"

#include <cstdio>

#include "bridge/tracescope.h"
#include "dispatcher/main.h"
#include "platform/qxw.h"

namespace skiff::state {

std::optional<std::vector<uint32_t>> FetchIds(const IdFetch& fetch, int count, int state) {
  SKIFF_TRACE("skiff::state::FetchIds");
  JNIEnv* pEnv = jni::AttachedEnv(QxwEventDispatcher::m_pJVM);
  const bool verbose = QxwEventDispatcher::m_doUseVerboseMode != 0;
  if (verbose) std::fprintf(stderr, fetch.entryFormat, count, state);

  jobject object = QxwEventDispatcher::m_object;
  jni::LocalRef<jintArray> array =
      fetch.passesCount
          ? jni::CallObject<jintArray>(pEnv, object, fetch.callback, static_cast<jint>(count))
          : jni::CallObject<jintArray>(pEnv, object, fetch.callback);
  // A missing array (also a callback that threw) counts as a wrong length.
  const int length = array ? pEnv->GetArrayLength(array.get()) : -1;
  if (length != count) {
    std::fprintf(stderr, fetch.failureFormat, count, length);
    return std::nullopt;
  }

  std::vector<uint32_t> ids(count);
  if (count == 0) return ids;
  jint* elements = pEnv->GetIntArrayElements(array.get(), nullptr);
  if (elements == nullptr) {
    jni::Threw(pEnv, "JNI function", "GetIntArrayElements");
    return std::nullopt;
  }
  const bool writeLines = verbose && fetch.copyLineFormat != nullptr;
  for (int i = 0; i < count; ++i) {
    ids[i] = static_cast<uint32_t>(elements[i]);
    if (writeLines) {
      std::fprintf(stderr, fetch.copyLineFormat, i, static_cast<int>(ids[i]));
      std::fprintf(stderr, fetch.arrayLineFormat, i, static_cast<int>(elements[i]));
    }
  }
  pEnv->ReleaseIntArrayElements(array.get(), elements, JNI_ABORT);
  return ids;
}

QXwObjectIdList ObjectIdList(std::vector<QXwObjectId>& objectIds) {
  return QXwObjectIdList{static_cast<int>(objectIds.size()), objectIds.data()};
}

QXwSymbolIdList SymbolIdList(std::vector<QXwSymbolId>& symbolIds) {
  return QXwSymbolIdList{static_cast<int>(symbolIds.size()), symbolIds.data()};
}

const char* PlatformErrorText() {
  const char* text = QXwErrorMsg(QXwError());
  return text != nullptr ? text : "";
}

}  // namespace skiff::state
