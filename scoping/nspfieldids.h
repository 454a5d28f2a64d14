// The ids of the database fields that the Location ID upkeep and the
// classification of objects read, resolved by name once per session and
// handed, as one value, to the operations that read those fields.
#ifndef SKIFF_SCOPING_NSPFIELDIDS_H_
#define SKIFF_SCOPING_NSPFIELDIDS_H_

#include "platform/qxwrecords.h"

// The fields, in the order they are resolved:
// X(NSP member, NSPFieldIds member, field name).
#define SKIFF_NSP_FIELDS(X)                        \
  X(m_isNetworkFieldId, isNetwork, "isNetwork")    \
  X(m_isSegmentFieldId, isSegment, "isSegment")    \
  X(m_isRouterFieldId, isRouter, "isRouter")       \
  X(m_isNodeFieldId, isNode, "isNode")             \
  X(m_isLocationFieldId, isLocation, "isLocation") \
  X(m_LocationIDFieldId, locationId, "Location ID")

namespace skiff::scoping {

// One id per field of SKIFF_NSP_FIELDS; 0 for a field the database lacks.
struct NSPFieldIds {
#define SKIFF_NSP_FIELD_IDS_MEMBER(member, name, fieldName) QXwFieldId name = 0;
  SKIFF_NSP_FIELDS(SKIFF_NSP_FIELD_IDS_MEMBER)
#undef SKIFF_NSP_FIELD_IDS_MEMBER
};

// Resolves every field by name in the open platform session, in table order;
// each field the database lacks is reported on standard error
// ("Could not obtain field id for field: NAME") and keeps 0.
NSPFieldIds ResolveNSPFieldIds();

}  // namespace skiff::scoping

#endif  // SKIFF_SCOPING_NSPFIELDIDS_H_
