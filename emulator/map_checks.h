// Checks that span a whole map, run once every entity of a map file is in.
// The checks of one entity are declared in loader.h.
#ifndef SKIFF_EMULATOR_MAP_CHECKS_H_
#define SKIFF_EMULATOR_MAP_CHECKS_H_

#include <vector>

#include "emulator/loader.h"

namespace qxwemu {

// Fails when predecessors loop, naming the first symbol of the loop that the
// walks, begun from each of `symbols` in turn, reach. A walk stops at a symbol
// an earlier walk has cleared, so each symbol is walked once and the check is
// linear in the map's size.
void CheckPredecessorLoops(Map& map, const std::vector<const Symbol*>& symbols);

}  // namespace qxwemu

#endif  // SKIFF_EMULATOR_MAP_CHECKS_H_
