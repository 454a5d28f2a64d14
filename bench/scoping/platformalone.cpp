// The scoping benchmark's baseline and probe: the platform calls that a
// location scoping request needs, made by a plain loop in the benchmark's own
// process on the map the library has open, and the symbols along one line of
// descent from the root submap.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <unordered_map>
#include <vector>

#include "bridge/javacall.h"
#include "bridge/text.h"
#include "com_quenda_skiff_trellis_bench_ScopingBench.h"
#include "platform/qxw.h"
#include "platform/qxwdb.h"

namespace {

QXwMapInfo* s_map = nullptr;
QXwFieldId s_isNetwork = 0;
QXwSubmapId s_internet = 0;

// A walk that climbs more submaps than this is going round in circles.
constexpr int kMaxClimb = 1000;

bool InIpMap(const QXwSymbolInfo& symbol) {
  for (int i = 0; i < symbol.apps.count; ++i) {
    if (symbol.apps.names[i] != nullptr && std::strcmp(symbol.apps.names[i], "IP Map") == 0) {
      return true;
    }
  }
  return false;
}

bool CountsForScoping(const QXwSymbolInfo& symbol) {
  return symbol.plane == QXW_PLANE_APPLICATION && InIpMap(symbol);
}

bool IsLocation(const QXwSymbolInfo& symbol) {
  return symbol.symbol_type != nullptr && std::strncmp(symbol.symbol_type, "Location:", 9) == 0 &&
         CountsForScoping(symbol);
}

// One request's worth of walks up from the submaps that hold network
// symbols. Each submap's record and each object's symbols are fetched once,
// each starting submap is walked once; everything is released at the end.
class Walks {
 public:
  Walks() = default;
  Walks(const Walks&) = delete;
  Walks& operator=(const Walks&) = delete;
  ~Walks() {
    for (auto& [id, submap] : submaps_) QXwFreeSubmapInfo(submap);
    for (auto& [id, symbols] : symbols_) QXwFreeSymbolList(symbols);
  }

  // The locations above a submap, innermost first; none when the walk does
  // not reach the "IP Internet" submap.
  const std::vector<QXwObjectId>& Above(QXwSubmapId start) {
    auto [it, isNew] = walked_.try_emplace(start);
    std::vector<QXwObjectId>& found = it->second;
    if (!isNew) return found;
    QXwSubmapId at = start;
    for (int climbed = 0; at != s_internet && climbed < kMaxClimb; ++climbed) {
      const QXwSubmapInfo* submap = Submap(at);
      const QXwSymbolInfo* up = nullptr;
      if (submap != nullptr && submap->parent_object_id != 0) {
        const QXwSymbolList* symbols = Symbols(submap->parent_object_id);
        for (int i = 0; symbols != nullptr && i < symbols->count && up == nullptr; ++i) {
          if (IsLocation(symbols->symbols[i])) up = &symbols->symbols[i];
        }
      }
      if (up == nullptr) break;
      found.push_back(up->object.object_id);
      at = up->submap_id;
    }
    if (at != s_internet) found.clear();
    return found;
  }

  size_t walks() const { return walked_.size(); }
  size_t submaps() const { return submaps_.size(); }

 private:
  const QXwSubmapInfo* Submap(QXwSubmapId id) {
    auto [it, isNew] = submaps_.try_emplace(id, nullptr);
    if (isNew) it->second = QXwGetSubmapInfo(s_map, id);
    return it->second;
  }
  const QXwSymbolList* Symbols(QXwObjectId id) {
    auto [it, isNew] = symbols_.try_emplace(id, nullptr);
    if (isNew) it->second = QXwGetSymbolsByObject(s_map, id);
    return it->second;
  }

  std::unordered_map<QXwSubmapId, QXwSubmapInfo*> submaps_;
  std::unordered_map<QXwObjectId, QXwSymbolList*> symbols_;
  std::unordered_map<QXwSubmapId, std::vector<QXwObjectId>> walked_;
};

// What both sides' reports are compared by: every (network, location) pair
// summed under a multiplier, in unsigned 64-bit arithmetic.
uint64_t PairKey(QXwObjectId network, QXwObjectId location) {
  return static_cast<uint64_t>(network) * 1000003u + location;
}

}  // namespace

// The open map, the network capability field and the "IP Internet" submap,
// as the baseline needs them. False when any of them is missing.
JNIEXPORT jboolean JNICALL Java_com_quenda_skiff_trellis_bench_ScopingBench_openMap(JNIEnv*,
                                                                                    jclass) {
  if (s_map == nullptr) s_map = QXwGetMapInfo();
  s_isNetwork = QXwDbFieldNameToFieldId("isNetwork");
  const QXwObjectId internet = QXwDbSelectionNameToObjectId("IP Internet");
  QXwObjectInfo* object = internet != 0 ? QXwGetObjectInfo(s_map, internet) : nullptr;
  s_internet = object != nullptr ? object->child_submap_id : 0;
  QXwFreeObjectInfo(object);
  return s_map != nullptr && s_isNetwork != 0 && s_internet != 0;
}

// The platform calls of a location scoping request, made in a plain loop:
// the network objects, each one's symbols, and one walk up from each submap
// that holds network symbols of the IP map's application plane. Returns
// {networks listed, networks with a location, (network, location) pairs,
// sum of the pairs' keys, submaps walked from, submaps fetched}.
JNIEXPORT jlongArray JNICALL
Java_com_quenda_skiff_trellis_bench_ScopingBench_scopeAlone(JNIEnv* pEnv, jclass) {
  QXwFieldValue isTrue{};
  isTrue.field_type = QXW_FIELD_BOOLEAN;
  isTrue.un.bool_val = 1;
  QXwFieldBinding selector{s_isNetwork, &isTrue};
  QXwObjectIdList* networks = QXwDbListObjectsByFieldValue(&selector);
  Walks walks;
  jlong listed = networks != nullptr ? networks->count : 0;
  jlong located = 0;
  jlong pairs = 0;
  uint64_t keys = 0;
  std::vector<QXwObjectId> locations;
  for (jlong i = 0; i < listed; ++i) {
    const QXwObjectId network = networks->object_ids[i];
    QXwSymbolList* symbols = QXwGetSymbolsByObject(s_map, network);
    locations.clear();
    for (int k = 0; symbols != nullptr && k < symbols->count; ++k) {
      if (!CountsForScoping(symbols->symbols[k])) continue;
      for (QXwObjectId location : walks.Above(symbols->symbols[k].submap_id)) {
        if (std::find(locations.begin(), locations.end(), location) == locations.end()) {
          locations.push_back(location);
        }
      }
    }
    QXwFreeSymbolList(symbols);
    if (!locations.empty()) ++located;
    pairs += static_cast<jlong>(locations.size());
    for (QXwObjectId location : locations) keys += PairKey(network, location);
  }
  QXwDbFreeObjectIdList(networks);
  const jlong result[] = {listed,
                          located,
                          pairs,
                          static_cast<jlong>(keys),
                          static_cast<jlong>(walks.walks()),
                          static_cast<jlong>(walks.submaps())};
  jlongArray out = pEnv->NewLongArray(6);
  if (out != nullptr) pEnv->SetLongArrayRegion(out, 0, 6, result);
  return out;
}

// One line of descent from the root submap: at each depth from 1 to
// `depth`, the first icon symbol of the application plane of the IP map on
// the submap reached so far, preferring one that opens a submap, whose
// submap is then the next one. One line per depth, "symbol submap object
// type label", tab-separated; the lines end early where a submap has no such
// symbol.
JNIEXPORT jstring JNICALL Java_com_quenda_skiff_trellis_bench_ScopingBench_descend(JNIEnv* pEnv,
                                                                                   jclass,
                                                                                   jint depth) {
  std::string lines;
  QXwSubmapId submap = s_map != nullptr ? s_map->root_submap_id : 0;
  // The root submap's own symbol that opens a submap: depth 0.
  for (jint d = 0; d <= depth && submap != 0; ++d) {
    QXwSymbolList* symbols = QXwListSymbols(s_map, submap, QXW_PLANE_APPLICATION, "IP Map");
    const QXwSymbolInfo* chosen = nullptr;
    for (int i = 0; symbols != nullptr && i < symbols->count; ++i) {
      const QXwSymbolInfo& s = symbols->symbols[i];
      if (s.symbol_variety != QXW_SYMBOL_ICON) continue;
      if (s.object.child_submap_id != 0) {
        chosen = &s;
        break;
      }
      if (chosen == nullptr) chosen = &s;
    }
    submap = chosen != nullptr ? chosen->object.child_submap_id : 0;
    if (chosen != nullptr && d > 0) {
      if (!lines.empty()) lines += '\n';
      lines += std::to_string(chosen->symbol_id) + "\t" + std::to_string(chosen->submap_id) + "\t" +
               std::to_string(chosen->object.object_id) + "\t" +
               (chosen->symbol_type != nullptr ? chosen->symbol_type : "") + "\t" +
               (chosen->symbol_label != nullptr ? chosen->symbol_label : "");
    }
    QXwFreeSymbolList(symbols);
  }
  return skiff::jni::NewUtf8String(pEnv, lines.c_str()).release();
}
