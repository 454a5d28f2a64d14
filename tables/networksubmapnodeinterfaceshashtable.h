// Network and node -> the node's interface objects on that network, fetched
// from the object database on a miss.
#ifndef SKIFF_TABLES_NETWORKSUBMAPNODEINTERFACESHASHTABLE_H_
#define SKIFF_TABLES_NETWORKSUBMAPNODEINTERFACESHASHTABLE_H_

#include <memory>

#include "platform/qxhash.h"
#include "platform/qxwrecords.h"

// Keys are texts of decimal numbers joined by ":": a stored key is
// "network:node:symbol" (the node's symbol on the network's submap), a lookup
// key "network:node". A key's identity is its text before the second ":", so a
// lookup key finds the stored key of the same network and node, and the table
// holds at most one entry per network and node. Entries are read back by
// iterating the table: key() is the stored key text, data() the
// QXwObjectIdList* (possibly null). The table owns keys and lists.
class NetworkSubmapNodeInterfacesHashtable : public _Hash {
 public:
  // The ids of the fields "isInterface", "TopM Node ID" and "TopM Network ID".
  NetworkSubmapNodeInterfacesHashtable(QXwFieldId isInterfaceFieldId, QXwFieldId topMNodeIdFieldId,
                                       QXwFieldId topMNetworkIdFieldId);
  // Releases every key and every list once.
  ~NetworkSubmapNodeInterfacesHashtable() override;

  // Makes the entry of the network and node, keyed with the node's symbol id
  // on the network submap, unless the network and node have one already (the
  // first entry, with its symbol id, is kept).
  void AddKey(QXwObjectId networkObjectId, QXwObjectId nodeObjectId,
              QXwSymbolId networkNodeSymbolId);
  // The interface objects of the node on the network (owned by the table), or
  // null when the database has none. The database is asked once per network
  // and node; a null answer is remembered too.
  QXwObjectIdList* GetRelevantInterfaceObjectIds(QXwObjectId networkObjectId,
                                                 QXwObjectId nodeObjectId);
  // Reads the three numbers of a stored key back. Outputs that the key does
  // not hold are set to 0.
  static void GetNetworkAndNodeObjectIdsAndNetworkNodeSymbolId(const char* key,
                                                               QXwObjectId* pNetworkObjectId,
                                                               QXwObjectId* pNodeObjectId,
                                                               QXwSymbolId* pNetworkNodeSymbolId);

 private:
  using Key = std::unique_ptr<char[]>;

  // Looks the key up; on a miss asks the database and stores its answer under
  // the key. The key is released on a hit and kept by the table on a miss.
  QXwObjectIdList* GetRelevantInterfaceObjectIds(QXwObjectId networkObjectId,
                                                 QXwObjectId nodeObjectId, Key keyToUse);
  // The stored and the lookup key texts, each in a fresh 100-character buffer.
  static Key NewHashKey(QXwObjectId networkObjectId, QXwObjectId nodeObjectId,
                        QXwSymbolId networkNodeSymbolId);
  static Key GetHashKey(QXwObjectId networkObjectId, QXwObjectId nodeObjectId);

  unsigned int hash(unsigned long key) override;
  int keyCmp(unsigned long tabKey, unsigned long searchKey) override;

  const QXwFieldId m_isInterfaceFieldId;
  const QXwFieldId m_TopMNodeIdFieldId;
  const QXwFieldId m_TopMNetworkIdFieldId;
};

#endif  // SKIFF_TABLES_NETWORKSUBMAPNODEINTERFACESHASHTABLE_H_
