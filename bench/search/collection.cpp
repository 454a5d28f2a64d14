// The search benchmark's baseline and probes: the collection service alone,
// evaluating the clause that the library builds for the same query against
// the map the library has open, and the emulator's platform call counters.
#include <sched.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "bridge/javacall.h"
#include "bridge/text.h"
#include "com_quenda_skiff_trellis_bench_SearchBench.h"
#include "emulator/qxwemu.h"
#include "platform/qxwdb.h"
#include "platform/skcollection.h"
#include "search/findobject.h"

using skiff::jni::LocalRef;

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

// Keeps the calling thread on the CPU it runs on, and so every thread it
// starts from now on (they inherit the mask); threads started before keep
// theirs. Returns the CPU, or -1 when the thread stays free to move.
JNIEXPORT jint JNICALL Java_com_quenda_skiff_trellis_bench_SearchBench_stayOnThisCpu(JNIEnv*,
                                                                                     jclass) {
  const int cpu = sched_getcpu();
  if (cpu < 0) return -1;
  cpu_set_t set;
  CPU_ZERO(&set);
  CPU_SET(cpu, &set);
  return sched_setaffinity(0, sizeof(set), &set) == 0 ? cpu : -1;
}

JNIEXPORT void JNICALL Java_com_quenda_skiff_trellis_bench_SearchBench_resetPlatformCalls(JNIEnv*,
                                                                                          jclass) {
  qxwemu::Control("reset-counters");
}

// The platform functions called since the last reset, as "name count", most
// called first. The event loop's own QXwProcessEvent is left out: waking the
// loop for these commands calls it too.
JNIEXPORT jobjectArray JNICALL
Java_com_quenda_skiff_trellis_bench_SearchBench_platformCalls(JNIEnv* pEnv, jclass) {
  const nlohmann::json reply = nlohmann::json::parse(qxwemu::Control("counters"), nullptr, false);
  std::vector<std::pair<std::string, long>> calls;
  if (reply.is_object() && reply.contains("counters")) {
    for (const auto& [name, count] : reply["counters"].items()) {
      if (name != "QXwProcessEvent" && count.is_number() && count.get<long>() > 0) {
        calls.emplace_back(name, count.get<long>());
      }
    }
  }
  std::stable_sort(calls.begin(), calls.end(),
                   [](const auto& a, const auto& b) { return a.second > b.second; });
  LocalRef<jclass> stringClass(pEnv, pEnv->FindClass("java/lang/String"));
  jobjectArray out =
      pEnv->NewObjectArray(static_cast<jsize>(calls.size()), stringClass.get(), nullptr);
  if (out == nullptr) return nullptr;
  for (size_t i = 0; i < calls.size(); ++i) {
    const std::string text = calls[i].first + " " + std::to_string(calls[i].second);
    LocalRef<jstring> item = skiff::jni::NewUtf8String(pEnv, text.c_str());
    pEnv->SetObjectArrayElement(out, static_cast<jsize>(i), item.get());
  }
  return out;
}
