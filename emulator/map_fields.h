// Field definitions of a map file: the field table a map defines, and the
// names of the field types. Shared by the parts of the map file loader.
#ifndef SKIFF_EMULATOR_MAP_FIELDS_H_
#define SKIFF_EMULATOR_MAP_FIELDS_H_

#include <vector>

#include "emulator/loader.h"

namespace qxwemu {

// Builds the final field table from the standard fields (when `standard`)
// and the map's own definitions `defs` (the "fields" array, or null); ids
// are given in order of definition, each absent one taking the lowest id
// nobody claims. Throws MapError on a malformed definition, a name defined
// twice or an id used twice.
std::vector<FieldDef> BuildFieldTable(bool standard, const Json* defs);

// The map file name of a field type, such as "integer"; "unknown" for a
// type that has none.
const char* TypeName(int type);

}  // namespace qxwemu

#endif  // SKIFF_EMULATOR_MAP_FIELDS_H_
