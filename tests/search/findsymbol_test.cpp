// What a symbol is, and whether a submap lies within a scope. The scope walks
// run on the map the Java search tests use: Site A (submap 3) holds network
// 10.1.0 (submap 5), a user-plane symbol of Annex (submap 6), a
// meta-connection to Trunk (submap 7) and a symbol of another application
// leading to Elsewhere (submap 8); Loop A and Loop B (submaps 9 and 10) show
// each other's parent object.
#include "search/findsymbol.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "tables/idsets.h"
#include "tables/submapinfohashtable.h"
#include "tables/symbolinfohashtables.h"
#include "tests/support/platform_session.h"

namespace {

// A symbol record as the platform would hand it out, for the pure rules.
struct Sym {
  int variety = QXW_SYMBOL_ICON;
  QXwPlaneType plane = QXW_PLANE_APPLICATION;
  const char* type = "Computer:Workstation";
  std::vector<const char*> apps{"IP Map"};
  bool meta = false;

  QXwSymbolInfo Record(QXwSymbolId id) {
    QXwSymbolInfo s{};
    s.symbol_id = id;
    s.symbol_variety = variety;
    s.plane = plane;
    s.symbol_type = const_cast<char*>(type);
    s.apps.count = static_cast<int>(apps.size());
    s.apps.names = const_cast<char**>(apps.data());
    if (variety == QXW_SYMBOL_CONNECTION) s.var_un.conninfo.is_meta_conn = meta;
    return s;
  }
};

TEST(FindSymbolTest, ClassifiesByExactTextsPlanesAndVarieties) {
  struct Case {
    Sym symbol;
    int location, network, ipTopology, appPlane, userPlane;
  } cases[] = {
      {{.type = "Location:Campus"}, 1, 0, 1, 1, 0},
      {{.type = "Location"}, 0, 0, 1, 1, 0},
      {{.type = "location:Campus"}, 0, 0, 1, 1, 0},
      {{.type = " Location:Campus"}, 0, 0, 1, 1, 0},
      {{.type = "Network:"}, 0, 1, 1, 1, 0},
      {{.type = nullptr}, 0, 0, 1, 1, 0},
      {{.apps = {"Other App", "IP Map"}}, 0, 0, 1, 1, 0},
      {{.apps = {"IP Map "}}, 0, 0, 0, 1, 0},
      {{.apps = {"ip map"}}, 0, 0, 0, 1, 0},
      {{.apps = {nullptr, "IP Map"}}, 0, 0, 1, 1, 0},
      {{.apps = {}}, 0, 0, 0, 1, 0},
      {{.plane = QXW_PLANE_USER}, 0, 0, 1, 0, 1},
      {{.plane = 6}, 0, 0, 1, 0, 0},
  };
  for (Case& c : cases) {
    QXwSymbolInfo s = c.symbol.Record(1);
    SCOPED_TRACE(std::string(c.symbol.type ? c.symbol.type : "(null)") + " plane " +
                 std::to_string(c.symbol.plane));
    EXPECT_EQ(FindSymbol::IsLocationSymbol(&s), c.location);
    EXPECT_EQ(FindSymbol::IsNetworkSymbol(&s), c.network);
    EXPECT_EQ(FindSymbol::IsInIPTopology(&s), c.ipTopology);
    EXPECT_EQ(FindSymbol::IsOnAppPlane(&s), c.appPlane);
    EXPECT_EQ(FindSymbol::IsOnUserPlane(&s), c.userPlane);
  }
  // A count that says more names than there are, or a negative one.
  QXwSymbolInfo s = Sym{}.Record(1);
  s.apps.count = -1;
  EXPECT_EQ(FindSymbol::IsInIPTopology(&s), 0);
  QXwSubmapInfo ipMap{}, other{}, none{};
  ipMap.app_name = const_cast<char*>("IP Map");
  other.app_name = const_cast<char*>("IP Map2");
  EXPECT_EQ(FindSymbol::IsInIPTopology(&ipMap), 1);
  EXPECT_EQ(FindSymbol::IsInIPTopology(&other), 0);
  EXPECT_EQ(FindSymbol::IsInIPTopology(&none), 0);
}

using Ids = std::vector<QXwSymbolId>;

// The ids an iterator gives, in order, until it gives null; then one more
// call, which must give null again.
Ids Scan(QXwSymbolList* list, std::function<QXwSymbolInfo*(QXwSymbolList*, int&)> next) {
  Ids ids;
  int cursor = 0;
  while (QXwSymbolInfo* s = next(list, cursor)) ids.push_back(s->symbol_id);
  EXPECT_EQ(cursor, list->count);
  EXPECT_EQ(next(list, cursor), nullptr);
  return ids;
}

TEST(FindSymbolTest, IteratorsVisitEachQualifyingSymbolOnceInListOrder) {
  Sym icon;
  Sym userIcon{.plane = QXW_PLANE_USER};
  Sym otherAppIcon{.apps = {"Other App"}};
  Sym location{.type = "Location:Site"};
  Sym locationConnection{.variety = QXW_SYMBOL_CONNECTION, .type = "Location:Link"};
  Sym meta{.variety = QXW_SYMBOL_CONNECTION, .meta = true};
  Sym userMeta{.variety = QXW_SYMBOL_CONNECTION, .plane = QXW_PLANE_USER, .meta = true};
  Sym link{.variety = QXW_SYMBOL_CONNECTION};
  std::vector<QXwSymbolInfo> records = {
      icon.Record(1),     userIcon.Record(2), meta.Record(3),     otherAppIcon.Record(4),
      location.Record(5), link.Record(6),     userMeta.Record(7), locationConnection.Record(8),
  };
  QXwSymbolList list{static_cast<int>(records.size()), records.data()}, empty{0, nullptr};
  using namespace std::placeholders;
  const auto explodable = &FindSymbol::GetNextExplodableSymbol;  // topology, plane, meta
  const auto locations = &FindSymbol::GetNextLocationSymbol;     // topology, plane
  const auto metas = &FindSymbol::GetNextMetaConnSymbol;         // plane
  EXPECT_EQ(Scan(&list, std::bind(explodable, _1, _2, 0, 0, 0)), (Ids{1, 2, 4, 5}));
  EXPECT_EQ(Scan(&list, std::bind(explodable, _1, _2, 0, 0, 1)), (Ids{1, 2, 3, 4, 5, 7}));
  EXPECT_EQ(Scan(&list, std::bind(explodable, _1, _2, 1, 1, 1)), (Ids{1, 3, 5}));
  EXPECT_EQ(Scan(&list, std::bind(explodable, _1, _2, 0, 1, 0)), (Ids{1, 4, 5}));
  EXPECT_EQ(Scan(&list, std::bind(locations, _1, _2, 0, 0)), (Ids{5}));
  EXPECT_EQ(Scan(&list, std::bind(metas, _1, _2, 0)), (Ids{3, 7}));
  EXPECT_EQ(Scan(&list, std::bind(metas, _1, _2, 1)), (Ids{3}));
  EXPECT_EQ(Scan(&empty, std::bind(explodable, _1, _2, 0, 0, 1)), Ids{});
  int cursor = 5;
  EXPECT_EQ(FindSymbol::GetNextLocationSymbol(nullptr, cursor, 0, 0), nullptr);
  EXPECT_EQ(cursor, 5);
}

class ScopeTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(session_.ok()) << session_.error(); }

  int WithinScope(QXwSubmapId submapId, std::vector<QXwSubmapId> roots, int restrict) {
    SubmapHashtable rootTable;
    for (QXwSubmapId root : roots) rootTable.Add(root);
    return FindSymbol::SymbolIsWithinScope(nullptr, session_.map(), 0, submapId, &rootTable,
                                           restrict, &submaps_, &symbols_);
  }

  skifftest::PlatformSession session_{skifftest::JavaTestMap("search.json")};
  QXwSubmapInfoHashtable submaps_;
  ObjectSymbolInfoHashtable symbols_;
};

TEST_F(ScopeTest, ClimbsThroughApplicationPlaneSymbolsAndMetaConnections) {
  struct Case {
    const char* what;
    QXwSubmapId submap;
    std::vector<QXwSubmapId> roots;
    int restrict, within;
  } cases[] = {
      {"a root", 3, {3}, 1, 1},
      {"a network of the root", 5, {3}, 1, 1},
      {"a sibling location", 4, {3}, 1, 0},
      {"shown only on the user plane of the root", 6, {3}, 1, 0},
      {"shown only on the user plane, from higher up", 6, {1}, 1, 0},
      {"through a meta-connection", 7, {3}, 1, 1},
      {"through another application", 8, {3}, 1, 0},
      {"through another application, unrestricted", 8, {3}, 0, 1},
      {"a cycle", 9, {3}, 1, 0},
      {"a cycle, unrestricted", 10, {1}, 0, 0},
      {"a submap that does not exist", 77, {3}, 1, 0},
      {"one of two roots", 5, {4, 3}, 1, 1},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(WithinScope(c.submap, c.roots, c.restrict), c.within) << c.what;
  }
}

TEST_F(ScopeTest, IPInternetIsFoundByItsSelectionName) {
  EXPECT_EQ(FindSymbol::GetIPInternetSubmapId(session_.map()), 2u);
  skifftest::ControlOk(R"(set-field 1 "Selection Name" "Internet")");
  EXPECT_EQ(FindSymbol::GetIPInternetSubmapId(session_.map()), 0u);
}

}  // namespace
