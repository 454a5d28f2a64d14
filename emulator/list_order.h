// The order in which the platform serves its lists: the symbols of a submap
// and of an object, the objects of a query, the fields set on an object and
// the fields of the database.
//
// In creation order (the default), a list comes in the order its items were
// created. Permuted with a seed, a list comes sorted by a hash of the seed,
// the list (its kind and the submap or object it belongs to) and the item's
// id, as a platform that keeps its items in hashed storage serves them: the
// same list comes in the same order on every call, and a list that gains or
// loses items keeps the others in their order, while two different lists
// with the same items come in different orders.
#ifndef SKIFF_EMULATOR_LIST_ORDER_H_
#define SKIFF_EMULATOR_LIST_ORDER_H_

#include <cstdint>
#include <vector>

#include "emulator/model.h"

namespace qxwemu {

// The symbols of a submap, all planes, as QXwListSymbols serves them.
std::vector<const Symbol*> ServedSymbols(const Submap& submap);
// The symbols of an object as QXwGetSymbolsByObject serves them.
std::vector<const Symbol*> ServedSymbols(const Object& object);
// The values set on an object as QXwDbGetFieldValues serves them.
std::vector<const FieldValue*> ServedFields(const Object& object);
// The fields of the database as QXwDbListFields serves them.
std::vector<const FieldDef*> ServedFields(const Map& map);
// Puts the answer of an object query in the order the platform serves it.
void ServeObjects(std::vector<QXwObjectId>* ids);

}  // namespace qxwemu

#endif  // SKIFF_EMULATOR_LIST_ORDER_H_
