// The first half of every map state operation: fetching the request's ids
// from the Java dispatcher object, which stored them before it sent the
// request. Also the id lists handed to the platform and its error text.
#ifndef SKIFF_STATE_IDFETCH_H_
#define SKIFF_STATE_IDFETCH_H_

#include <cstdint>
#include <optional>
#include <vector>

#include "bridge/javacall.h"
#include "platform/qxwrecords.h"

namespace skiff::state {

// How one operation fetches its ids, and the lines it writes meanwhile (all
// on standard error).
struct IdFetch {
  // The Java dispatcher object's callback that returns the ids (int[]).
  const jni::JavaMethod& callback;
  // The callback takes the count as its argument.
  bool passesCount;
  // Verbose mode only, on entry: a format of the count and the state.
  const char* entryFormat;
  // Always, when the callback gave no array or one whose length differs from
  // the count: a format of the count and the length (-1 for no array).
  const char* failureFormat;
  // Verbose mode only, for each id: a format of its index and the copied id,
  // then one of its index and the Java array's element; null for none.
  const char* copyLineFormat = nullptr;
  const char* arrayLineFormat = nullptr;
};

// Where the ids come from, and whether the verbose lines are written.
struct IdSource {
  // The calling thread's JNI environment.
  JNIEnv* pEnv;
  // The Java dispatcher object to ask.
  const jni::JavaPeer* peer;
  bool verbose;
};

// Asks the source's Java dispatcher object for `count` ids, in the order it gives
// them. Nothing when the ids cannot be had (the failure line is then
// written): an operation that gets nothing changes nothing.
std::optional<std::vector<uint32_t>> FetchIds(const IdSource& source, const IdFetch& fetch,
                                              int count, int state = 0);

// The platform's view of an id vector; valid while the vector is unchanged.
QXwObjectIdList ObjectIdList(std::vector<QXwObjectId>& objectIds);
QXwSymbolIdList SymbolIdList(std::vector<QXwSymbolId>& symbolIds);

// The platform's text for its last failure on this thread.
const char* PlatformErrorText();

}  // namespace skiff::state

#endif  // SKIFF_STATE_IDFETCH_H_
