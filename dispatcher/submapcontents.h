// What a submap report sends for each symbol, apart from Java: which symbols
// are reported, where a node symbol is placed, and which node positions a
// position refresh reports.
#ifndef SKIFF_DISPATCHER_SUBMAPCONTENTS_H_
#define SKIFF_DISPATCHER_SUBMAPCONTENTS_H_

#include "platform/qxwrecords.h"

namespace skiff {

// A node symbol's position as reported: coordinates for placement 1, the
// predecessor for placement 2, zeros for any other placement.
struct NodePlacement {
  int x = 0;
  int y = 0;
  QXwSymbolId predSymbolId = 0;
};

inline NodePlacement PlacementOf(const QXwSymbolPosition& position) {
  NodePlacement placement;
  if (position.placement == QXW_PLACEMENT_COORDS) {
    placement.x = position.un.coords.x;
    placement.y = position.un.coords.y;
  } else if (position.placement == QXW_PLACEMENT_AFTER) {
    placement.predSymbolId = position.un.pred_symbol;
  }
  return placement;
}

// Calls onNode for each icon symbol and onConnection for each connection
// symbol of the list, in the list's order; a symbol of any other variety is
// skipped. Hidden symbols, every plane and meta-connections are all
// reported. A null list reports nothing.
template <class OnNode, class OnConnection>
void ForEachReportedSymbol(const QXwSymbolList* list, OnNode onNode, OnConnection onConnection) {
  if (list == nullptr) return;
  for (int i = 0; i < list->count; ++i) {
    const QXwSymbolInfo& symbol = list->symbols[i];
    if (symbol.symbol_variety == QXW_SYMBOL_ICON) {
      onNode(symbol);
    } else if (symbol.symbol_variety == QXW_SYMBOL_CONNECTION) {
      onConnection(symbol);
    }
  }
}

// Calls onNode(symbol, moreToFollow) for each icon symbol of the list, in
// the list's order; moreToFollow is false for the last icon symbol only.
// Symbols of any other variety are passed over. A null list reports nothing.
template <class OnNode>
void ForEachNodePosition(const QXwSymbolList* list, OnNode onNode) {
  if (list == nullptr) return;
  int last = list->count - 1;
  while (last >= 0 && list->symbols[last].symbol_variety != QXW_SYMBOL_ICON) --last;
  for (int i = 0; i <= last; ++i) {
    if (list->symbols[i].symbol_variety == QXW_SYMBOL_ICON) onNode(list->symbols[i], i != last);
  }
}

}  // namespace skiff

#endif  // SKIFF_DISPATCHER_SUBMAPCONTENTS_H_
