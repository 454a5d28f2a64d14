// The path requests the dispatcher serves: a symbol's parent path, a node's
// symbol (and path), and an object's other symbols.
#include <memory>

#include "bridge/javacall.h"
#include "bridge/javaid.h"
#include "bridge/tracescope.h"
#include "dispatcher/main.h"
#include "scoping/nsp.h"
#include "search/findsymbol.h"
#include "tables/idsets.h"

void QxwEventDispatcher::AddParentPathInfo(JNIEnv* pEnv, QXwSymbolId symbolId) {
  skiff::jni::CallVoid(pEnv, Peer(), m_addParentPathInfo, skiff::JavaId(symbolId));
}

void QxwEventDispatcher::RecreateSymbolParentPath(QXwSymbolId symbolId,
                                                  QXwSubmapId submapSymbolLivesOn,
                                                  int numRootObjects) {
  SKIFF_TRACE("QxwEventDispatcher::RecreateSymbolParentPath");
  JNIEnv* pEnv = skiff::jni::AttachedEnv();
  std::unique_ptr<SubmapHashtable> scope = GetRootSubmapsHashtable(pEnv, numRootObjects);
  FindSymbol::RecreateParentPath(pEnv, m_pMap, symbolId, submapSymbolLivesOn, scope.get(),
                                 /*doRestrictToIPTopology=*/0);
  AddParentPathInfo(pEnv, symbolId);
}

void QxwEventDispatcher::GetNodeSymbol(const char* selectionName, const char* parentSelectionName,
                                       int customSubmapId, int doRecreateParentPath,
                                       int numRootObjects) {
  SKIFF_TRACE("QxwEventDispatcher::GetNodeSymbol");
  JNIEnv* pEnv = skiff::jni::AttachedEnv();
  std::unique_ptr<SubmapHashtable> scope = GetRootSubmapsHashtable(pEnv, numRootObjects);
  QXwSubmapId submapId = 0;
  const QXwSymbolId symbolId =
      parentSelectionName != nullptr && parentSelectionName[0] != '\0'
          ? NSP::GetSymbolForObject(pEnv, m_pMap, selectionName, parentSelectionName,
                                    customSubmapId, &submapId)
          : NSP::GetTopMostIPMapSymbolForObject(pEnv, m_pMap, selectionName, customSubmapId,
                                                scope.get(), &submapId);
  if (doRecreateParentPath && submapId != 0) {
    FindSymbol::RecreateParentPath(pEnv, m_pMap, symbolId, submapId, scope.get(),
                                   /*doRestrictToIPTopology=*/1);
    AddParentPathInfo(pEnv, symbolId);
  }
}

void QxwEventDispatcher::GetOtherSymbols(QXwSymbolId symbolId, QXwObjectId objectId,
                                         int numRootObjects) {
  SKIFF_TRACE("QxwEventDispatcher::GetOtherSymbols");
  JNIEnv* pEnv = skiff::jni::AttachedEnv();
  const int isScopeUnrestricted = numRootObjects == 0;
  std::unique_ptr<SubmapHashtable> scope;
  if (!isScopeUnrestricted) scope = GetRootSubmapsHashtable(pEnv, numRootObjects);
  FindSymbol::AddOtherSymbolsInfo(pEnv, m_pMap, symbolId, objectId, isScopeUnrestricted,
                                  scope.get());
}
