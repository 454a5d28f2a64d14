// Keeping the "Location ID" field of locations and networks.
#include "scoping/locationid.h"

#include <cstdio>
#include <cstdlib>
#include <memory>

#include "bridge/tracescope.h"
#include "platform/qxw.h"
#include "platform/qxwdb.h"
#include "platform/recordowners.h"
#include "search/findsymbol.h"

namespace skiff::scoping {

namespace {

// A selection name, released with free; "" stands in for none when written.
struct SelectionName {
  explicit SelectionName(QXwObjectId objectId)
      : text(QXwDbObjectIdToSelectionName(objectId), &std::free) {}
  const char* get() const { return text != nullptr ? text.get() : ""; }
  std::unique_ptr<char, decltype(&std::free)> text;
};

// Recomputes the Location ID of every object whose capability is true;
// `operation` and `kind` name them in the verbose lines.
void SynchronizeLocationIDField(const LocationIDInputs& inputs, QXwFieldId capabilityFieldId,
                                const char* operation, const char* kind) {
  if (inputs.verbose) std::fprintf(stderr, "Entering %s\n", operation);
  ObjectIdListPtr objects(ObjectsWithCapability(capabilityFieldId));
  ResetObjectLocationIDFields(inputs, objects.get());
  if (inputs.verbose) {
    std::fprintf(stderr, "Leaving %s (%s count:%d)\n", operation, kind,
                 objects != nullptr ? objects->count : 0);
  }
}

}  // namespace

QXwObjectIdList* ObjectsWithCapability(QXwFieldId capabilityFieldId) {
  QXwFieldValue isTrue{};
  isTrue.field_type = QXW_FIELD_BOOLEAN;
  isTrue.un.bool_val = 1;
  QXwFieldBinding selector{capabilityFieldId, &isTrue};
  return QXwDbListObjectsByFieldValue(&selector);
}

void SetLocationIDField(const LocationIDInputs& inputs, const QXwSymbolInfo* pSymbolInfo,
                        const QXwSubmapInfo* pSubmapInfo) {
  SKIFF_TRACE("skiff::scoping::SetLocationIDField");
  const QXwObjectId parentObjectId = pSubmapInfo->parent_object_id;
  const QXwObjectId objectId = pSymbolInfo->object.object_id;
  if (inputs.verbose) {
    SelectionName parent(parentObjectId);
    SelectionName child(objectId);
    std::fprintf(stderr, "Setting 'Location ID' field: parent %s (oid:%d) / child %s (%d)\n",
                 parent.get(), static_cast<int>(parentObjectId), child.get(),
                 static_cast<int>(objectId));
  }
  QXwDbSetFieldIntegerValue(objectId, inputs.fieldIds.locationId, static_cast<int>(parentObjectId));
}

void SetLocationIDFieldIfNeeded(const LocationIDInputs& inputs, const QXwSymbolInfo* pSymbolInfo) {
  SKIFF_TRACE("skiff::scoping::SetLocationIDFieldIfNeeded");
  if (!FindSymbol::IsLocationSymbol(pSymbolInfo) && !FindSymbol::IsNetworkSymbol(pSymbolInfo)) {
    return;
  }
  if (!FindSymbol::IsOnAppPlane(pSymbolInfo)) return;
  SubmapInfoPtr submap(QXwGetSubmapInfo(inputs.pMap, pSymbolInfo->submap_id));
  if (FindSymbol::IsInIPTopology(submap.get())) {
    SetLocationIDField(inputs, pSymbolInfo, submap.get());
  }
}

int MaybeSetObjectLocationIDField(const LocationIDInputs& inputs, QXwObjectId objectId) {
  SKIFF_TRACE("skiff::scoping::MaybeSetObjectLocationIDField");
  int ipMapSymbolCount = 0;
  SymbolListPtr symbols(QXwGetSymbolsByObject(inputs.pMap, objectId));
  for (int i = 0; symbols != nullptr && i < symbols->count; ++i) {
    const QXwSymbolInfo* pSymbol = &symbols->symbols[i];
    SubmapInfoPtr submap(QXwGetSubmapInfo(inputs.pMap, pSymbol->submap_id));
    if (submap != nullptr && FindSymbol::IsOnAppPlane(pSymbol) &&
        FindSymbol::IsInIPTopology(submap.get())) {
      ++ipMapSymbolCount;
      SetLocationIDField(inputs, pSymbol, submap.get());
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

void ResetObjectLocationIDFields(const LocationIDInputs& inputs,
                                 const QXwObjectIdList* pLocationOrNetworkObjectIds) {
  SKIFF_TRACE("skiff::scoping::ResetObjectLocationIDFields");
  if (pLocationOrNetworkObjectIds == nullptr) return;
  for (int i = 0; i < pLocationOrNetworkObjectIds->count; ++i) {
    MaybeSetObjectLocationIDField(inputs, pLocationOrNetworkObjectIds->object_ids[i]);
  }
}

void SynchronizeLocationIDFieldForSubLocations(const LocationIDInputs& inputs) {
  SKIFF_TRACE("skiff::scoping::SynchronizeLocationIDFieldForSubLocations");
  SynchronizeLocationIDField(inputs, inputs.fieldIds.isLocation,
                             "SynchronizeLocationIDFieldForSubLocations", "Location");
}

void SynchronizeLocationIDFieldForNetworks(const LocationIDInputs& inputs) {
  SKIFF_TRACE("skiff::scoping::SynchronizeLocationIDFieldForNetworks");
  SynchronizeLocationIDField(inputs, inputs.fieldIds.isNetwork,
                             "SynchronizeLocationIDFieldForNetworks", "Network");
}

}  // namespace skiff::scoping
