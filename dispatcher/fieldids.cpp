// Resolving the dispatcher's database fields by name.
#include "dispatcher/fieldids.h"

#include "bridge/tracescope.h"
#include "dispatcher/main.h"

namespace skiff {

FieldIds ResolveFieldIds() {
  SKIFF_TRACE("skiff::ResolveFieldIds");
  FieldIds ids;
#define SKIFF_RESOLVE_FIELD(member, name, fieldName) \
  QxwEventDispatcher::InitializeField(&ids.name, fieldName);
  SKIFF_DISPATCHER_FIELDS(SKIFF_RESOLVE_FIELD)
#undef SKIFF_RESOLVE_FIELD
  return ids;
}

}  // namespace skiff
