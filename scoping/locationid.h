// The "Location ID" field of locations and networks: the parent object of
// the submap on which the object's application-plane symbol in the IP
// topology lives (for a network drawn inside a location, that location).
// Written for single symbols as they are created, or recomputed for every
// location or network at once; apart from session state, so that it can be
// exercised on a map alone.
#ifndef SKIFF_SCOPING_LOCATIONID_H_
#define SKIFF_SCOPING_LOCATIONID_H_

#include "platform/qxwrecords.h"
#include "scoping/nspfieldids.h"

namespace skiff::scoping {

// What the Location ID upkeep reads besides the map's contents.
struct LocationIDInputs {
  // The open map.
  QXwMapInfo* pMap;
  // The session's field ids; "Location ID" and the capability being
  // synchronized are read.
  NSPFieldIds fieldIds;
  // Write the upkeep's verbose lines on standard error.
  bool verbose;
};

// The objects whose boolean capability field is true, in the database's
// order, as a list the caller releases with QXwDbFreeObjectIdList; null when
// there is none.
QXwObjectIdList* ObjectsWithCapability(QXwFieldId capabilityFieldId);

// Writes the symbol's object's Location ID: the submap's parent object. The
// result of the write is not examined.
void SetLocationIDField(const LocationIDInputs& inputs, const QXwSymbolInfo* pSymbolInfo,
                        const QXwSubmapInfo* pSubmapInfo);
// For a newly created symbol: a location or network symbol on the
// application plane of an IP topology submap sets its object's Location ID to
// that submap's parent object. Anything else changes nothing.
void SetLocationIDFieldIfNeeded(const LocationIDInputs& inputs, const QXwSymbolInfo* pSymbolInfo);
// Writes the object's Location ID from each of its application-plane symbols
// on an IP topology submap, in the platform's order (so the last wins). An
// object with other than exactly one such symbol is reported on standard
// error. 1 when at least one symbol set the field.
int MaybeSetObjectLocationIDField(const LocationIDInputs& inputs, QXwObjectId objectId);
// MaybeSetObjectLocationIDField for each object of the list, in order; a null
// list does nothing.
void ResetObjectLocationIDFields(const LocationIDInputs& inputs,
                                 const QXwObjectIdList* pLocationOrNetworkObjectIds);
// Recomputes the Location ID of every location / every network, in the
// database's order, between an entering and a leaving verbose line.
void SynchronizeLocationIDFieldForSubLocations(const LocationIDInputs& inputs);
void SynchronizeLocationIDFieldForNetworks(const LocationIDInputs& inputs);

}  // namespace skiff::scoping

#endif  // SKIFF_SCOPING_LOCATIONID_H_
