// Submap contents: one submap and its symbols reported to the Java
// dispatcher object, and the root submaps that searches start from.
//
// The dispatcher thread never leaves its native call, so every local
// reference made here is deleted as soon as the call that needed it has
// returned: a report of any size holds a handful at a time.
#include <algorithm>
#include <cstdio>
#include <memory>

#include "bridge/arrays.h"
#include "bridge/javaid.h"
#include "bridge/text.h"
#include "bridge/tracescope.h"
#include "dispatcher/largedb.h"
#include "dispatcher/main.h"
#include "dispatcher/submapcontents.h"
#include "dispatcher/verbose.h"
#include "platform/recordowners.h"
#include "tables/idsets.h"
#include "tables/scopingcache.h"

using skiff::jni::LocalRef;

namespace {

// A Java string of platform text, deleted with the scope.
LocalRef<jstring> JavaText(JNIEnv* pEnv, const char* text) {
  return LocalRef<jstring>(pEnv, mb2jstring(pEnv, text));
}

}  // namespace

LocalRef<jobject> QxwEventDispatcher::GetSubmapAndSymbols(QXwSubmapId submapId) {
  SKIFF_TRACE("QxwEventDispatcher::GetSubmapAndSymbols");
  skiff::DispatcherVerbose("QxwEventDispatcher::GetSubmapAndSymbols\n");
  skiff::SubmapInfoPtr submap(QXwGetSubmapInfo(m_pMap, submapId));
  // Read afresh at every report, whether or not the submap exists.
  skiff::RereadLargeDbSetting(skiff::kLargeDbConfigPath, m_doUseVerboseMode);
  if (submap == nullptr) return {};

  JNIEnv* pEnv = skiff::jni::AttachedEnv();
  LocalRef<jobject> result =
      AddSubmap(pEnv, submap->parent_object_id, submapId, submap->submap_name, submap->layout_style,
                submap->layout_on != 0, submap->bg_graphics);
  skiff::SymbolListPtr symbols(QXwListSymbols(m_pMap, submapId, QXW_PLANE_ALL, nullptr));
  skiff::ForEachReportedSymbol(
      symbols.get(), [pEnv](const QXwSymbolInfo& symbol) { AddNodeSymbol(pEnv, &symbol, 0); },
      [pEnv](const QXwSymbolInfo& symbol) { AddConnectionSymbol(pEnv, &symbol); });
  return result;
}

LocalRef<jobject> QxwEventDispatcher::AddSubmap(JNIEnv* pEnv, QXwObjectId parentObjectId,
                                                QXwSubmapId submapId, const char* submapName,
                                                int layoutStyle, bool doUseAutoLayout,
                                                const char* backgroundGraphicsFile) {
  SKIFF_TRACE("QxwEventDispatcher::AddSubmap");
  LocalRef<jstring> name = JavaText(pEnv, submapName);
  LocalRef<jstring> background = JavaText(pEnv, backgroundGraphicsFile);
  return skiff::jni::CallObject(pEnv, Peer(), m_addSubmap, skiff::JavaId(parentObjectId),
                                skiff::JavaId(submapId), name.get(), static_cast<jint>(layoutStyle),
                                static_cast<jboolean>(doUseAutoLayout), background.get());
}

LocalRef<jobject> QxwEventDispatcher::AddNodeSymbol(JNIEnv* pEnv, const QXwSymbolInfo* pSymbolInfo,
                                                    QXwSubmapId customSubmapId) {
  SKIFF_TRACE("QxwEventDispatcher::AddNodeSymbol");
  const skiff::NodePlacement placement = skiff::PlacementOf(pSymbolInfo->var_un.position);
  LocalRef<jobject> symbol;
  {
    LocalRef<jstring> label = JavaText(pEnv, pSymbolInfo->symbol_label);
    LocalRef<jstring> annotation = skiff::jni::NewUtf8String(pEnv, "");
    LocalRef<jstring> type = JavaText(pEnv, pSymbolInfo->symbol_type);
    symbol = skiff::jni::CallObject(
        pEnv, Peer(), m_addNodeSymbol, skiff::JavaId(pSymbolInfo->symbol_id),
        skiff::JavaId(pSymbolInfo->submap_id), label.get(), annotation.get(), type.get(),
        static_cast<jint>(pSymbolInfo->plane), static_cast<jint>(pSymbolInfo->symbol_status),
        skiff::JavaId(pSymbolInfo->object.object_id),
        skiff::JavaId(pSymbolInfo->object.child_submap_id),
        static_cast<jboolean>(pSymbolInfo->hidden != 0),
        static_cast<jint>(pSymbolInfo->var_un.position.placement), static_cast<jint>(placement.x),
        static_cast<jint>(placement.y), skiff::JavaId(placement.predSymbolId),
        skiff::JavaId(customSubmapId));
  }
  // Field values travel only when the Java side lacks them: asked for every
  // symbol, also for several symbols of one object in a row.
  const QXwObjectId objectId = pSymbolInfo->object.object_id;
  if (!skiff::jni::CallBoolean(pEnv, Peer(), m_qxwdbObjectFieldValuesInCache,
                               skiff::JavaId(objectId))) {
    LocalRef<jobject> properties = GetObjectFieldValues(pEnv, objectId);
    if (properties) {
      skiff::jni::CallVoid(pEnv, Peer(), m_setQxwdbObjectFieldValues, skiff::JavaId(objectId),
                           properties.get());
    }
  }
  return symbol;
}

LocalRef<jobject> QxwEventDispatcher::AddConnectionSymbol(JNIEnv* pEnv,
                                                          const QXwSymbolInfo* pSymbolInfo) {
  SKIFF_TRACE("QxwEventDispatcher::AddConnectionSymbol");
  const QXwConnectionInfo& connection = pSymbolInfo->var_un.conninfo;
  LocalRef<jstring> label = JavaText(pEnv, pSymbolInfo->symbol_label);
  LocalRef<jstring> type = JavaText(pEnv, pSymbolInfo->symbol_type);
  return skiff::jni::CallObject(
      pEnv, Peer(), m_addConnectionSymbol, skiff::JavaId(pSymbolInfo->symbol_id),
      skiff::JavaId(pSymbolInfo->submap_id), label.get(), type.get(),
      static_cast<jint>(pSymbolInfo->plane), static_cast<jint>(pSymbolInfo->symbol_status),
      skiff::JavaId(pSymbolInfo->object.object_id),
      skiff::JavaId(pSymbolInfo->object.child_submap_id),
      static_cast<jboolean>(pSymbolInfo->hidden != 0), skiff::JavaId(connection.endpoint1_id),
      skiff::JavaId(connection.endpoint2_id));
}

std::unique_ptr<SubmapHashtable> QxwEventDispatcher::GetRootSubmapsHashtable(JNIEnv* pEnv,
                                                                             int numRootObjects) {
  SKIFF_TRACE("QxwEventDispatcher::GetRootSubmapsHashtable");
  if (m_doUseVerboseMode) {
    std::fprintf(stderr, "QxwEventDispatcher::GetRootSubmapsHashtable: numRootObjects=%d\n",
                 numRootObjects);
  }
  auto roots = std::make_unique<SubmapHashtable>();
  if (numRootObjects <= 0) {
    if (m_pMap != nullptr) roots->Add(m_pMap->root_submap_id);
    return roots;
  }
  LocalRef<jobjectArray> names =
      skiff::jni::CallObject<jobjectArray>(pEnv, Peer(), m_getRootObjectSelectionNames);
  // A null array counts as one of the wrong length.
  const jsize length = std::max<jsize>(skiff::jni::ArrayLength(pEnv, names.get()), 0);
  if (length != numRootObjects) {
    std::fprintf(stderr,
                 "QxwEventDispatcher::GetRootSubmapsHashtable failed, numRootObjects=%d, "
                 "arrayLength=%d\n",
                 numRootObjects, static_cast<int>(length));
  }
  skiff::jni::ForEachString(pEnv, names.get(), [&roots](const char* name) {
    if (name == nullptr) return;
    QXwSubmapId childSubmapId = ScopingCache::GetChildSubmapId(m_pMap, name);
    if (childSubmapId != 0) roots->Add(childSubmapId);
  });
  return roots;
}
