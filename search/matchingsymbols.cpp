// The search requests the dispatcher serves: the symbols of the objects that
// match a query, and the node that a host name or an address names.
#include <cstdlib>
#include <memory>

#include "bridge/javacall.h"
#include "bridge/javaid.h"
#include "bridge/text.h"
#include "bridge/tracescope.h"
#include "dispatcher/main.h"
#include "search/findobject.h"
#include "search/findsymbol.h"
#include "search/nodebyaddress.h"
#include "tables/idsets.h"

using skiff::jni::LocalRef;

void QxwEventDispatcher::GetMatchingSymbols(QUERY_CATEGORY_TYPE queryCategoryType,
                                            QUERY_MATCH_TYPE queryMatchType,
                                            const char* queryString, int numRootObjects) {
  SKIFF_TRACE("QxwEventDispatcher::GetMatchingSymbols");
  JNIEnv* pEnv = skiff::jni::AttachedEnv();
  QXwObjectIdList* pFound = nullptr;
  {
    // The collection service is open for this one evaluation only.
    FindObject find;
    pFound = find.GetMatchingObjects(queryCategoryType, queryMatchType, queryString);
  }
  skiff::ObjectIdListPtr found(pFound);
  if (found == nullptr) return;
  const int isScopeUnrestricted = numRootObjects == 0;
  std::unique_ptr<SubmapHashtable> roots;
  if (!isScopeUnrestricted) roots = GetRootSubmapsHashtable(pEnv, numRootObjects);
  FindSymbol::AddFoundSymbolsInfo(pEnv, m_pMap, found.get(), isScopeUnrestricted, roots.get());
}

void QxwEventDispatcher::AddFoundSymbolInfo(JNIEnv* pEnv, const char* symbolLabel,
                                            const char* submapName, const char* objectSelectionName,
                                            QXwObjectId objectId, QXwSymbolId symbolId,
                                            QXwSubmapId submapId, const char* symbolType,
                                            QXwStatusType symbolStatus) {
  LocalRef<jstring> label(pEnv, mb2jstring(pEnv, symbolLabel));
  LocalRef<jstring> submap(pEnv, mb2jstring(pEnv, submapName));
  LocalRef<jstring> selectionName(pEnv, mb2jstring(pEnv, objectSelectionName));
  LocalRef<jstring> type(pEnv, mb2jstring(pEnv, symbolType));
  skiff::jni::CallVoid(pEnv, Peer(), m_addFoundSymbolInfo, label.get(), submap.get(),
                       selectionName.get(), skiff::JavaId(objectId), skiff::JavaId(symbolId),
                       skiff::JavaId(submapId), type.get(), static_cast<jint>(symbolStatus));
}

char* QxwEventDispatcher::GetNodeSelectionNameGivenHostnameOrIPAddress(
    const char* hostnameOrIPAddress) {
  SKIFF_TRACE("QxwEventDispatcher::GetNodeSelectionNameGivenHostnameOrIPAddress");
  return skiff::search::NodeSelectionNameByHostnameOrIPAddress(hostnameOrIPAddress,
                                                               SessionFieldIds());
}
