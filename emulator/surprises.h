// The settings that make the emulated platform behave as a real one may,
// where its contract leaves the behaviour open: the order in which it serves
// lists, deletions that cascade, and the shape of empty and partial answers.
// Each session starts with them as the environment gives them at QXwInit
// (QXW_LIST_ORDER, QXW_CASCADE, QXW_LISTS); control commands change them.
#ifndef SKIFF_EMULATOR_SURPRISES_H_
#define SKIFF_EMULATOR_SURPRISES_H_

#include <cstdint>
#include <string>
#include <vector>

namespace qxwemu {

// The order of the lists the platform serves (list_order.h).
enum class ListOrder { kCreation, kPermuted };

// How a list function answers when it has nothing to list: as it always has
// (an empty list from a known container, none from an unknown one or a
// query that matches nothing), with an empty list wherever the contract
// allows one, or with none wherever the contract allows none.
enum class NothingAs { kUsual, kEmpty, kNull };

struct Surprises {
  ListOrder order = ListOrder::kCreation;
  uint32_t seed = 0;
  // Deletions cascade as on a real platform: an object that loses its last
  // symbol goes with it (model.h, CascadeRemoval).
  bool cascade = false;
  NothingAs nothing = NothingAs::kUsual;
  // An id list naming ids that do not exist is applied to those that do
  // (and the call still fails), rather than refused whole.
  bool partial = false;
};

// The settings the environment gives; throws Refusal naming the variable
// when one of them has a value that means nothing.
Surprises SurprisesFromEnvironment();

// The settings of the open session, or the defaults when none is open.
const Surprises& CurrentSurprises();

// For a list function that has nothing to list from a container that exists:
// whether it answers none rather than an empty list. When it does, the error
// is set ("nothing to list").
bool NoneForNothing();
// For a list function whose container does not exist, or a query that
// matches nothing: whether it answers an empty list rather than none.
bool EmptyForNothing();
// Whether an id list that names ids that do not exist is applied to those
// that do.
bool PartialIdLists();

}  // namespace qxwemu

#endif  // SKIFF_EMULATOR_SURPRISES_H_
