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
  for (size_t n; (n = fread(buffer, 1, sizeof(buffer), pipe)) > 0;) out.append(buffer, n);
  EXPECT_EQ(pclose(pipe), 0) << command;
  return out;
}

TEST(MapgenTest, TheSameSeedGivesTheSameMapAndTheDefaultMapIsTheGeneratorsDefault) {
  const std::string seven = Generate("--seed 7");
  EXPECT_EQ(Generate("--seed 7"), seven);
  EXPECT_NE(Generate("--seed 8"), seven);
  std::ifstream in(SKIFF_SOURCE_DIR "/emulator/maps/default.json", std::ios::binary);
  EXPECT_EQ(Generate(""), std::string(std::istreambuf_iterator<char>(in), {}))
      << "regenerate it: build/bin/qxw-mapgen -o emulator/maps/default.json";
}

TEST(MapgenTest, GeneratedMapsHaveTheIpMapStructure) {
  std::string error;
  std::unique_ptr<qxwemu::Map> map =
      qxwemu::LoadMap(Generate("--objects 3000 --wide 50 --seed 3"), "generated.json", &error);
  ASSERT_NE(map, nullptr) << error;
  EXPECT_GT(map->ObjectCount(), 2400u);
  EXPECT_LT(map->ObjectCount(), 3600u);
  auto value = [&](const qxwemu::Object* o, const char* name) {
    const qxwemu::FieldValue* v = o->Find(map->FieldByName(name)->id);
    return v == nullptr ? qxwemu::Scalar{-1, ""} : v->scalar;
  };
  auto object = [&](const qxwemu::Object* o, const char* name) {
    return map->FindObject(static_cast<QXwObjectId>(value(o, name).num));
  };
  std::map<QXwObjectId, int> interfacesOfNode;
  int compoundRouters = 0;
  for (qxwemu::Object* o : map->ObjectsInOrder()) {
    int compound = 0;
    for (const qxwemu::Symbol* s : o->symbols)
      compound += s->statusSource == QXW_STATUS_SOURCE_COMPOUND;
    compoundRouters += value(o, "isRouter").num == 1 && compound > 2;
    if (value(o, "isInterface").num != 1) continue;
    const qxwemu::Object* node = object(o, "TopM Node ID");
    ASSERT_NE(node, nullptr) << o->id;
    ASSERT_EQ(value(object(o, "TopM Network ID"), "isNetwork").num, 1) << o->id;
    ASSERT_EQ(value(object(o, "TopM Segment ID"), "isSegment").num, 1) << o->id;
    // The interface's symbol lies in its node's submap, and the node's
    // interface list names its address as token 2.
    ASSERT_EQ(o->symbols.size(), 1u);
    EXPECT_EQ(o->symbols[0]->submap, node->childSubmap);
    const std::vector<qxwemu::Scalar>& list =
        node->Find(map->FieldByName("TopM Interface List")->id)->list;
    int index = interfacesOfNode[node->id]++;
    ASSERT_LT(index, static_cast<int>(list.size()));
    std::istringstream tokens(list[index].text);
    std::string token, address;
    for (int t = 0; t <= 2 && tokens >> token; ++t) address = token;
    EXPECT_EQ(address, value(o, "IP Address").text);
  }
  EXPECT_GT(interfacesOfNode.size(), 100u);
  EXPECT_GT(compoundRouters, 0);

  QXwObjectId wide =
      map->Lookup(*map->FieldByName("Selection Name"), {0, "wide-segment"})->front()->id;
  EXPECT_EQ(map->FindSubmap(map->FindObject(wide)->childSubmap)->symbols.size(), 50u);

  int hidden = 0, userPlane = 0, otherApp = 0, metaSubmaps = 0;
  for (const qxwemu::Symbol* s : map->SymbolsInOrder()) {
    hidden += s->hidden;
    userPlane += s->plane == QXW_PLANE_USER;
    otherApp += s->apps->size() == 1 && (*s->apps)[0] == "Facilities Map";
    if (s->metaConnection) {
      const qxwemu::Object* o = map->FindObject(s->object);
      metaSubmaps += map->FindSubmap(o->childSubmap)->policy == QXW_SUBMAP_POLICY_META_CONNECTION;
    }
  }
  EXPECT_GT(hidden, 0);
  EXPECT_GT(userPlane, 0);
  EXPECT_GT(otherApp, 0);
  EXPECT_GT(metaSubmaps, 0);
}

TEST(MapgenTest, NetworkNamesStayDistinctPastTheSixtyFiveThousandth) {
  // Read from the text, one object a line: loading a map this large takes
  // long in a sanitized build. The loader refuses repeated selection names.
  std::istringstream text(
      Generate("--locations 1 --depth 1 --networks 65537 --segments 0 --routers 0"));
  const std::string key = "\"Selection Name\": \"";
  std::vector<std::string> networks;
  for (std::string line; std::getline(text, line);) {
    if (line.find("\"isNetwork\": true") == std::string::npos) continue;
    const size_t at = line.find(key);
    ASSERT_NE(at, std::string::npos) << line;
    const size_t from = at + key.size();
    networks.push_back(line.substr(from, line.find('"', from) - from));
  }
  ASSERT_EQ(networks.size(), 65538u);  // "IP Internet" first
  EXPECT_EQ(std::set<std::string>(networks.begin(), networks.end()).size(), networks.size());
  const std::map<size_t, std::string> names = {{1, "10.0.1"},     {255, "10.0.255"},
                                               {256, "10.1.0"},   {65535, "10.255.255"},
                                               {65536, "11.0.0"}, {65537, "11.0.1"}};
  for (const auto& [ordinal, name] : names) EXPECT_EQ(networks[ordinal], name) << ordinal;
}

}  // namespace
