#include "state/idfetch.h"

#include <cstdio>

#include "bridge/arrays.h"
#include "bridge/tracescope.h"
#include "platform/qxw.h"

namespace skiff::state {

std::optional<std::vector<uint32_t>> FetchIds(const IdSource& source, const IdFetch& fetch,
                                              int count, int state) {
  SKIFF_TRACE("skiff::state::FetchIds");
  JNIEnv* pEnv = source.pEnv;
  const bool verbose = source.verbose;
  if (verbose) std::fprintf(stderr, fetch.entryFormat, count, state);

  const jni::JavaPeer* peer = source.peer;
  jni::LocalRef<jintArray> array =
      fetch.passesCount
          ? jni::CallObject<jintArray>(pEnv, peer, fetch.callback, static_cast<jint>(count))
          : jni::CallObject<jintArray>(pEnv, peer, fetch.callback);
  // A missing array (also a callback that threw) and a negative count never
  // match.
  std::optional<std::vector<uint32_t>> ids = jni::IdsOfIntArray(pEnv, array.get(), count);
  if (!ids) {
    std::fprintf(stderr, fetch.failureFormat, count,
                 static_cast<int>(jni::ArrayLength(pEnv, array.get())));
    return std::nullopt;
  }
  if (verbose && fetch.copyLineFormat != nullptr) {
    for (int i = 0; i < count; ++i) {
      std::fprintf(stderr, fetch.copyLineFormat, i, static_cast<int>((*ids)[i]));
      std::fprintf(stderr, fetch.arrayLineFormat, i, static_cast<int>((*ids)[i]));
    }
  }
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
