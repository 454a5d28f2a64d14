// Resolving the fields of the Location ID upkeep by name.
#include "scoping/nspfieldids.h"

#include "bridge/tracescope.h"
#include "scoping/nsp.h"

namespace skiff::scoping {

NSPFieldIds ResolveNSPFieldIds() {
  SKIFF_TRACE("skiff::scoping::ResolveNSPFieldIds");
  NSPFieldIds ids;
#define SKIFF_RESOLVE_NSP_FIELD(member, name, fieldName) \
  NSP::InitializeField(ids.name, fieldName, 1);
  SKIFF_NSP_FIELDS(SKIFF_RESOLVE_NSP_FIELD)
#undef SKIFF_RESOLVE_NSP_FIELD
  return ids;
}

}  // namespace skiff::scoping
