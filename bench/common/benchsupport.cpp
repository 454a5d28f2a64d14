// The native side of BenchSupport, shared by the Java benchmarks that time
// the library beside a baseline in their own process: keeping threads on one
// CPU, and the emulator's platform call counters.
#include <sched.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "bridge/javacall.h"
#include "bridge/text.h"
#include "com_quenda_skiff_trellis_bench_BenchSupport.h"
#include "emulator/qxwemu.h"

// Keeps the calling thread on the CPU it runs on, and so every thread it
// starts from now on (they inherit the mask); threads started before keep
// theirs. Returns the CPU, or -1 when the thread stays free to move.
JNIEXPORT jint JNICALL Java_com_quenda_skiff_trellis_bench_BenchSupport_stayOnThisCpu(JNIEnv*,
                                                                                      jclass) {
  const int cpu = sched_getcpu();
  if (cpu < 0) return -1;
  cpu_set_t set;
  CPU_ZERO(&set);
  CPU_SET(cpu, &set);
  return sched_setaffinity(0, sizeof(set), &set) == 0 ? cpu : -1;
}

JNIEXPORT void JNICALL Java_com_quenda_skiff_trellis_bench_BenchSupport_resetPlatformCalls(JNIEnv*,
                                                                                           jclass) {
  qxwemu::Control("reset-counters");
}

// The platform functions called since the last reset, one "name count" line
// each, most called first. The event loop's own QXwProcessEvent is left out:
// waking the loop for these commands, or for a request, calls it too.
JNIEXPORT jstring JNICALL
Java_com_quenda_skiff_trellis_bench_BenchSupport_platformCalls(JNIEnv* pEnv, jclass) {
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
  std::string text;
  for (const auto& [name, count] : calls) {
    if (!text.empty()) text += '\n';
    text += name + " " + std::to_string(count);
  }
  return skiff::jni::NewUtf8String(pEnv, text.c_str()).release();
}
