// The search benchmark's baseline: the collection service alone, evaluating
// the clause that the library builds for the same query against the map the
// library has open.
#include "bridge/text.h"
#include "com_quenda_skiff_trellis_bench_SearchBench.h"
#include "platform/qxwdb.h"
#include "platform/skcollection.h"
#include "search/findobject.h"

// What a search asks of the collection service, and nothing else: the same
// clause, the service opened for the one evaluation, the list released.
// Returns the number of objects found (0 for none), or -1 when the query
// makes no clause or the service does not open.
JNIEXPORT jint JNICALL Java_com_quenda_skiff_trellis_bench_SearchBench_collect(JNIEnv* pEnv, jclass,
                                                                               jint category,
                                                                               jint matchType,
                                                                               jstring query) {
  char clause[kCollectionClauseSize];
  {
    skiff::jni::Utf8Chars text(pEnv, query);
    if (!FormatCollectionClause(category, matchType, text.get(), clause)) return -1;
  }
  if (skCollectionOpen() < 1) return -1;
  QXwObjectIdList* found = skCollectionEvaluate(clause);
  const jint count = found != nullptr ? found->count : 0;
  QXwDbFreeObjectIdList(found);
  skCollectionDone();
  return count;
}
