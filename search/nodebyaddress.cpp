// Naming a node by a host name or an address: the database's own look-up,
// then the interfaces that carry the address.
#include "search/nodebyaddress.h"

#include "bridge/tracescope.h"
#include "platform/qxwdb.h"
#include "platform/recordowners.h"

namespace skiff::search {

char* NodeSelectionNameByHostnameOrIPAddress(const char* hostnameOrIPAddress,
                                             const FieldIds& fieldIds) {
  SKIFF_TRACE("skiff::search::NodeSelectionNameByHostnameOrIPAddress");
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
    QXwFieldBinding bindings[] = {{fieldIds.ipAddress, &address},
                                  {fieldIds.isInterface, &isInterface}};
    QXwFieldBindList selector{2, bindings};
    ObjectIdListPtr interfaces(QXwDbListObjectsByFieldValues(&selector));
    for (int i = 0; interfaces != nullptr && i < interfaces->count; ++i) {
      const int node = QXwDbGetFieldIntegerValue(interfaces->object_ids[i], fieldIds.topMNodeId);
      if (node == -1) continue;  // unreadable
      nodeObjectId = static_cast<QXwObjectId>(node);
      break;
    }
  }
  return nodeObjectId != 0 ? QXwDbObjectIdToSelectionName(nodeObjectId) : nullptr;
}

}  // namespace skiff::search
