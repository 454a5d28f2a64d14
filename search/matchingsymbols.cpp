// The search requests the dispatcher serves: the symbols of the objects that
// match a query, and the node that a host name or an address names.
#include <cstdlib>
#include <memory>

#include "bridge/javacall.h"
#include "bridge/text.h"
#include "bridge/tracescope.h"
#include "dispatcher/main.h"
#include "search/findobject.h"
#include "search/findsymbol.h"
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
  QXwObjectId nodeObjectId = QXwDbHostnameToObjectId(hostnameOrIPAddress);
  if (nodeObjectId == 0) {
    // The interfaces that carry the address, and the first of their nodes
    // that can be read.
    QXwFieldValue address{};
    address.field_type = QXW_FIELD_STRING;
    address.un.string_val = const_cast<char*>(hostnameOrIPAddress);
    QXwFieldValue isInterface{};
    isInterface.field_type = QXW_FIELD_BOOLEAN;
    isInterface.un.bool_val = 1;
    QXwFieldBinding bindings[] = {{s_IPAddressFieldId, &address},
                                  {s_isInterfaceFieldId, &isInterface}};
    QXwFieldBindList selector{2, bindings};
    skiff::ObjectIdListPtr interfaces(QXwDbListObjectsByFieldValues(&selector));
    for (int i = 0; interfaces != nullptr && i < interfaces->count; ++i) {
      const int node = QXwDbGetFieldIntegerValue(interfaces->object_ids[i], s_TopMNodeIdFieldId);
      if (node == -1) continue;  // unreadable
      nodeObjectId = static_cast<QXwObjectId>(node);
      break;
    }
  }
  return nodeObjectId != 0 ? QXwDbObjectIdToSelectionName(nodeObjectId) : nullptr;
}
