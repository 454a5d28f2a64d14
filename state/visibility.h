// The decisions behind hiding and showing symbols through interface objects,
// apart from the Java side, so that they can be exercised on a map alone.
#ifndef SKIFF_STATE_VISIBILITY_H_
#define SKIFF_STATE_VISIBILITY_H_

#include <vector>

#include "dispatcher/fieldids.h"
#include "platform/qxwrecords.h"

namespace skiff::state {

// What deciding on visibility reads besides the map's contents.
struct VisibilityInputs {
  // The open map.
  QXwMapInfo* pMap;
  // The session's field ids; the TopM ids and "isInterface" are read.
  FieldIds fieldIds;
  // Write the decisions' trace lines on standard error.
  bool verbose;
};

// The symbols that hiding (1) or showing (0) the interfaces changes, in the
// order the platform is to get them: per interface, in request order, its
// symbol on its node's submap and its node's symbol on the segment's submap
// (a node with two interfaces on one segment puts that symbol in twice); then
// each node's symbol on a network's submap once per network and node, when
// the rule of QxwEventDispatcher::DoSetNetworkSubmapNodeSymbolHidden allows. False, after a
// message, when the interfaces' node, segment and network ids cannot all be read: then nothing is
// to change.
bool CollectInterfaceAndNodeVisibilitySymbols(const VisibilityInputs& inputs,
                                              std::vector<QXwObjectId>& interfaceObjectIds,
                                              int doSetHidden,
                                              std::vector<QXwSymbolId>* pVisibilitySymbolIds);

}  // namespace skiff::state

#endif  // SKIFF_STATE_VISIBILITY_H_
