#include "tables/networksubmapnodeinterfaceshashtable.h"

#include <stdio.h>
#include <string.h>

#include <algorithm>
#include <string_view>

#include "bridge/tracescope.h"
#include "platform/qxcommon.h"
#include "platform/qxwdb.h"
#include "tables/keyedtable.h"

namespace {

// Every key text is made in a buffer of this many characters.
constexpr size_t kKeyBufferSize = 100;

// The network:node part of a key: its text before the second ":", or the
// whole text where there is no second ":".
std::string_view KeyWithoutSymbolId(const char* key) {
  std::string_view text(key);
  size_t first = text.find(':');
  if (first == std::string_view::npos) return text;
  return text.substr(0, text.find(':', first + 1));
}

// A single (not list) field value of the given type.
QXwFieldValue ScalarValue(int fieldType, int value) {
  QXwFieldValue fieldValue{};
  fieldValue.is_list = 0;
  fieldValue.field_type = fieldType;
  if (fieldType == QXW_FIELD_BOOLEAN) {
    fieldValue.un.bool_val = value;
  } else {
    fieldValue.un.int_val = value;
  }
  return fieldValue;
}

}  // namespace

NetworkSubmapNodeInterfacesHashtable::NetworkSubmapNodeInterfacesHashtable(
    QXwFieldId isInterfaceFieldId, QXwFieldId topMNodeIdFieldId, QXwFieldId topMNetworkIdFieldId)
    : _Hash(skiff::kTableBuckets, skiff::kTableReserved, skiff::kTableReserved,
            skiff::kTableGrowAtLoad),
      m_isInterfaceFieldId(isInterfaceFieldId),
      m_TopMNodeIdFieldId(topMNodeIdFieldId),
      m_TopMNetworkIdFieldId(topMNetworkIdFieldId) {}

NetworkSubmapNodeInterfacesHashtable::~NetworkSubmapNodeInterfacesHashtable() {
  SKIFF_TRACE("NetworkSubmapNodeInterfacesHashtable::~NetworkSubmapNodeInterfacesHashtable");
  skiff::ForEachEntry(*this, [](const _HashItem& item) {
    delete[] reinterpret_cast<char*>(item.key());
    if (QXwObjectIdList* pList = skiff::ValueOf<QXwObjectIdList>(&item)) {
      QXwDbFreeObjectIdList(pList);
    }
  });
}

void NetworkSubmapNodeInterfacesHashtable::AddKey(QXwObjectId networkObjectId,
                                                  QXwObjectId nodeObjectId,
                                                  QXwSymbolId networkNodeSymbolId) {
  SKIFF_TRACE("NetworkSubmapNodeInterfacesHashtable::AddKey");
  GetRelevantInterfaceObjectIds(networkObjectId, nodeObjectId,
                                NewHashKey(networkObjectId, nodeObjectId, networkNodeSymbolId));
}

QXwObjectIdList* NetworkSubmapNodeInterfacesHashtable::GetRelevantInterfaceObjectIds(
    QXwObjectId networkObjectId, QXwObjectId nodeObjectId) {
  SKIFF_TRACE("NetworkSubmapNodeInterfacesHashtable::GetRelevantInterfaceObjectIds");
  return GetRelevantInterfaceObjectIds(networkObjectId, nodeObjectId,
                                       GetHashKey(networkObjectId, nodeObjectId));
}

QXwObjectIdList* NetworkSubmapNodeInterfacesHashtable::GetRelevantInterfaceObjectIds(
    QXwObjectId networkObjectId, QXwObjectId nodeObjectId, Key keyToUse) {
  if (_HashItem* item = find(skiff::AsWord(keyToUse.get()))) {
    return skiff::ValueOf<QXwObjectIdList>(item);
  }
  QXwFieldValue isInterfaceFieldValue = ScalarValue(QXW_FIELD_BOOLEAN, 1);
  QXwFieldValue topmNetworkIdFieldValue =
      ScalarValue(QXW_FIELD_INTEGER, static_cast<int>(networkObjectId));
  QXwFieldValue topmNodeIdFieldValue =
      ScalarValue(QXW_FIELD_INTEGER, static_cast<int>(nodeObjectId));
  QXwFieldBinding fieldBindings[3] = {
      {m_isInterfaceFieldId, &isInterfaceFieldValue},
      {m_TopMNetworkIdFieldId, &topmNetworkIdFieldValue},
      {m_TopMNodeIdFieldId, &topmNodeIdFieldValue},
  };
  QXwFieldBindList fieldBindList{3, fieldBindings};
  QXwObjectIdList* pInterfaceObjectIds = QXwDbListObjectsByFieldValues(&fieldBindList);
  insert(skiff::AsWord(keyToUse.release()), skiff::AsWord(pInterfaceObjectIds));
  return pInterfaceObjectIds;
}

void NetworkSubmapNodeInterfacesHashtable::GetNetworkAndNodeObjectIdsAndNetworkNodeSymbolId(
    const char* key, QXwObjectId* pNetworkObjectId, QXwObjectId* pNodeObjectId,
    QXwSymbolId* pNetworkNodeSymbolId) {
  SKIFF_TRACE(
      "NetworkSubmapNodeInterfacesHashtable::GetNetworkAndNodeObjectIdsAndNetworkNodeSymbolId");
  int networkObjectId = 0, nodeObjectId = 0, networkNodeSymbolId = 0;
  sscanf(key, "%d:%d:%d", &networkObjectId, &nodeObjectId, &networkNodeSymbolId);
  *pNetworkObjectId = static_cast<QXwObjectId>(networkObjectId);
  *pNodeObjectId = static_cast<QXwObjectId>(nodeObjectId);
  *pNetworkNodeSymbolId = static_cast<QXwSymbolId>(networkNodeSymbolId);
}

NetworkSubmapNodeInterfacesHashtable::Key NetworkSubmapNodeInterfacesHashtable::NewHashKey(
    QXwObjectId networkObjectId, QXwObjectId nodeObjectId, QXwSymbolId networkNodeSymbolId) {
  Key key(new char[kKeyBufferSize]);
  snprintf(key.get(), kKeyBufferSize, "%d:%d:%d", static_cast<int>(networkObjectId),
           static_cast<int>(nodeObjectId), static_cast<int>(networkNodeSymbolId));
  return key;
}

NetworkSubmapNodeInterfacesHashtable::Key NetworkSubmapNodeInterfacesHashtable::GetHashKey(
    QXwObjectId networkObjectId, QXwObjectId nodeObjectId) {
  Key key(new char[kKeyBufferSize]);
  snprintf(key.get(), kKeyBufferSize, "%d:%d", static_cast<int>(networkObjectId),
           static_cast<int>(nodeObjectId));
  return key;
}

unsigned int NetworkSubmapNodeInterfacesHashtable::hash(unsigned long key) {
  std::string_view identity = KeyWithoutSymbolId(reinterpret_cast<const char*>(key));
  char text[kKeyBufferSize];
  size_t length = std::min(identity.size(), kKeyBufferSize - 1);
  memcpy(text, identity.data(), length);
  text[length] = '\0';
  return _QXhash(text);
}

int NetworkSubmapNodeInterfacesHashtable::keyCmp(unsigned long tabKey, unsigned long searchKey) {
  return KeyWithoutSymbolId(reinterpret_cast<const char*>(tabKey)) !=
         KeyWithoutSymbolId(reinterpret_cast<const char*>(searchKey));
}
