// The kind of an object (location, network, segment, router, node), read
// from its capability fields.
#ifndef SKIFF_SCOPING_OBJECTTYPE_H_
#define SKIFF_SCOPING_OBJECTTYPE_H_

#include "platform/qxwrecords.h"
#include "scoping/nspfieldids.h"

enum TOPLEVEL_OBJECT_TYPE : int {
  LOCATION_TYPE = 0,
  NETWORK_TYPE = 1,
  SEGMENT_TYPE = 2,
  ROUTER_TYPE = 3,
  NODE_TYPE = 4,
  UNKNOWN_TYPE = 5,
};

namespace skiff::scoping {

// The binding is for that capability field and its value is exactly true.
bool IsFieldAndValueIsTrue(const QXwFieldBinding* pFieldBinding, QXwFieldId capabilityFieldId);

// The object's kind from its capability fields (the capability ids of
// `fieldIds`): the first true one of location, network and segment in the
// object's field order, else router when it is a router (a router is also a
// node, in either order), else node, else UNKNOWN_TYPE. An object whose
// capability fields cannot be fetched is reported on standard error, by
// selectionName when it is not null and else by its id, and is UNKNOWN_TYPE.
TOPLEVEL_OBJECT_TYPE GetObjectType(const NSPFieldIds& fieldIds, QXwObjectId objectId,
                                   const char* selectionName);

}  // namespace skiff::scoping

#endif  // SKIFF_SCOPING_OBJECTTYPE_H_
