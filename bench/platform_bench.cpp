// platform_bench: the emulator at scale. Loads a map file and times the
// platform calls the library leans on, each beside a baseline that does the
// irreducible part of the same work without the platform:
//
//   load                    vs reading the same file and visiting every value
//                           with a SIMD parser (the floor of any loader)
//   QXwListSymbols (wide)   vs copying the same records from plain vectors
//   QXwDbListObjectsByFieldValue(s), skCollectionEvaluate over all nodes
//                           vs the same scan over plain vectors
//   QXwGetSymbolsByObject   (per call)
//
//   platform_bench MAP_FILE
//
// Prints a Markdown section on standard output.
#include <regex.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include <simdjson.h>

#include "platform/qxw.h"
#include "platform/qxwdb.h"
#include "platform/skcollection.h"

namespace {

using Clock = std::chrono::steady_clock;

double Seconds(Clock::duration d) { return std::chrono::duration<double>(d).count(); }

// The median time of `runs` calls of `f`, in seconds.
double Median(int runs, const std::function<void()>& f) {
  std::vector<double> times;
  for (int i = 0; i < runs; ++i) {
    auto start = Clock::now();
    f();
    times.push_back(Seconds(Clock::now() - start));
  }
  std::sort(times.begin(), times.end());
  return times[times.size() / 2];
}

long PeakRssMiB() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss / 1024;
}

// Visits every value under `value` as a loader must: each key and string
// unescaped, each number converted. Returns a sum of what it read, so that
// none of the work can be left out.
uint64_t Visit(simdjson::ondemand::value value) {
  using Type = simdjson::ondemand::json_type;
  uint64_t sum = 0;
  switch (value.type()) {
    case Type::object:
      for (auto field : value.get_object()) {
        sum += field.unescaped_key().value().size() + Visit(field.value());
      }
      break;
    case Type::array:
      for (auto element : value.get_array()) sum += Visit(element.value());
      break;
    case Type::string:
      sum = value.get_string().value().size();
      break;
    case Type::number:
      sum = static_cast<uint64_t>(std::llround(std::fabs(value.get_double().value())));
      break;
    case Type::boolean:
      sum = value.get_bool().value() ? 1 : 0;
      break;
    case Type::null:
      break;
  }
  return sum;
}

// Runs `f` in a child process (so that its memory does not count here) and
// returns the seconds it reports.
double InChild(const std::function<double()>& f) {
  int fds[2];
  if (pipe(fds) != 0) return -1;
  pid_t pid = fork();
  if (pid == 0) {
    double s = f();
    [[maybe_unused]] ssize_t n = write(fds[1], &s, sizeof(s));
    _exit(0);
  }
  double s = -1;
  [[maybe_unused]] ssize_t n = read(fds[0], &s, sizeof(s));
  waitpid(pid, nullptr, 0);
  close(fds[0]);
  close(fds[1]);
  return s;
}

// A duration for the table: milliseconds, or microseconds below one.
std::string Time(double seconds) {
  char text[32];
  if (seconds >= 1e-3) {
    std::snprintf(text, sizeof(text), "%.1f ms", seconds * 1e3);
  } else {
    std::snprintf(text, sizeof(text), "%.1f µs", seconds * 1e6);
  }
  return text;
}

void Row(const char* what, double ours, double baseline, const char* note = "") {
  if (baseline > 0) {
    std::printf("| %s | %s | %s | %.2f | %s |\n", what, Time(ours).c_str(), Time(baseline).c_str(),
                ours / baseline, note);
  } else {
    std::printf("| %s | %s | | | %s |\n", what, Time(ours).c_str(), note);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: platform_bench MAP_FILE\n");
    return 2;
  }
  const char* path = argv[1];
  setenv("QXW_MAP", path, 1);
  unsetenv("QXW_CONTROL");
  auto loadStart = Clock::now();
  if (QXwInit() != 0) {
    std::fprintf(stderr, "platform_bench: %s\n", QXwErrorMsg(QXwError()));
    return 1;
  }
  double load = Seconds(Clock::now() - loadStart);
  long rss = PeakRssMiB();
  QXwMapInfo* map = QXwGetMapInfo();

  double parse = InChild([&] {
    auto start = Clock::now();
    simdjson::padded_string text = simdjson::padded_string::load(path);
    simdjson::ondemand::parser parser;
    simdjson::ondemand::document document = parser.iterate(text);
    volatile uint64_t read = Visit(document.get_value());
    (void)read;
    return Seconds(Clock::now() - start);
  });

  // The widest submap: the child submap of the object "wide-segment".
  QXwObjectId wideObject = QXwDbSelectionNameToObjectId("wide-segment");
  QXwObjectInfo* wideInfo = QXwGetObjectInfo(map, wideObject);
  QXwSubmapId wide = wideInfo != nullptr ? wideInfo->child_submap_id : map->root_submap_id;
  QXwFreeObjectInfo(wideInfo);
  QXwSymbolList* probe = QXwListSymbols(map, wide, QXW_PLANE_ALL, nullptr);
  const int wideCount = probe != nullptr ? probe->count : 0;
  // The same records as plain vectors, for the copying baseline.
  std::vector<QXwSymbolInfo> plain(probe->symbols, probe->symbols + wideCount);
  std::vector<std::string> labels, types;
  for (const QXwSymbolInfo& s : plain) {
    labels.push_back(s.symbol_label);
    types.push_back(s.symbol_type);
  }
  QXwFreeSymbolList(probe);

  double list =
      Median(51, [&] { QXwFreeSymbolList(QXwListSymbols(map, wide, QXW_PLANE_ALL, nullptr)); });
  double copy = Median(51, [&] {
    auto* out = static_cast<QXwSymbolInfo*>(std::malloc(sizeof(QXwSymbolInfo) * plain.size()));
    std::vector<char*> strings;
    for (size_t i = 0; i < plain.size(); ++i) {
      out[i] = plain[i];
      out[i].symbol_label = strdup(labels[i].c_str());
      out[i].symbol_type = strdup(types[i].c_str());
      strings.push_back(out[i].symbol_label);
      strings.push_back(out[i].symbol_type);
    }
    for (char* s : strings) std::free(s);
    std::free(out);
  });

  // Objects by value: every node.
  QXwFieldValue yes{};
  yes.field_type = QXW_FIELD_BOOLEAN;
  yes.un.bool_val = 1;
  QXwFieldBinding isNode{QXwDbFieldNameToFieldId("isNode"), &yes};
  QXwObjectIdList* nodes = QXwDbListObjectsByFieldValue(&isNode);
  const int nodeCount = nodes != nullptr ? nodes->count : 0;
  std::vector<QXwObjectId> nodeIds(nodes->object_ids, nodes->object_ids + nodeCount);
  QXwDbFreeObjectIdList(nodes);
  double byValue =
      Median(21, [&] { QXwDbFreeObjectIdList(QXwDbListObjectsByFieldValue(&isNode)); });
  double idCopy = Median(21, [&] {
    std::vector<QXwObjectId> copied(nodeIds.begin(), nodeIds.end());
    if (copied.size() != nodeIds.size()) std::abort();
  });

  // The interfaces of one node on one network: three bindings.
  QXwObjectId someInterface = QXwDbSelectionNameToObjectId("host-1:le0");
  QXwFieldValue node{}, network{};
  node.field_type = network.field_type = QXW_FIELD_INTEGER;
  node.un.int_val =
      QXwDbGetFieldIntegerValue(someInterface, QXwDbFieldNameToFieldId("TopM Node ID"));
  network.un.int_val =
      QXwDbGetFieldIntegerValue(someInterface, QXwDbFieldNameToFieldId("TopM Network ID"));
  QXwFieldBinding three[] = {{QXwDbFieldNameToFieldId("isInterface"), &yes},
                             {QXwDbFieldNameToFieldId("TopM Network ID"), &network},
                             {QXwDbFieldNameToFieldId("TopM Node ID"), &node}};
  QXwFieldBindList threeList{3, three};
  double byValues =
      Median(101, [&] { QXwDbFreeObjectIdList(QXwDbListObjectsByFieldValues(&threeList)); });

  // A collection clause over all nodes' host names, and the same regular
  // expression run over the same texts in a vector.
  const char* clause = "(\"IP Hostname\" ~ \"^host-1[0-9]*[.]\")";
  std::vector<std::string> hostnames;
  {
    QXwFieldId hostField = QXwDbFieldNameToFieldId("IP Hostname");
    QXwObjectIdList ids{static_cast<int>(nodeIds.size()), nodeIds.data()};
    QXwObjectFieldList* values = QXwDbGetFieldValuesByObjects(&ids, hostField);
    for (int i = 0; values != nullptr && i < values->count; ++i) {
      if (values->objects[i].field_value != nullptr) {
        hostnames.push_back(values->objects[i].field_value->un.string_val);
      }
    }
    QXwDbFreeObjectFieldList(values);
  }
  skCollectionOpen();
  int found = 0;
  double collection = Median(5, [&] {
    QXwObjectIdList* hits = skCollectionEvaluate(clause);
    found = hits != nullptr ? hits->count : 0;
    QXwDbFreeObjectIdList(hits);
  });
  skCollectionDone();
  double regexScan = Median(5, [&] {
    regex_t re;
    regcomp(&re, "^host-1[0-9]*[.]", REG_EXTENDED | REG_NOSUB);
    int n = 0;
    for (const std::string& h : hostnames) n += regexec(&re, h.c_str(), 0, nullptr, 0) == 0;
    regfree(&re);
    if (n != found) std::abort();
  });

  // Symbols of an object, over many objects.
  double byObject = Median(5,
                           [&] {
                             for (size_t i = 0; i < nodeIds.size() && i < 10000; ++i) {
                               QXwFreeSymbolList(QXwGetSymbolsByObject(map, nodeIds[i]));
                             }
                           }) /
                    static_cast<double>(std::min<size_t>(nodeIds.size(), 10000));

  char note[128];
  std::printf("### Platform emulator at scale\n\n");
  std::printf(
      "Map: `%s`, %d nodes; widest submap %u with %d symbols. Peak RSS after loading: %ld MiB.\n\n",
      path, nodeCount, wide, wideCount, rss);
  std::printf("| operation | emulator | baseline | ratio | baseline is |\n|---|---|---|---|---|\n");
  Row("load the map file", load, parse,
      "reading the file and visiting every value with the simdjson parser");
  std::snprintf(note, sizeof(note), "copying %d records from vectors", wideCount);
  Row("QXwListSymbols, widest submap", list, copy, note);
  std::snprintf(note, sizeof(note), "copying the %d ids", nodeCount);
  Row("QXwDbListObjectsByFieldValue isNode", byValue, idCopy, note);
  Row("QXwDbListObjectsByFieldValues, 3 bindings", byValues, 0, "");
  std::snprintf(note, sizeof(note), "regexec over %zu host names (%d found)", hostnames.size(),
                found);
  Row("skCollectionEvaluate over all nodes", collection, regexScan, note);
  Row("QXwGetSymbolsByObject, per call", byObject, 0, "");
  std::printf("\n");
  QXwFreeMapInfo(map);
  QXwDone();
  return 0;
}
