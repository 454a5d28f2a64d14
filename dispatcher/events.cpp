// Map events: the platform's handlers for changes to symbols and submaps,
// which keep the Java side's loaded submaps current, and their registration.
//
// Everything here runs on the dispatcher thread inside the platform's event
// loop, so a bracket never interleaves with a submap report or another event.
#include <cstdio>
#include <memory>
#include <optional>

#include "bridge/javaid.h"
#include "bridge/tracescope.h"
#include "dispatcher/main.h"
#include "dispatcher/submapcontents.h"
#include "dispatcher/verbose.h"
#include "platform/recordowners.h"
#include "scoping/nsp.h"
#include "search/findsymbol.h"
#include "tables/idsets.h"
#include "tables/keyedtable.h"
#include "tables/scopingcache.h"

using skiff::jni::CallBoolean;
using skiff::jni::CallVoid;

namespace {

using Dispatcher = QxwEventDispatcher;

jboolean IsNode(const QXwSymbolInfo& symbol) {
  return symbol.symbol_variety == QXW_SYMBOL_ICON ? JNI_TRUE : JNI_FALSE;
}

// beginMapSync when made, endMapSync when it goes: once opened, a bracket
// closes on every path, also after a Java callback threw (the helper layer
// has cleared the exception by then).
class MapSyncBracket {
 public:
  explicit MapSyncBracket(JNIEnv* pEnv) : env_(pEnv) {
    CallVoid(env_, Dispatcher::Peer(), Dispatcher::m_beginMapSync);
  }
  ~MapSyncBracket() { CallVoid(env_, Dispatcher::Peer(), Dispatcher::m_endMapSync); }

  MapSyncBracket(const MapSyncBracket&) = delete;
  MapSyncBracket& operator=(const MapSyncBracket&) = delete;

 private:
  JNIEnv* env_;
};

bool SubmapInCache(JNIEnv* pEnv, QXwSubmapId submapId) {
  return CallBoolean(pEnv, Dispatcher::Peer(), Dispatcher::m_submapInCache,
                     skiff::JavaId(submapId));
}

// A submap whose layout has changed: its node positions again, then
// synchronizeLayoutAppearance.
void RefreshSubmap(JNIEnv* pEnv, QXwSubmapId submapId) {
  Dispatcher::RefreshSubmapSymbolPositions(pEnv, submapId);
  CallVoid(pEnv, Dispatcher::Peer(), Dispatcher::m_synchronizeLayoutAppearance,
           skiff::JavaId(submapId));
}

// One symbolMovedCB. x and y are the position's coordinates as they stand
// (for placement 2 the first of them overlays the predecessor).
void ReportPosition(JNIEnv* pEnv, const QXwSymbolInfo& symbol, bool fromMoveEvent,
                    bool moreToFollow, bool fromRefresh) {
  const QXwSymbolPosition& position = symbol.var_un.position;
  const QXwSymbolId predSymbolId =
      position.placement == QXW_PLACEMENT_AFTER ? position.un.pred_symbol : 0;
  CallVoid(pEnv, Dispatcher::Peer(), Dispatcher::m_symbolMovedCB, skiff::JavaId(symbol.symbol_id),
           skiff::JavaId(symbol.submap_id), static_cast<jint>(position.placement),
           static_cast<jint>(position.un.coords.x), static_cast<jint>(position.un.coords.y),
           skiff::JavaId(predSymbolId), static_cast<jboolean>(fromMoveEvent),
           static_cast<jboolean>(moreToFollow), static_cast<jboolean>(fromRefresh));
}

// The batch events of symbols: inside one bracket, visit(symbol, touched)
// for each symbol of the list in order (none when there is no list), then
// every submap the visits added to `touched` is refreshed, in the set's
// order.
template <class Visit>
void ReportSymbolBatch(JNIEnv* pEnv, const QXwSymbolList* pSymbols, Visit visit) {
  MapSyncBracket bracket(pEnv);
  SubmapHashtable touched;
  for (int i = 0; pSymbols != nullptr && i < pSymbols->count; ++i) {
    visit(pSymbols->symbols[i], touched);
  }
  skiff::ForEachEntry(touched, [pEnv](_HashItem& item) {
    RefreshSubmap(pEnv, static_cast<QXwSubmapId>(item.key()));
  });
}

// Hidden or unhidden symbols of loaded submaps: the callback, then the
// submap is touched.
void ReportVisibilityChange(const QXwSymbolList* pSymbols, const skiff::jni::JavaMethod& callback) {
  JNIEnv* pEnv = skiff::jni::AttachedEnv();
  ReportSymbolBatch(pEnv, pSymbols,
                    [pEnv, &callback](const QXwSymbolInfo& symbol, SubmapHashtable& touched) {
                      if (!SubmapInCache(pEnv, symbol.submap_id)) return;
                      CallVoid(pEnv, Dispatcher::Peer(), callback, skiff::JavaId(symbol.symbol_id),
                               skiff::JavaId(symbol.submap_id), IsNode(symbol));
                      touched.AddIfNeeded(symbol.submap_id);
                    });
}

// A handler as a registration takes it. HandlerType is the handler type of
// the event registered for: a handler of another type does not compile.
template <class HandlerType>
QXwCallbackProc Proc(HandlerType handler) {
  return reinterpret_cast<QXwCallbackProc>(handler);
}

}  // namespace

bool QxwEventDispatcher::AddQXwCallbacks() {
  SKIFF_TRACE("QxwEventDispatcher::AddQXwCallbacks");
  // Objects whose "isInterface" is TRUE. The platform keeps pointers to the
  // filter for as long as the handlers are registered: the rest of the
  // process.
  static QXwFieldValue s_isInterfaceValue;
  static QXwFieldBinding s_isInterfaceBinding;
  static QXwFieldBindList s_interfaceFilter;
  s_isInterfaceValue.is_list = 0;
  s_isInterfaceValue.field_type = QXW_FIELD_BOOLEAN;
  s_isInterfaceValue.un.bool_val = 1;
  s_isInterfaceBinding.field_id = s_isInterfaceFieldId;
  s_isInterfaceBinding.field_val = &s_isInterfaceValue;
  s_interfaceFilter.count = 1;
  s_interfaceFilter.fields = &s_isInterfaceBinding;

  struct Registration {
    int eventType;
    QXwFieldBindList* filter;
    QXwCallbackProc handler;
  };
  const Registration registrations[] = {
      {QXW_EVENT_END_SESSION, nullptr, Proc<QXwEndSessionProc>(EndSessionCB)},
      {QXW_EVENT_SYMBOLS_HIDDEN, nullptr, Proc<QXwSymbolListProc>(SymbolsHiddenCB)},
      {QXW_EVENT_SYMBOLS_UNHIDDEN, nullptr, Proc<QXwSymbolListProc>(SymbolsUnhiddenCB)},
      {QXW_EVENT_SYMBOLS_STATUS, nullptr, Proc<QXwSymbolListProc>(SymbolsStatusChangeCB)},
      {QXW_EVENT_SYMBOLS_CREATED, nullptr, Proc<QXwSymbolListProc>(SymbolsCreatedCB)},
      {QXW_EVENT_SYMBOL_MOVED, nullptr, Proc<QXwSymbolProc>(SymbolMovedCB)},
      {QXW_EVENT_SYMBOLS_DELETED, nullptr, Proc<QXwSymbolListProc>(SymbolsDeletedCB)},
      {QXW_EVENT_SYMBOL_NORMALIZE, nullptr, Proc<QXwSymbolNormalizeProc>(SymbolNormalizeChangeCB)},
      {QXW_EVENT_SUBMAPS_CREATED, nullptr, Proc<QXwSubmapListProc>(SubmapsCreatedCB)},
      {QXW_EVENT_SUBMAPS_DELETED, nullptr, Proc<QXwSubmapListProc>(SubmapsDeletedCB)},
      {QXW_EVENT_SUBMAP_AUTOLAYOUT, nullptr, Proc<QXwSubmapProc>(SubmapAutoLayoutChangeCB)},
      {QXW_EVENT_MAP_OPEN, nullptr, Proc<QXwMapOpenProc>(MapOpenCB)},
      {QXW_EVENT_MAP_CLOSE, nullptr, Proc<QXwMapCloseProc>(MapCloseCB)},
      {QXW_EVENT_OBJECTS_CREATED, &s_interfaceFilter,
       Proc<QXwObjectListProc>(CreateInterfaceObjectsCB)},
      {QXW_EVENT_OBJECTS_DELETED, &s_interfaceFilter,
       Proc<QXwObjectListProc>(DeleteInterfaceObjectsCB)},
  };
  bool succeeded = true;
  for (const Registration& registration : registrations) {
    if (QXwAddCallback(registration.eventType, registration.filter, registration.handler, nullptr) <
        0) {
      std::fprintf(stderr, "QXwAddCallback failed: %s\n", QXwErrorMsg(QXwError()));
      succeeded = false;
    }
  }
  return succeeded;
}

void QxwEventDispatcher::SymbolsHiddenCB(void*, int, QXwMapInfo*, QXwSymbolList* pSymbols) {
  SKIFF_TRACE("QxwEventDispatcher::SymbolsHiddenCB");
  skiff::DispatcherVerbose("SymbolsHiddenCB\n");
  ReportVisibilityChange(pSymbols, m_symbolHiddenCB);
}

void QxwEventDispatcher::SymbolsUnhiddenCB(void*, int, QXwMapInfo*, QXwSymbolList* pSymbols) {
  SKIFF_TRACE("QxwEventDispatcher::SymbolsUnhiddenCB");
  skiff::DispatcherVerbose("SymbolsUnhiddenCB\n");
  ReportVisibilityChange(pSymbols, m_symbolUnhiddenCB);
}

void QxwEventDispatcher::SymbolsCreatedCB(void*, int, QXwMapInfo* pMap, QXwSymbolList* pSymbols) {
  SKIFF_TRACE("QxwEventDispatcher::SymbolsCreatedCB");
  skiff::DispatcherVerbose("SymbolsCreatedCB\n");
  JNIEnv* pEnv = skiff::jni::AttachedEnv();
  const bool setsLocationIDs =
      m_thisQxwSessionEnablesLocationTracking && m_doSetLocationIDFieldInCallbacks;
  const bool reportsNetworks =
      m_thisQxwSessionEnablesLocationTracking && m_doInvokeJavaCallbacksForScopingUpdates;
  // The top of the IP topology, looked up once for the whole batch.
  const QXwSubmapId ipInternetSubmapId =
      reportsNetworks ? ScopingCache::GetChildSubmapId(pMap, "IP Internet") : 0;
  ReportSymbolBatch(pEnv, pSymbols, [&](const QXwSymbolInfo& symbol, SubmapHashtable& touched) {
    // Both steps concern every created symbol, on a loaded submap or not.
    if (setsLocationIDs) NSP::SetLocationIDFieldIfNeeded(pMap, &symbol);
    if (reportsNetworks) {
      FindSymbol::InvokeScopingNetworkCreatedCallbackIfNeeded(pEnv, pMap, &symbol,
                                                              ipInternetSubmapId);
    }
    if (!SubmapInCache(pEnv, symbol.submap_id)) return;
    skiff::jni::LocalRef<jobject> symbolObject;
    if (symbol.symbol_variety == QXW_SYMBOL_ICON) {
      symbolObject = AddNodeSymbol(pEnv, &symbol, 0);
    } else if (symbol.symbol_variety == QXW_SYMBOL_CONNECTION) {
      symbolObject = AddConnectionSymbol(pEnv, &symbol);
    }
    touched.AddIfNeeded(symbol.submap_id);
    CallVoid(pEnv, Peer(), m_symbolCreatedCB, symbolObject.get(), skiff::JavaId(symbol.submap_id));
  });
}

void QxwEventDispatcher::SymbolsDeletedCB(void*, int, QXwMapInfo*, QXwSymbolList* pSymbols) {
  SKIFF_TRACE("QxwEventDispatcher::SymbolsDeletedCB");
  skiff::DispatcherVerbose("SymbolsDeletedCB\n");
  JNIEnv* pEnv = skiff::jni::AttachedEnv();
  ReportSymbolBatch(pEnv, pSymbols, [pEnv](const QXwSymbolInfo& symbol, SubmapHashtable& touched) {
    if (!SubmapInCache(pEnv, symbol.submap_id)) return;
    touched.AddIfNeeded(symbol.submap_id);
    CallVoid(pEnv, Peer(), m_symbolDeletedCB, skiff::JavaId(symbol.symbol_id),
             skiff::JavaId(symbol.submap_id), IsNode(symbol));
  });
}

void QxwEventDispatcher::SymbolsStatusChangeCB(void*, int, QXwMapInfo*, QXwSymbolList* pSymbols) {
  SKIFF_TRACE("QxwEventDispatcher::SymbolsStatusChangeCB");
  skiff::DispatcherVerbose("SymbolsStatusChangeCB\n");
  JNIEnv* pEnv = skiff::jni::AttachedEnv();
  for (int i = 0; pSymbols != nullptr && i < pSymbols->count; ++i) {
    const QXwSymbolInfo& symbol = pSymbols->symbols[i];
    CallVoid(pEnv, Peer(), m_symbolStatusChangeCB, skiff::JavaId(symbol.symbol_id),
             skiff::JavaId(symbol.submap_id), static_cast<jint>(symbol.symbol_status),
             IsNode(symbol));
  }
}

void QxwEventDispatcher::SymbolMovedCB(void*, int, QXwMapInfo*, QXwSymbolInfo* pSymbol) {
  SKIFF_TRACE("QxwEventDispatcher::SymbolMovedCB");
  skiff::DispatcherVerbose("SymbolMovedCB\n");
  JNIEnv* pEnv = skiff::jni::AttachedEnv();
  MapSyncBracket bracket(pEnv);
  if (pSymbol == nullptr || pSymbol->symbol_variety != QXW_SYMBOL_ICON) return;
  const int placement = pSymbol->var_un.position.placement;
  if (placement != QXW_PLACEMENT_COORDS && placement != QXW_PLACEMENT_AFTER) return;
  ReportPosition(pEnv, *pSymbol, /*fromMoveEvent=*/true, /*moreToFollow=*/false,
                 /*fromRefresh=*/false);
  RefreshSubmap(pEnv, pSymbol->submap_id);
}

void QxwEventDispatcher::SymbolNormalizeChangeCB(void*, int, QXwMapInfo*, QXwSymbolInfo* pSymbol,
                                                 QXwBoolean isNormalized) {
  SKIFF_TRACE("QxwEventDispatcher::SymbolNormalizeChangeCB");
  skiff::DispatcherVerbose("SymbolNormalizeChangeCB\n");
  if (pSymbol == nullptr || pSymbol->symbol_variety != QXW_SYMBOL_ICON) return;
  JNIEnv* pEnv = skiff::jni::AttachedEnv();
  CallVoid(pEnv, Peer(), m_symbolNormalizeChangeCB, skiff::JavaId(pSymbol->symbol_id),
           skiff::JavaId(pSymbol->submap_id), static_cast<jboolean>(isNormalized != 0));
}

void QxwEventDispatcher::SubmapsCreatedCB(void*, int, QXwMapInfo*, QXwSubmapList* pSubmaps) {
  SKIFF_TRACE("QxwEventDispatcher::SubmapsCreatedCB");
  skiff::DispatcherVerbose("SubmapsCreatedCB\n");
  if (pSubmaps == nullptr) return;
  JNIEnv* pEnv = skiff::jni::AttachedEnv();
  for (int i = 0; i < pSubmaps->count; ++i) {
    const QXwSubmapInfo& submap = pSubmaps->submaps[i];
    CallVoid(pEnv, Peer(), m_submapCreatedCB, skiff::JavaId(submap.submap_id),
             skiff::JavaId(submap.parent_object_id));
  }
}

void QxwEventDispatcher::SubmapsDeletedCB(void*, int, QXwMapInfo*, QXwSubmapList* pSubmaps) {
  SKIFF_TRACE("QxwEventDispatcher::SubmapsDeletedCB");
  skiff::DispatcherVerbose("SubmapsDeletedCB\n");
  if (pSubmaps == nullptr) return;
  JNIEnv* pEnv = skiff::jni::AttachedEnv();
  for (int i = 0; i < pSubmaps->count; ++i) {
    QXwSubmapInfo& submap = pSubmaps->submaps[i];
    ScopingCache::SubmapHasBeenDeleted(&submap);
    CallVoid(pEnv, Peer(), m_submapDeletedCB, skiff::JavaId(submap.submap_id),
             skiff::JavaId(submap.parent_object_id));
  }
}

void QxwEventDispatcher::SubmapAutoLayoutChangeCB(void*, int, QXwMapInfo*, QXwSubmapInfo* pSubmap) {
  SKIFF_TRACE("QxwEventDispatcher::SubmapAutoLayoutChangeCB");
  skiff::DispatcherVerbose("SubmapAutoLayoutChangeCB\n");
  if (pSubmap == nullptr) return;
  JNIEnv* pEnv = skiff::jni::AttachedEnv();
  const bool layoutOn = pSubmap->layout_on != 0;
  std::optional<MapSyncBracket> bracket;
  if (layoutOn) bracket.emplace(pEnv);
  CallVoid(pEnv, Peer(), m_submapAutoLayoutChangeCB, skiff::JavaId(pSubmap->submap_id),
           skiff::JavaId(pSubmap->parent_object_id), static_cast<jboolean>(layoutOn));
  if (layoutOn) RefreshSubmap(pEnv, pSubmap->submap_id);
}

void QxwEventDispatcher::RefreshSubmapSymbolPositions(JNIEnv* pEnv, QXwSubmapId submapId) {
  SKIFF_TRACE("QxwEventDispatcher::RefreshSubmapSymbolPositions");
  skiff::SymbolListPtr pSymbols(QXwListSymbols(m_pMap, submapId, QXW_PLANE_ALL, nullptr));
  skiff::ForEachNodePosition(
      pSymbols.get(), [pEnv](const QXwSymbolInfo& symbol, bool moreToFollow) {
        ReportPosition(pEnv, symbol, /*fromMoveEvent=*/false, moreToFollow, /*fromRefresh=*/true);
      });
}
