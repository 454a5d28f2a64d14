// Map contents: what the platform lists, in which order, and how its own
// changes are reported as events.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/qxw.h"
#include "tests/support/platform_session.h"

namespace {

using skifftest::Control;
using skifftest::ControlOk;

std::vector<QXwSymbolId> Ids(const QXwSymbolList* list) {
  std::vector<QXwSymbolId> ids;
  for (int i = 0; list != nullptr && i < list->count; ++i)
    ids.push_back(list->symbols[i].symbol_id);
  return ids;
}

// Lists symbols and frees the list.
std::vector<QXwSymbolId> Listed(QXwMapInfo* map, QXwSubmapId submap, QXwPlaneType planes,
                                const char* app) {
  QXwSymbolList* list = QXwListSymbols(map, submap, planes, app);
  std::vector<QXwSymbolId> ids = Ids(list);
  QXwFreeSymbolList(list);
  return ids;
}

// Records the symbol events handlers receive.
struct Recorded {
  int code;
  std::vector<QXwSymbolId> ids;
};
std::vector<Recorded> g_events;

void RecordSymbols(void*, int code, QXwMapInfo*, QXwSymbolList* list) {
  g_events.push_back({code, Ids(list)});
}

class MapTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(session_.ok()) << session_.error();
    g_events.clear();
    for (int code : {QXW_EVENT_SYMBOLS_HIDDEN, QXW_EVENT_SYMBOLS_UNHIDDEN,
                     QXW_EVENT_SYMBOLS_DELETED, QXW_EVENT_SYMBOLS_STATUS}) {
      ASSERT_EQ(
          QXwAddCallback(code, nullptr, reinterpret_cast<QXwCallbackProc>(RecordSymbols), nullptr),
          0);
    }
  }
  QXwMapInfo* map() { return session_.map(); }

  skifftest::PlatformSession session_{skifftest::TestMap("platform.json")};
};

TEST_F(MapTest, ListsInCreationOrderByPlaneAndApplication) {
  struct Case {
    QXwPlaneType planes;
    const char* app;
    std::vector<QXwSymbolId> ids;
  } cases[] = {
      {QXW_PLANE_ALL, nullptr, {103, 104, 105, 106, 107, 108}},
      {QXW_PLANE_ALL, "", {103, 104, 105, 106, 107, 108}},
      {QXW_PLANE_APPLICATION, nullptr, {103, 104, 106, 107, 108}},
      {QXW_PLANE_USER, nullptr, {105}},
      {QXW_PLANE_ALL, "IP Map", {103, 104, 106, 107}},
      {QXW_PLANE_APPLICATION, "Other App", {106, 108}},
      {QXW_PLANE_BASE, nullptr, {}},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(Listed(map(), 3, c.planes, c.app), c.ids) << c.planes << " " << (c.app ? c.app : "-");
  }
  QXwSymbolList* empty = QXwListSymbols(map(), 5, QXW_PLANE_ALL, nullptr);
  ASSERT_NE(empty, nullptr);
  EXPECT_EQ(empty->count, 0);
  QXwFreeSymbolList(empty);
  EXPECT_EQ(QXwListSymbols(map(), 99, QXW_PLANE_ALL, nullptr), nullptr);
  EXPECT_EQ(QXwError(), QXW_ERR_NO_SUCH_SUBMAP);
  EXPECT_STREQ(QXwErrorMsg(QXwError()), "no such submap: 99");
}

TEST_F(MapTest, SymbolRecordsCarryTheirObjectAndPosition) {
  QXwSymbolList* list = QXwListSymbols(map(), 3, QXW_PLANE_ALL, nullptr);
  ASSERT_NE(list, nullptr);
  const QXwSymbolInfo& after = list->symbols[0];
  EXPECT_EQ(after.var_un.position.placement, QXW_PLACEMENT_AFTER);
  EXPECT_EQ(after.var_un.position.un.pred_symbol, 104u);
  EXPECT_EQ(after.object.object_id, 30u);
  EXPECT_EQ(after.object.object_status, 2u);
  EXPECT_EQ(after.object.compound_status, 4u);
  const QXwSymbolInfo& host = list->symbols[1];
  EXPECT_STREQ(host.symbol_label, "host1");
  EXPECT_STREQ(host.symbol_type, "Computer:Workstation");
  EXPECT_EQ(host.hidden, 1);
  EXPECT_EQ(host.plane, static_cast<QXwPlaneType>(QXW_PLANE_APPLICATION));
  EXPECT_EQ(host.object.child_submap_id, 4u);
  EXPECT_EQ(host.object.num_symbols, 2);
  EXPECT_EQ(host.var_un.position.placement, QXW_PLACEMENT_COORDS);
  EXPECT_EQ(host.var_un.position.un.coords.x, 5);
  EXPECT_EQ(host.var_un.position.un.coords.y, 6);
  EXPECT_EQ(host.var_un.position.un.coords.width, 32);
  const QXwSymbolInfo& rtr2 = list->symbols[3];
  ASSERT_EQ(rtr2.apps.count, 2);
  EXPECT_STREQ(rtr2.apps.names[0], "Other App");
  EXPECT_STREQ(rtr2.apps.names[1], "IP Map");
  const QXwSymbolInfo& link = list->symbols[4];
  EXPECT_EQ(link.symbol_variety, QXW_SYMBOL_CONNECTION);
  EXPECT_EQ(link.var_un.conninfo.endpoint1_id, 103u);
  EXPECT_EQ(link.var_un.conninfo.endpoint2_id, 104u);
  EXPECT_EQ(link.var_un.conninfo.is_meta_conn, 1);
  QXwFreeSymbolList(list);

  QXwSymbolList* ofRouter = QXwGetSymbolsByObject(map(), 30);
  EXPECT_EQ(Ids(ofRouter), (std::vector<QXwSymbolId>{102, 103}));
  EXPECT_EQ(ofRouter->symbols[0].status_source, QXW_STATUS_SOURCE_COMPOUND);
  EXPECT_EQ(ofRouter->symbols[0].symbol_status, 4u);
  QXwFreeSymbolList(ofRouter);
  QXwSymbolList* none = QXwGetSymbolsByObject(map(), 51);
  ASSERT_NE(none, nullptr);
  EXPECT_EQ(none->count, 0);
  QXwFreeSymbolList(none);
  EXPECT_EQ(QXwGetSymbolsByObject(map(), 999), nullptr);
  EXPECT_STREQ(QXwErrorMsg(QXwError()), "no such object: 999");
}

TEST_F(MapTest, SubmapObjectAndMapRecords) {
  QXwSubmapInfo* submap = QXwGetSubmapInfo(map(), 3);
  ASSERT_NE(submap, nullptr);
  EXPECT_STREQ(submap->submap_name, "10.1.0");
  EXPECT_STREQ(submap->app_name, "IP Map");
  EXPECT_EQ(submap->parent_object_id, 20u);
  EXPECT_EQ(submap->layout_style, 3);
  EXPECT_EQ(submap->layout_on, 1);
  EXPECT_STREQ(submap->bg_graphics, "net.gif");
  QXwFreeSubmapInfo(submap);
  QXwSubmapInfo* meta = QXwGetSubmapInfo(map(), 5);
  EXPECT_EQ(meta->submap_policy, QXW_SUBMAP_POLICY_META_CONNECTION);
  QXwFreeSubmapInfo(meta);

  QXwObjectInfo* object = QXwGetObjectInfo(map(), 40);
  ASSERT_NE(object, nullptr);
  EXPECT_EQ(object->child_submap_id, 4u);
  EXPECT_EQ(object->num_symbols, 2);
  QXwFreeObjectInfo(object);
  EXPECT_EQ(QXwGetObjectInfo(map(), 999), nullptr);

  EXPECT_STREQ(map()->map_name, "test campus");
  EXPECT_EQ(map()->permissions, QXW_MAP_READ_WRITE);
  EXPECT_EQ(map()->root_submap_id, 1u);
}

TEST_F(MapTest, VisibilityReportsOnlyTheSymbolsThatChanged) {
  QXwSymbolId ids[] = {104, 103, 103};  // 104 is hidden already
  QXwSymbolIdList list{3, ids};
  ASSERT_EQ(QXwSetSymbolsVisibility(map(), &list, 1), 0);
  QXwSymbolIdList unhide{1, ids};
  ASSERT_EQ(QXwSetSymbolsVisibility(map(), &unhide, 0), 0);
  skifftest::DeliverPending();
  ASSERT_EQ(g_events.size(), 2u);
  EXPECT_EQ(g_events[0].code, QXW_EVENT_SYMBOLS_HIDDEN);
  EXPECT_EQ(g_events[0].ids, (std::vector<QXwSymbolId>{103}));
  EXPECT_EQ(g_events[1].code, QXW_EVENT_SYMBOLS_UNHIDDEN);
  EXPECT_EQ(g_events[1].ids, (std::vector<QXwSymbolId>{104}));

  // One unknown symbol refuses the whole list.
  QXwSymbolId bad[] = {105, 999};
  QXwSymbolIdList badList{2, bad};
  EXPECT_NE(QXwSetSymbolsVisibility(map(), &badList, 1), 0);
  EXPECT_STREQ(QXwErrorMsg(QXwError()), "no such symbol: 999");
  QXwSymbolList* mine = QXwGetSymbolsByObject(map(), 40);
  EXPECT_EQ(mine->symbols[1].hidden, 0);
  QXwFreeSymbolList(mine);
}

TEST_F(MapTest, DeletionTakesAttachedConnectionsAndRelinksSequences) {
  QXwSymbolId ids[] = {104};
  QXwSymbolIdList list{1, ids};
  ASSERT_EQ(QXwDeleteSymbols(map(), &list), 0);
  skifftest::DeliverPending();
  ASSERT_EQ(g_events.size(), 1u);
  EXPECT_EQ(g_events[0].code, QXW_EVENT_SYMBOLS_DELETED);
  EXPECT_EQ(g_events[0].ids, (std::vector<QXwSymbolId>{104, 107}));
  EXPECT_EQ(Listed(map(), 3, QXW_PLANE_ALL, nullptr),
            (std::vector<QXwSymbolId>{103, 105, 106, 108}));
  QXwSymbolList* router = QXwListSymbols(map(), 3, QXW_PLANE_ALL, nullptr);
  EXPECT_EQ(router->symbols[0].var_un.position.un.pred_symbol, 0u);  // 104 was placed first
  QXwFreeSymbolList(router);
  QXwObjectInfo* host = QXwGetObjectInfo(map(), 40);
  EXPECT_EQ(host->num_symbols, 1);
  QXwFreeObjectInfo(host);
}

TEST_F(MapTest, ObjectStatesAndManagedStatus) {
  QXwObjectId ids[] = {30, 31};
  QXwObjectIdList list{2, ids};
  ASSERT_EQ(QXwSetObjectAckState(map(), &list, 1), 0);
  QXwObjectIdList router{1, ids};
  ASSERT_EQ(_QXwUnmanageObjects(map(), &router), 0);
  ASSERT_EQ(_QXwUnmanageObjects(map(), &router), 0);  // nothing changes a second time
  ASSERT_EQ(_QXwManageObjects(map(), &router), 0);
  skifftest::DeliverPending();
  ASSERT_EQ(g_events.size(), 2u);
  EXPECT_EQ(g_events[0].code, QXW_EVENT_SYMBOLS_STATUS);
  EXPECT_EQ(g_events[0].ids, (std::vector<QXwSymbolId>{102, 103}));
  EXPECT_EQ(g_events[1].ids, (std::vector<QXwSymbolId>{102, 103}));
  nlohmann::json objects = ControlOk("dump")["map"]["objects"];
  EXPECT_EQ(objects[2]["acknowledged"], true);
  EXPECT_EQ(objects[3]["acknowledged"], true);
  EXPECT_EQ(objects[2]["managed"], true);
  QXwObjectId missing[] = {999};
  QXwObjectIdList bad{1, missing};
  EXPECT_NE(_QXwUnmanageObjects(map(), &bad), 0);
  EXPECT_STREQ(QXwErrorMsg(QXwError()), "no such object: 999");
}

TEST_F(MapTest, InjectedFailuresFailTheWayTheFunctionDoes) {
  ControlOk("fail QXwGetSubmapInfo 6 2");
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(QXwGetSubmapInfo(map(), 3), nullptr);
    EXPECT_EQ(QXwError(), 6);
    EXPECT_STREQ(QXwErrorMsg(6), "no such submap");
  }
  QXwSubmapInfo* third = QXwGetSubmapInfo(map(), 3);
  EXPECT_NE(third, nullptr);
  QXwFreeSubmapInfo(third);

  ControlOk("fail QXwSetSymbolsVisibility");
  QXwSymbolId ids[] = {103};
  QXwSymbolIdList list{1, ids};
  for (int i = 0; i < 3; ++i) EXPECT_EQ(QXwSetSymbolsVisibility(map(), &list, 1), -1);
  EXPECT_STREQ(QXwErrorMsg(QXwError()), "the operation failed");
  ControlOk("fail QXwSetSymbolsVisibility off");
  EXPECT_EQ(QXwSetSymbolsVisibility(map(), &list, 1), 0);

  ControlOk("fail QXwAddCallback 42 1");
  EXPECT_LT(QXwAddCallback(QXW_EVENT_SYMBOL_MOVED, nullptr,
                           reinterpret_cast<QXwCallbackProc>(RecordSymbols), nullptr),
            0);
  EXPECT_STREQ(QXwErrorMsg(QXwError()), "unknown error 42");
  ControlOk("fail QXwAddInput 1 1");
  EXPECT_EQ(QXwAddInput(
                0, QXW_INPUT_READABLE, [](int, void*) {}, nullptr),
            0u);

  EXPECT_EQ(Control("fail QXwFreeSymbolList")["error"], "QXwFreeSymbolList cannot fail");
  EXPECT_EQ(Control("fail QXwNothing")["error"], "unknown platform function \"QXwNothing\"");
}

TEST_F(MapTest, CountersCountEveryCall) {
  skifftest::ResetCalls();
  ControlOk("fail QXwListSymbols 1 1");
  for (int i = 0; i < 3; ++i) QXwFreeSymbolList(QXwListSymbols(map(), 3, QXW_PLANE_ALL, nullptr));
  EXPECT_EQ(skifftest::Calls("QXwListSymbols"), 3u);
  EXPECT_EQ(skifftest::Calls("QXwFreeSymbolList"), 3u);
  EXPECT_EQ(skifftest::Calls("QXwGetSubmapInfo"), 0u);
}

TEST(ReadOnlyMapTest, RefusesSymbolChangesButNotObjectStates) {
  nlohmann::json map = nlohmann::json::parse(skifftest::TestMap("platform.json"));
  map["map"]["permissions"] = QXW_MAP_READ_ONLY;
  skifftest::PlatformSession session(map.dump());
  ASSERT_TRUE(session.ok()) << session.error();
  QXwSymbolId ids[] = {103};
  QXwSymbolIdList list{1, ids};
  EXPECT_NE(QXwSetSymbolsVisibility(session.map(), &list, 1), 0);
  EXPECT_STREQ(QXwErrorMsg(QXwError()), "the map is open read-only");
  EXPECT_NE(QXwDeleteSymbols(session.map(), &list), 0);
  EXPECT_EQ(QXwError(), QXW_ERR_READ_ONLY);
  QXwObjectId objects[] = {30};
  QXwObjectIdList objectList{1, objects};
  EXPECT_EQ(QXwSetObjectAckState(session.map(), &objectList, 1), 0);
  EXPECT_EQ(skifftest::DeliverPending(), 0);
}

TEST(ReleaseTest, ARecordReleasedTwiceStopsTheProcess) {
  skifftest::PlatformSession session(skifftest::TestMap("platform.json"));
  ASSERT_TRUE(session.ok());
  EXPECT_DEATH(
      {
        QXwSubmapInfo* info = QXwGetSubmapInfo(session.map(), 1);
        QXwFreeSubmapInfo(info);
        QXwFreeSubmapInfo(info);
      },
      "");
}

}  // namespace
