// The object-collection service.
#include "emulator/emulator.h"
#include "emulator/list_order.h"
#include "emulator/query.h"
#include "emulator/records.h"
#include "platform/skcollection.h"

using namespace qxwemu;

extern "C" {

int skCollectionOpen(void) {
  Call call(k_skCollectionOpen);
  if (call.Failing()) return 0;
  Session& s = Emu().session;
  if (!s.open) {
    SetError(QXW_ERR_NO_SESSION);
    return 0;
  }
  ++s.collectionOpens;
  return 1;
}

QXwObjectIdList* skCollectionEvaluate(const char* expression) {
  Call call(k_skCollectionEvaluate);
  if (call.Failing()) return nullptr;
  Session& s = Emu().session;
  if (s.open && s.collectionOpens == 0) {
    SetError(QXW_ERR_NOT_OPEN);
    return nullptr;
  }
  Map* map = Database();
  if (map == nullptr) return nullptr;
  Clause clause;
  if (expression == nullptr || !ParseClause(expression, &clause)) {
    SetError(QXW_ERR_BAD_EXPRESSION,
             std::string("malformed expression: ") + (expression ? expression : "(none)"));
    return nullptr;
  }
  std::vector<QXwObjectId> ids;
  if (!EvaluateClause(*map, clause, &ids)) return nullptr;
  ServeObjects(&ids);
  if (ids.empty()) {
    SetError(QXW_ERR_NOT_FOUND, "no object matches");
    return nullptr;
  }
  return BuildObjectIdList(ids);
}

void skCollectionDone(void) {
  Call call(k_skCollectionDone);
  Session& s = Emu().session;
  if (s.collectionOpens > 0) --s.collectionOpens;
}

}  // extern "C"
