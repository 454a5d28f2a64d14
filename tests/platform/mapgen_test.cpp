// qxw-mapgen: the same map for the same seed, valid at every size, with the
// IP map structure the library walks.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "emulator/loader.h"

namespace {

std::string Generate(const std::string& options) {
  std::string command = SKIFF_BINARY_DIR "/bin/qxw-mapgen " + options + " 2>/dev/null";
  FILE* pipe = popen(command.c_str(), "r");
  EXPECT_NE(pipe, nullptr);
  std::string out;
  char buffer[65536];
  size_t n;
  while ((n = fread(buffer, 1, sizeof(buffer), pipe)) > 0) out.append(buffer, n);
  EXPECT_EQ(pclose(pipe), 0) << command;
  return out;
}

std::unique_ptr<qxwemu::Map> Load(const std::string& text) {
  std::string error;
  std::unique_ptr<qxwemu::Map> map = qxwemu::LoadMap(text, "generated.json", &error);
  EXPECT_NE(map, nullptr) << error;
  return map;
}

TEST(MapgenTest, SameSeedSameMap) {
  EXPECT_EQ(Generate("--seed 7"), Generate("--seed 7"));
  EXPECT_NE(Generate("--seed 7"), Generate("--seed 8"));
}

TEST(MapgenTest, TheDefaultMapIsTheGeneratorsDefault) {
  std::ifstream in(SKIFF_SOURCE_DIR "/emulator/maps/default.json", std::ios::binary);
  std::string text((std::istreambuf_iterator<char>(in)), {});
  EXPECT_EQ(Generate(""), text)
      << "regenerate it: build/bin/qxw-mapgen -o emulator/maps/default.json";
}

TEST(MapgenTest, GeneratedMapsHaveTheIpMapStructure) {
  std::unique_ptr<qxwemu::Map> map = Load(Generate("--objects 3000 --wide 50 --seed 3"));
  ASSERT_NE(map, nullptr);
  EXPECT_GT(map->ObjectCount(), 2400u);
  EXPECT_LT(map->ObjectCount(), 3600u);
  auto field = [&](const char* name) { return map->FieldByName(name)->id; };
  auto number = [&](const qxwemu::Object* o, const char* name) -> int64_t {
    const qxwemu::FieldValue* v = o->Find(field(name));
    return v == nullptr ? -1 : v->scalar.num;
  };
  auto text = [&](const qxwemu::Object* o, const char* name) -> std::string {
    const qxwemu::FieldValue* v = o->Find(field(name));
    return v == nullptr ? "" : v->scalar.text;
  };
  std::map<QXwObjectId, int> interfacesOfNode;
  for (qxwemu::Object* o : map->ObjectsInOrder()) {
    if (number(o, "isInterface") != 1) continue;
    qxwemu::Object* node = map->FindObject(static_cast<QXwObjectId>(number(o, "TopM Node ID")));
    ASSERT_NE(node, nullptr) << o->id;
    ASSERT_EQ(number(map->FindObject(static_cast<QXwObjectId>(number(o, "TopM Network ID"))),
                     "isNetwork"),
              1);
    ASSERT_EQ(number(map->FindObject(static_cast<QXwObjectId>(number(o, "TopM Segment ID"))),
                     "isSegment"),
              1);
    // The interface's symbol lies in its node's submap, and the node's
    // interface list names its address as token 2.
    ASSERT_EQ(o->symbols.size(), 1u);
    EXPECT_EQ(o->symbols[0]->submap, node->childSubmap);
    const std::vector<qxwemu::Scalar>& list = node->Find(field("TopM Interface List"))->list;
    int index = interfacesOfNode[node->id]++;
    ASSERT_LT(index, static_cast<int>(list.size()));
    std::istringstream tokens(list[index].text);
    std::string token, address;
    for (int t = 0; t <= 2 && tokens >> token; ++t) address = token;
    EXPECT_EQ(address, text(o, "IP Address"));
  }
  EXPECT_GT(interfacesOfNode.size(), 100u);

  QXwObjectId wide =
      map->Lookup(*map->FieldByName("Selection Name"), {0, "wide-segment"})->front()->id;
  EXPECT_EQ(map->FindSubmap(map->FindObject(wide)->childSubmap)->symbols.size(), 50u);

  int hidden = 0, userPlane = 0, otherApp = 0, metaSubmaps = 0, compoundRouters = 0;
  for (const qxwemu::Symbol* s : map->SymbolsInOrder()) {
    hidden += s->hidden;
    userPlane += s->plane == QXW_PLANE_USER;
    otherApp += s->apps->size() == 1 && (*s->apps)[0] == "Facilities Map";
    if (s->metaConnection) {
      const qxwemu::Object* o = map->FindObject(s->object);
      metaSubmaps += map->FindSubmap(o->childSubmap)->policy == QXW_SUBMAP_POLICY_META_CONNECTION;
    }
  }
  for (qxwemu::Object* o : map->ObjectsInOrder()) {
    if (number(o, "isRouter") != 1) continue;
    int compound = 0;
    for (const qxwemu::Symbol* s : o->symbols)
      compound += s->statusSource == QXW_STATUS_SOURCE_COMPOUND;
    compoundRouters += compound > 2;
  }
  EXPECT_GT(hidden, 0);
  EXPECT_GT(userPlane, 0);
  EXPECT_GT(otherApp, 0);
  EXPECT_GT(metaSubmaps, 0);
  EXPECT_GT(compoundRouters, 0);
}

TEST(MapgenTest, NetworkNamesStayDistinctPastTheSixtyFiveThousandth) {
  // Read from the text, one object a line: loading a map this large takes
  // long in a sanitized build. The loader refuses repeated selection names.
  std::istringstream text(
      Generate("--locations 1 --depth 1 --networks 65537 --segments 0 --routers 0"));
  const std::string key = "\"Selection Name\": \"";
  std::vector<std::string> networks;
  std::set<std::string> distinct;
  for (std::string line; std::getline(text, line);) {
    if (line.find("\"isNetwork\": true") == std::string::npos) continue;
    const size_t at = line.find(key);
    ASSERT_NE(at, std::string::npos) << line;
    const size_t from = at + key.size();
    networks.push_back(line.substr(from, line.find('"', from) - from));
    distinct.insert(networks.back());
  }
  ASSERT_EQ(networks.size(), 65538u);  // "IP Internet" first
  EXPECT_EQ(distinct.size(), networks.size());
  const struct {
    size_t ordinal;
    const char* name;
  } kNames[] = {{1, "10.0.1"},         {255, "10.0.255"}, {256, "10.1.0"},
                {65535, "10.255.255"}, {65536, "11.0.0"}, {65537, "11.0.1"}};
  for (const auto& expected : kNames) {
    EXPECT_EQ(networks[expected.ordinal], expected.name) << expected.ordinal;
  }
}

}  // namespace
