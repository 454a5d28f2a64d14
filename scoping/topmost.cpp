// Top-most symbol selection: which of an object's symbols the Java side is
// shown the object by.
#include <cstdio>

#include "bridge/tracescope.h"
#include "dispatcher/main.h"
#include "platform/qxw.h"
#include "platform/qxwdb.h"
#include "platform/recordowners.h"
#include "scoping/nsp.h"
#include "search/findsymbol.h"
#include "tables/submapinfohashtable.h"
#include "tables/symbolinfohashtables.h"

namespace {

// The name of the submap the symbol lives on, for a verbose line; null when
// the platform has no information on it.
template <class WriteLine>
void WithSubmapName(QXwMapInfo* pMap, const QXwSymbolInfo* pSymbol, WriteLine write) {
  skiff::SubmapInfoPtr submap(QXwGetSubmapInfo(pMap, pSymbol->submap_id));
  if (submap != nullptr) write(submap->submap_name != nullptr ? submap->submap_name : "");
}

// Reports a chosen icon to Java for the custom submap, and hands out its
// submap; the chosen symbol's id.
QXwSymbolId Chosen(JNIEnv* pEnv, const QXwSymbolInfo* pSymbol, int customSubmapId,
                   QXwSubmapId* pSubmapSymbolLivesOn) {
  if (FindSymbol::IsIconSymbol(pSymbol) && customSubmapId != 0) {
    QxwEventDispatcher::AddNodeSymbol(pEnv, pSymbol, static_cast<QXwSubmapId>(customSubmapId));
  }
  *pSubmapSymbolLivesOn = pSymbol->submap_id;
  return pSymbol->symbol_id;
}

}  // namespace

QXwSymbolInfo* NSP::GetAppPlaneIPMapSymbolInfo(JNIEnv* pEnv, QXwMapInfo* pMap,
                                               SubmapHashtable* pRootSubmapsHashtable,
                                               QXwSubmapInfoHashtable* pSubmapInfoHashtable,
                                               ObjectSymbolInfoHashtable* pSymbolInfoHashtable,
                                               QXwSymbolList* pSymbolList,
                                               int doRestrictToCompoundStatusSource) {
  for (int i = 0; pSymbolList != nullptr && i < pSymbolList->count; ++i) {
    QXwSymbolInfo* pSymbol = &pSymbolList->symbols[i];
    if (!FindSymbol::IsIconSymbol(pSymbol) || !FindSymbol::IsOnAppPlane(pSymbol) ||
        !FindSymbol::IsInIPTopology(pSymbol)) {
      continue;
    }
    if (!FindSymbol::SymbolIsWithinScope(pEnv, pMap, pSymbol->symbol_id, pSymbol->submap_id,
                                         pRootSubmapsHashtable, 1, pSubmapInfoHashtable,
                                         pSymbolInfoHashtable)) {
      continue;
    }
    const QXwSubmapInfo* pSubmap = pSubmapInfoHashtable->GetSubmapInfo(pMap, pSymbol->submap_id);
    if (pSubmap != nullptr && pSubmap->submap_policy == QXW_SUBMAP_POLICY_META_CONNECTION) continue;
    if (doRestrictToCompoundStatusSource && pSymbol->status_source != QXW_STATUS_SOURCE_COMPOUND) {
      continue;
    }
    return pSymbol;
  }
  // The compound status is a preference, never a reason to choose nothing.
  if (doRestrictToCompoundStatusSource) {
    return GetAppPlaneIPMapSymbolInfo(pEnv, pMap, pRootSubmapsHashtable, pSubmapInfoHashtable,
                                      pSymbolInfoHashtable, pSymbolList, 0);
  }
  return nullptr;
}

QXwSymbolInfo* NSP::GetAppPlaneSymbolInfo(JNIEnv* pEnv, QXwMapInfo* pMap,
                                          SubmapHashtable* pRootSubmapsHashtable,
                                          QXwSubmapInfoHashtable* pSubmapInfoHashtable,
                                          ObjectSymbolInfoHashtable* pSymbolInfoHashtable,
                                          QXwSymbolList* pSymbolList) {
  QXwSymbolInfo* pUserPlaneSymbol = nullptr;
  for (int i = 0; pSymbolList != nullptr && i < pSymbolList->count; ++i) {
    QXwSymbolInfo* pSymbol = &pSymbolList->symbols[i];
    if (!FindSymbol::IsIconSymbol(pSymbol) ||
        !FindSymbol::SymbolIsWithinScope(pEnv, pMap, pSymbol->symbol_id, pSymbol->submap_id,
                                         pRootSubmapsHashtable, 1, pSubmapInfoHashtable,
                                         pSymbolInfoHashtable)) {
      continue;
    }
    if (FindSymbol::IsOnAppPlane(pSymbol)) return pSymbol;
    if (FindSymbol::IsOnUserPlane(pSymbol)) pUserPlaneSymbol = pSymbol;
  }
  return pUserPlaneSymbol;
}

QXwSymbolInfo* NSP::GetTopmostSymbolInfo(JNIEnv* pEnv, QXwMapInfo* pMap, QXwObjectId objectId,
                                         const char* selectionName, QXwSymbolList* pSymbolList,
                                         SubmapHashtable* pRootSubmapsHashtable,
                                         QXwSubmapInfoHashtable* pSubmapInfoHashtable,
                                         ObjectSymbolInfoHashtable* pSymbolInfoHashtable) {
  const TOPLEVEL_OBJECT_TYPE type = GetObjectType(objectId, selectionName);
  QXwSymbolInfo* pChosen = GetAppPlaneIPMapSymbolInfo(
      pEnv, pMap, pRootSubmapsHashtable, pSubmapInfoHashtable, pSymbolInfoHashtable, pSymbolList,
      /*doRestrictToCompoundStatusSource=*/type == ROUTER_TYPE);
  if (pChosen == nullptr && type == UNKNOWN_TYPE) {
    pChosen = GetAppPlaneSymbolInfo(pEnv, pMap, pRootSubmapsHashtable, pSubmapInfoHashtable,
                                    pSymbolInfoHashtable, pSymbolList);
  }
  return pChosen;
}

const QXwSymbolInfo* NSP::ChooseTopMostSymbol(JNIEnv* pEnv, QXwMapInfo* pMap, QXwObjectId objectId,
                                              const char* selectionName,
                                              SubmapHashtable* pRootSubmapsHashtable,
                                              skiff::SymbolListPtr* pSymbols) {
  pSymbols->reset(QXwGetSymbolsByObject(pMap, objectId));
  if (*pSymbols == nullptr) return nullptr;
  QXwSubmapInfoHashtable submapInfos;
  ObjectSymbolInfoHashtable objectSymbols;
  return GetTopmostSymbolInfo(pEnv, pMap, objectId, selectionName, pSymbols->get(),
                              pRootSubmapsHashtable, &submapInfos, &objectSymbols);
}

QXwSymbolId NSP::GetTopMostIPMapSymbolForObject(JNIEnv* pEnv, QXwMapInfo* pMap,
                                                QXwObjectId objectId,
                                                SubmapHashtable* pRootSubmapsHashtable) {
  SKIFF_TRACE("NSP::GetTopMostIPMapSymbolForObject");
  skiff::SymbolListPtr symbols;
  const QXwSymbolInfo* pChosen =
      ChooseTopMostSymbol(pEnv, pMap, objectId, nullptr, pRootSubmapsHashtable, &symbols);
  if (symbols == nullptr) return 0;
  if (pChosen == nullptr) {
    std::fprintf(stderr,
                 "GetTopMostIPMapSymbolForObject: could not find symbol to use for object "
                 "[oid:%d]\n",
                 static_cast<int>(objectId));
    return 0;
  }
  if (m_doUseVerboseMode) {
    WithSubmapName(pMap, pChosen, [&](const char* submapName) {
      std::fprintf(stderr,
                   "GetTopMostIPMapSymbolForObject for object %d decided to use symbol %d "
                   "(submap:%s)\n",
                   static_cast<int>(objectId), static_cast<int>(pChosen->symbol_id), submapName);
    });
  }
  return pChosen->symbol_id;
}

QXwSymbolId NSP::GetTopMostIPMapSymbolForObject(JNIEnv* pEnv, QXwMapInfo* pMap,
                                                const char* selectionName, int customSubmapId,
                                                SubmapHashtable* pRootSubmapsHashtable,
                                                QXwSubmapId* pSubmapSymbolLivesOn) {
  SKIFF_TRACE("NSP::GetTopMostIPMapSymbolForObject");
  const QXwObjectId objectId = QXwDbSelectionNameToObjectId(selectionName);
  skiff::SymbolListPtr symbols;
  const QXwSymbolInfo* pChosen =
      ChooseTopMostSymbol(pEnv, pMap, objectId, selectionName, pRootSubmapsHashtable, &symbols);
  if (symbols == nullptr) return 0;
  if (pChosen == nullptr) {
    std::fprintf(stderr,
                 "GetTopMostIPMapSymbolForObject: could not find symbol to use for object [%s]\n",
                 selectionName);
    return 0;
  }
  if (m_doUseVerboseMode) {
    WithSubmapName(pMap, pChosen, [&](const char* submapName) {
      std::fprintf(stderr,
                   "GetTopMostIPMapSymbolForObject for %s (oid:%d) decided to use symbol %d "
                   "(submap:%s)\n",
                   selectionName, static_cast<int>(objectId), static_cast<int>(pChosen->symbol_id),
                   submapName);
    });
  }
  return Chosen(pEnv, pChosen, customSubmapId, pSubmapSymbolLivesOn);
}

QXwSymbolInfo* NSP::GetSymbolInfoPreferablyFromAppPlane(QXwMapInfo* pMap,
                                                        QXwSymbolList* pSymbolList,
                                                        QXwObjectId parentObjectId) {
  skiff::ObjectInfoPtr parent(QXwGetObjectInfo(pMap, parentObjectId));
  const QXwSubmapId target = parent != nullptr ? parent->child_submap_id : 0;
  QXwSymbolInfo* pOtherPlaneSymbol = nullptr;
  for (int i = 0; pSymbolList != nullptr && i < pSymbolList->count; ++i) {
    QXwSymbolInfo* pSymbol = &pSymbolList->symbols[i];
    if (!FindSymbol::IsIconSymbol(pSymbol) || pSymbol->submap_id != target) continue;
    if (FindSymbol::IsOnAppPlane(pSymbol)) return pSymbol;
    pOtherPlaneSymbol = pSymbol;
  }
  return pOtherPlaneSymbol;
}

QXwSymbolId NSP::GetSymbolForObject(JNIEnv* pEnv, QXwMapInfo* pMap, const char* selectionName,
                                    const char* parentSelectionName, int customSubmapId,
                                    QXwSubmapId* pSubmapSymbolLivesOn) {
  SKIFF_TRACE("NSP::GetSymbolForObject");
  const QXwObjectId objectId = QXwDbSelectionNameToObjectId(selectionName);
  const QXwObjectId parentObjectId = QXwDbSelectionNameToObjectId(parentSelectionName);
  skiff::SymbolListPtr symbols(QXwGetSymbolsByObject(pMap, objectId));
  if (symbols == nullptr) return 0;
  const QXwSymbolInfo* pChosen =
      GetSymbolInfoPreferablyFromAppPlane(pMap, symbols.get(), parentObjectId);
  if (pChosen == nullptr) {
    std::fprintf(stderr,
                 "GetSymbolForObject: could not find symbol [%s] within child submap of object "
                 "[%s]\n",
                 selectionName, parentSelectionName);
    return 0;
  }
  if (m_doUseVerboseMode) {
    WithSubmapName(pMap, pChosen, [&](const char* submapName) {
      std::fprintf(stderr,
                   "GetSymbolForObject: given %s (oid:%d) decided to use symbol %d (submap:%s)\n",
                   selectionName, static_cast<int>(objectId), static_cast<int>(pChosen->symbol_id),
                   submapName);
    });
  }
  return Chosen(pEnv, pChosen, customSubmapId, pSubmapSymbolLivesOn);
}
