// Classifying an object by its capability fields.
#include "scoping/objecttype.h"

#include <cstdio>

#include "bridge/tracescope.h"
#include "platform/qxwdb.h"
#include "platform/recordowners.h"

namespace skiff::scoping {

bool IsFieldAndValueIsTrue(const QXwFieldBinding* pFieldBinding, QXwFieldId capabilityFieldId) {
  const QXwFieldValue* value = pFieldBinding->field_val;
  return pFieldBinding->field_id == capabilityFieldId && value != nullptr && !value->is_list &&
         value->field_type == QXW_FIELD_BOOLEAN && value->un.bool_val == 1;
}

TOPLEVEL_OBJECT_TYPE GetObjectType(const NSPFieldIds& fieldIds, QXwObjectId objectId,
                                   const char* selectionName) {
  SKIFF_TRACE("skiff::scoping::GetObjectType");
  FieldBindListPtr capabilities(QXwDbGetCapabilityFieldValues(objectId));
  if (capabilities == nullptr) {
    if (selectionName != nullptr) {
      std::fprintf(stderr,
                   "The object with Selection Name '%s' is not a Location, Network, Segment or "
                   "Node, ignoring...\n",
                   selectionName);
    } else {
      std::fprintf(stderr,
                   "The object with object id '%d' is not a Location, Network, Segment or Node, "
                   "ignoring...\n",
                   static_cast<int>(objectId));
    }
    return UNKNOWN_TYPE;
  }
  bool router = false;
  bool node = false;
  for (int i = 0; i < capabilities->count; ++i) {
    const QXwFieldBinding* binding = &capabilities->fields[i];
    if (IsFieldAndValueIsTrue(binding, fieldIds.isLocation)) return LOCATION_TYPE;
    if (IsFieldAndValueIsTrue(binding, fieldIds.isNetwork)) return NETWORK_TYPE;
    if (IsFieldAndValueIsTrue(binding, fieldIds.isSegment)) return SEGMENT_TYPE;
    if (IsFieldAndValueIsTrue(binding, fieldIds.isRouter)) {
      router = true;
    } else if (IsFieldAndValueIsTrue(binding, fieldIds.isNode)) {
      node = true;
    }
  }
  return router ? ROUTER_TYPE : node ? NODE_TYPE : UNKNOWN_TYPE;
}

}  // namespace skiff::scoping
