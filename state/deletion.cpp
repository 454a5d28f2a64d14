// Deleting every symbol of a set of objects.
#include <memory>

#include "bridge/tracescope.h"
#include "dispatcher/main.h"
#include "platform/qxw.h"
#include "platform/recordowners.h"
#include "state/idfetch.h"

void QxwEventDispatcher::DeleteAllSymbolsForObjects(int numObjects) {
  SKIFF_TRACE("QxwEventDispatcher::DeleteAllSymbolsForObjects");
  const skiff::state::IdFetch fetch{
      m_getDeleteSymbolsObjectIds, /*passesCount=*/false,
      "In QxwEventDispatcher::DeleteAllSymbolsForObjects: numObjects=%d\n",
      "QxwEventDispatcher::DeleteAllSymbolsForObjects failed, numObjects=%d, arraySize=%d\n"};
  std::optional<std::vector<QXwObjectId>> objectIds = skiff::state::FetchIds(
      {skiff::jni::AttachedEnv(), Peer(), m_doUseVerboseMode != 0}, fetch, numObjects);
  if (!objectIds) return;
  for (QXwObjectId objectId : *objectIds) {
    // Read just before deleting, so that each object loses the symbols it has
    // now, on whatever submaps they lie.
    skiff::SymbolListPtr pSymbolList(QXwGetSymbolsByObject(m_pMap, objectId));
    // No list: the platform knows no symbols for it. An empty list still
    // gets its one deletion call.
    if (pSymbolList == nullptr) continue;
    std::vector<QXwSymbolId> symbolIds;
    symbolIds.reserve(pSymbolList->count);
    for (int i = 0; i < pSymbolList->count; ++i) {
      symbolIds.push_back(pSymbolList->symbols[i].symbol_id);
    }
    QXwSymbolIdList symbolIdList = skiff::state::SymbolIdList(symbolIds);
    // A failed deletion is neither reported nor retried: the other objects
    // still lose theirs.
    QXwDeleteSymbols(m_pMap, &symbolIdList);
  }
}
