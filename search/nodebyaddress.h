// The node that a host name or an IP address names, found in the object
// database alone.
#ifndef SKIFF_SEARCH_NODEBYADDRESS_H_
#define SKIFF_SEARCH_NODEBYADDRESS_H_

#include "dispatcher/fieldids.h"

namespace skiff::search {

// The selection name of the node with that host name or address (the
// database's own look-up), else of the node of the first interface, in the
// database's order, that carries the address and whose "TopM Node ID" can be
// read. Reads the "IP Address", "isInterface" and "TopM Node ID" fields of
// `fieldIds`. A copy that the caller releases with free; null when no node is
// found. Writes nothing.
char* NodeSelectionNameByHostnameOrIPAddress(const char* hostnameOrIPAddress,
                                             const FieldIds& fieldIds);

}  // namespace skiff::search

#endif  // SKIFF_SEARCH_NODEBYADDRESS_H_
