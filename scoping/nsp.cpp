#include "scoping/nsp.h"

#include <cstdio>
#include <cstdlib>
#include <memory>

#include "bridge/tracescope.h"
#include "platform/qxw.h"
#include "platform/qxwdb.h"
#include "platform/recordowners.h"
#include "search/findsymbol.h"

int NSP::m_doUseVerboseMode = 0;
QXwFieldId NSP::m_isLocationFieldId = 0;
QXwFieldId NSP::m_isNetworkFieldId = 0;
QXwFieldId NSP::m_isSegmentFieldId = 0;
QXwFieldId NSP::m_isRouterFieldId = 0;
QXwFieldId NSP::m_isNodeFieldId = 0;
QXwFieldId NSP::m_LocationIDFieldId = 0;

namespace {

// A selection name, released with free; "" stands in for none when written.
struct SelectionName {
  explicit SelectionName(QXwObjectId objectId)
      : text(QXwDbObjectIdToSelectionName(objectId), &std::free) {}
  const char* get() const { return text != nullptr ? text.get() : ""; }
  std::unique_ptr<char, decltype(&std::free)> text;
};

// The objects whose boolean capability field is true, in the database's
// order; null when there is none.
QXwObjectIdList* ObjectsWithCapability(QXwFieldId capabilityFieldId) {
  QXwFieldValue isTrue{};
  isTrue.field_type = QXW_FIELD_BOOLEAN;
  isTrue.un.bool_val = 1;
  QXwFieldBinding selector{capabilityFieldId, &isTrue};
  return QXwDbListObjectsByFieldValue(&selector);
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
  InitializeField(m_isNetworkFieldId, "isNetwork", 1);
  InitializeField(m_isSegmentFieldId, "isSegment", 1);
  InitializeField(m_isRouterFieldId, "isRouter", 1);
  InitializeField(m_isNodeFieldId, "isNode", 1);
  InitializeField(m_isLocationFieldId, "isLocation", 1);
  InitializeField(m_LocationIDFieldId, "Location ID", 1);
}

int NSP::IsFieldAndValueIsTrue(const QXwFieldBinding* pFieldBinding, QXwFieldId capabilityFieldId) {
  const QXwFieldValue* value = pFieldBinding->field_val;
  return pFieldBinding->field_id == capabilityFieldId && value != nullptr && !value->is_list &&
         value->field_type == QXW_FIELD_BOOLEAN && value->un.bool_val == 1;
}

TOPLEVEL_OBJECT_TYPE NSP::GetObjectType(QXwObjectId objectId, const char* selectionName) {
  SKIFF_TRACE("NSP::GetObjectType");
  skiff::FieldBindListPtr capabilities(QXwDbGetCapabilityFieldValues(objectId));
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
    if (IsFieldAndValueIsTrue(binding, m_isLocationFieldId)) return LOCATION_TYPE;
    if (IsFieldAndValueIsTrue(binding, m_isNetworkFieldId)) return NETWORK_TYPE;
    if (IsFieldAndValueIsTrue(binding, m_isSegmentFieldId)) return SEGMENT_TYPE;
    if (IsFieldAndValueIsTrue(binding, m_isRouterFieldId)) {
      router = true;
    } else if (IsFieldAndValueIsTrue(binding, m_isNodeFieldId)) {
      node = true;
    }
  }
  return router ? ROUTER_TYPE : node ? NODE_TYPE : UNKNOWN_TYPE;
}

void NSP::SetLocationIDField(const QXwSymbolInfo* pSymbolInfo, const QXwSubmapInfo* pSubmapInfo) {
  SKIFF_TRACE("NSP::SetLocationIDField");
  const QXwObjectId parentObjectId = pSubmapInfo->parent_object_id;
  const QXwObjectId objectId = pSymbolInfo->object.object_id;
  if (m_doUseVerboseMode) {
    SelectionName parent(parentObjectId);
    SelectionName child(objectId);
    std::fprintf(stderr, "Setting 'Location ID' field: parent %s (oid:%d) / child %s (%d)\n",
                 parent.get(), static_cast<int>(parentObjectId), child.get(),
                 static_cast<int>(objectId));
  }
  QXwDbSetFieldIntegerValue(objectId, m_LocationIDFieldId, static_cast<int>(parentObjectId));
}

void NSP::SetLocationIDFieldIfNeeded(QXwMapInfo* pMap, const QXwSymbolInfo* pSymbolInfo) {
  SKIFF_TRACE("NSP::SetLocationIDFieldIfNeeded");
  if (!FindSymbol::IsLocationSymbol(pSymbolInfo) && !FindSymbol::IsNetworkSymbol(pSymbolInfo)) {
    return;
  }
  if (!FindSymbol::IsOnAppPlane(pSymbolInfo)) return;
  skiff::SubmapInfoPtr submap(QXwGetSubmapInfo(pMap, pSymbolInfo->submap_id));
  if (FindSymbol::IsInIPTopology(submap.get())) SetLocationIDField(pSymbolInfo, submap.get());
}

int NSP::MaybeSetObjectLocationIDField(QXwObjectId objectId, QXwMapInfo* pMap) {
  SKIFF_TRACE("NSP::MaybeSetObjectLocationIDField");
  int ipMapSymbolCount = 0;
  skiff::SymbolListPtr symbols(QXwGetSymbolsByObject(pMap, objectId));
  for (int i = 0; symbols != nullptr && i < symbols->count; ++i) {
    const QXwSymbolInfo* pSymbol = &symbols->symbols[i];
    skiff::SubmapInfoPtr submap(QXwGetSubmapInfo(pMap, pSymbol->submap_id));
    if (submap != nullptr && FindSymbol::IsOnAppPlane(pSymbol) &&
        FindSymbol::IsInIPTopology(submap.get())) {
      ++ipMapSymbolCount;
      SetLocationIDField(pSymbol, submap.get());
    }
  }
  if (ipMapSymbolCount != 1) {
    SelectionName name(objectId);
    std::fprintf(stderr,
                 "Object %s (oid:%d) has %d symbol(s) attached (but should have exactly 1 "
                 "attached)\n",
                 name.get(), static_cast<int>(objectId), ipMapSymbolCount);
  }
  return ipMapSymbolCount > 0;
}

void NSP::ResetObjectLocationIDFields(const QXwObjectIdList* pLocationOrNetworkObjectIds,
                                      QXwMapInfo* pMap) {
  SKIFF_TRACE("NSP::ResetObjectLocationIDFields");
  if (pLocationOrNetworkObjectIds == nullptr) return;
  for (int i = 0; i < pLocationOrNetworkObjectIds->count; ++i) {
    MaybeSetObjectLocationIDField(pLocationOrNetworkObjectIds->object_ids[i], pMap);
  }
}

void NSP::SynchronizeLocationIDField(QXwMapInfo* pMap, QXwFieldId capabilityFieldId,
                                     const char* operation, const char* kind) {
  if (m_doUseVerboseMode) std::fprintf(stderr, "Entering %s\n", operation);
  skiff::ObjectIdListPtr objects(ObjectsWithCapability(capabilityFieldId));
  ResetObjectLocationIDFields(objects.get(), pMap);
  if (m_doUseVerboseMode) {
    std::fprintf(stderr, "Leaving %s (%s count:%d)\n", operation, kind,
                 objects != nullptr ? objects->count : 0);
  }
}

void NSP::SynchronizeLocationIDFieldForSubLocations(QXwMapInfo* pMap) {
  SKIFF_TRACE("NSP::SynchronizeLocationIDFieldForSubLocations");
  SynchronizeLocationIDField(pMap, m_isLocationFieldId, "SynchronizeLocationIDFieldForSubLocations",
                             "Location");
}

void NSP::SynchronizeLocationIDFieldForNetworks(QXwMapInfo* pMap) {
  SKIFF_TRACE("NSP::SynchronizeLocationIDFieldForNetworks");
  SynchronizeLocationIDField(pMap, m_isNetworkFieldId, "SynchronizeLocationIDFieldForNetworks",
                             "Network");
}

QXwObjectIdList* NSP::GetNetworkObjectIds() {
  SKIFF_TRACE("NSP::GetNetworkObjectIds");
  return ObjectsWithCapability(m_isNetworkFieldId);
}
