// NSP's session state, and its Location ID and classification operations as
// thin wrappers that hand that state to the logic in scoping/locationid.cpp
// and scoping/objecttype.cpp.
#include "scoping/nsp.h"

#include <cstdio>

#include "bridge/tracescope.h"
#include "platform/qxwdb.h"
#include "scoping/locationid.h"

int NSP::m_doUseVerboseMode = 0;
#define SKIFF_DEFINE_NSP_FIELD_ID(member, name, fieldName) QXwFieldId NSP::member = 0;
SKIFF_NSP_FIELDS(SKIFF_DEFINE_NSP_FIELD_ID)
#undef SKIFF_DEFINE_NSP_FIELD_ID

namespace {

// The ids CacheNSPFieldIds stored, as one value.
skiff::scoping::NSPFieldIds SessionFieldIds() {
  skiff::scoping::NSPFieldIds ids;
#define SKIFF_LOAD_NSP_FIELD_ID(member, name, fieldName) ids.name = NSP::member;
  SKIFF_NSP_FIELDS(SKIFF_LOAD_NSP_FIELD_ID)
#undef SKIFF_LOAD_NSP_FIELD_ID
  return ids;
}

// The session's inputs to the Location ID upkeep on that map.
skiff::scoping::LocationIDInputs SessionInputs(QXwMapInfo* pMap) {
  return {pMap, SessionFieldIds(), NSP::m_doUseVerboseMode != 0};
}

}  // namespace

void NSP::SetVerbose(int doUseVerboseMode) {
  SKIFF_TRACE("NSP::SetVerbose");
  m_doUseVerboseMode = doUseVerboseMode;
}

int NSP::InitializeField(QXwFieldId& fieldId, const char* fieldName,
                         int doReportErrorIfFieldNotFound) {
  fieldId = QXwDbFieldNameToFieldId(fieldName);
  if (fieldId != 0) return 1;
  if (doReportErrorIfFieldNotFound) {
    std::fprintf(stderr, "Could not obtain field id for field: %s\n", fieldName);
  }
  return 0;
}

void NSP::CacheNSPFieldIds() {
  SKIFF_TRACE("NSP::CacheNSPFieldIds");
  const skiff::scoping::NSPFieldIds ids = skiff::scoping::ResolveNSPFieldIds();
#define SKIFF_STORE_NSP_FIELD_ID(member, name, fieldName) member = ids.name;
  SKIFF_NSP_FIELDS(SKIFF_STORE_NSP_FIELD_ID)
#undef SKIFF_STORE_NSP_FIELD_ID
}

int NSP::IsFieldAndValueIsTrue(const QXwFieldBinding* pFieldBinding, QXwFieldId capabilityFieldId) {
  return skiff::scoping::IsFieldAndValueIsTrue(pFieldBinding, capabilityFieldId);
}

TOPLEVEL_OBJECT_TYPE NSP::GetObjectType(QXwObjectId objectId, const char* selectionName) {
  SKIFF_TRACE("NSP::GetObjectType");
  return skiff::scoping::GetObjectType(SessionFieldIds(), objectId, selectionName);
}

void NSP::SetLocationIDField(const QXwSymbolInfo* pSymbolInfo, const QXwSubmapInfo* pSubmapInfo) {
  SKIFF_TRACE("NSP::SetLocationIDField");
  skiff::scoping::SetLocationIDField(SessionInputs(nullptr), pSymbolInfo, pSubmapInfo);
}

void NSP::SetLocationIDFieldIfNeeded(QXwMapInfo* pMap, const QXwSymbolInfo* pSymbolInfo) {
  SKIFF_TRACE("NSP::SetLocationIDFieldIfNeeded");
  skiff::scoping::SetLocationIDFieldIfNeeded(SessionInputs(pMap), pSymbolInfo);
}

int NSP::MaybeSetObjectLocationIDField(QXwObjectId objectId, QXwMapInfo* pMap) {
  SKIFF_TRACE("NSP::MaybeSetObjectLocationIDField");
  return skiff::scoping::MaybeSetObjectLocationIDField(SessionInputs(pMap), objectId);
}

void NSP::ResetObjectLocationIDFields(const QXwObjectIdList* pLocationOrNetworkObjectIds,
                                      QXwMapInfo* pMap) {
  SKIFF_TRACE("NSP::ResetObjectLocationIDFields");
  skiff::scoping::ResetObjectLocationIDFields(SessionInputs(pMap), pLocationOrNetworkObjectIds);
}

void NSP::SynchronizeLocationIDFieldForSubLocations(QXwMapInfo* pMap) {
  SKIFF_TRACE("NSP::SynchronizeLocationIDFieldForSubLocations");
  skiff::scoping::SynchronizeLocationIDFieldForSubLocations(SessionInputs(pMap));
}

void NSP::SynchronizeLocationIDFieldForNetworks(QXwMapInfo* pMap) {
  SKIFF_TRACE("NSP::SynchronizeLocationIDFieldForNetworks");
  skiff::scoping::SynchronizeLocationIDFieldForNetworks(SessionInputs(pMap));
}

QXwObjectIdList* NSP::GetNetworkObjectIds() {
  SKIFF_TRACE("NSP::GetNetworkObjectIds");
  return skiff::scoping::ObjectsWithCapability(m_isNetworkFieldId);
}
