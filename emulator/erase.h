// Removing elements from a sequence container by predicate.
#ifndef SKIFF_EMULATOR_ERASE_H_
#define SKIFF_EMULATOR_ERASE_H_

#include <algorithm>
#include <cstddef>

namespace qxwemu {

// Removes the elements for which `pred` is true; returns how many.
template <class Container, class Pred>
size_t EraseIf(Container& c, Pred pred) {
  auto end = std::remove_if(c.begin(), c.end(), pred);
  size_t removed = static_cast<size_t>(std::distance(end, c.end()));
  c.erase(end, c.end());
  return removed;
}

}  // namespace qxwemu

#endif  // SKIFF_EMULATOR_ERASE_H_
