// The platform's map and its event loop: what the platform lists and in which
// order; events from control commands and from the platform's own changes,
// one per QXwProcessEvent, each in its handler's form; filters, input
// descriptors and commands from other threads (failures_test.cpp has the
// injected failures).
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "emulator/qxwemu.h"
#include "tests/platform/platform_test.h"

namespace {

using skifftest::Control;
using skifftest::ControlOk;
using skifftest::Ids;
using skifftest::Of;

// Every handler writes one line per event: the code, then the items as the
// event carries them: symbols as "id@submap:object", submaps as
// "id<parent object", objects as "id>child submap".
std::vector<std::string> g_seen;

template <class List, class Item>
std::string Line(int code, const List* list, const Item* items, std::string (*item)(const Item&)) {
  std::string line = std::to_string(code) + " [";
  for (int i = 0; i < list->count; ++i) line += (i ? " " : "") + item(items[i]);
  return line + "]";
}
std::string SymbolItem(const QXwSymbolInfo& s) {
  return std::to_string(s.symbol_id) + "@" + std::to_string(s.submap_id) + ":" +
         std::to_string(s.object.object_id);
}
std::string SubmapItem(const QXwSubmapInfo& s) {
  return std::to_string(s.submap_id) + "<" + std::to_string(s.parent_object_id);
}
std::string ObjectItem(const QXwObjectInfo& o) {
  return std::to_string(o.object_id) + ">" + std::to_string(o.child_submap_id);
}

void OnSymbols(void*, int code, QXwMapInfo* map, QXwSymbolList* list) {
  g_seen.push_back(Line(code, list, list->symbols, SymbolItem) + (map != nullptr ? "" : " no map"));
}
void OnSubmaps(void*, int code, QXwMapInfo*, QXwSubmapList* list) {
  g_seen.push_back(Line(code, list, list->submaps, SubmapItem));
}
void OnObjects(void* tag, int code, QXwMapInfo*, QXwObjectList* list) {
  g_seen.push_back(static_cast<const char*>(tag) +
                   (" " + Line(code, list, list->objects, ObjectItem)));
}
void OnMapOpen(void*, int code, QXwMapInfo* map, QXwFieldBindList* params) {
  g_seen.push_back(std::to_string(code) + " " + map->map_name +
                   (params == nullptr ? "" : " params"));
}
void OnMapClose(void*, int code, QXwMapInfo* map, time_t) {
  g_seen.push_back(std::to_string(code) + " " + (map != nullptr ? map->map_name : "no map"));
}

template <class Proc>
void Register(int code, Proc proc, QXwFieldBindList* filter = nullptr, const char* tag = "") {
  ASSERT_EQ(
      QXwAddCallback(code, filter, reinterpret_cast<QXwCallbackProc>(proc), const_cast<char*>(tag)),
      0);
}

// Handlers for the symbol, submap and map events (qxw-monitor's test has
// the others); object events have none.
class EventsTest : public skifftest::PlatformTest {
 protected:
  void SetUp() override {
    PlatformTest::SetUp();
    g_seen.clear();
    for (int code : {QXW_EVENT_SYMBOLS_HIDDEN, QXW_EVENT_SYMBOLS_UNHIDDEN, QXW_EVENT_SYMBOLS_STATUS,
                     QXW_EVENT_SYMBOLS_CREATED, QXW_EVENT_SYMBOLS_DELETED}) {
      Register(code, OnSymbols);
    }
    Register(QXW_EVENT_SUBMAPS_CREATED, OnSubmaps);
    Register(QXW_EVENT_SUBMAPS_DELETED, OnSubmaps);
    Register(QXW_EVENT_MAP_OPEN, OnMapOpen);
    Register(QXW_EVENT_MAP_CLOSE, OnMapClose);
  }
};

TEST_F(EventsTest, ListsInCreationOrderByPlaneAndApplication) {
  struct Case {
    QXwSubmapId submap;
    QXwPlaneType planes;
    const char* app;
    Ids ids;
  } cases[] = {
      {3, QXW_PLANE_ALL, nullptr, {103, 104, 105, 106, 107, 108}},
      {3, QXW_PLANE_ALL, "", {103, 104, 105, 106, 107, 108}},
      {3, QXW_PLANE_APPLICATION, nullptr, {103, 104, 106, 107, 108}},
      {3, QXW_PLANE_USER, nullptr, {105}},
      {3, QXW_PLANE_ALL, "IP Map", {103, 104, 106, 107}},
      {3, QXW_PLANE_APPLICATION, "Other App", {106, 108}},
      {3, QXW_PLANE_BASE, nullptr, {}},
      {5, QXW_PLANE_ALL, nullptr, {}},
      {99, QXW_PLANE_ALL, nullptr, {0}},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(Of(QXwListSymbols(map(), c.submap, c.planes, c.app)), c.ids)
        << c.submap << " " << c.planes << " " << (c.app ? c.app : "-");
  }
  EXPECT_EQ(QXwError(), QXW_ERR_NO_SUCH_SUBMAP);
  EXPECT_STREQ(QXwErrorMsg(QXwError()), "no such submap: 99");
}

TEST_F(EventsTest, PlatformChangesReportOnlyTheSymbolsThatChanged) {
  QXwSymbolId ids[] = {104, 103, 103};  // 104 is hidden already
  QXwSymbolIdList list{3, ids}, first{1, ids};
  ASSERT_EQ(QXwSetSymbolsVisibility(map(), &list, 1), 0);
  ASSERT_EQ(QXwSetSymbolsVisibility(map(), &first, 0), 0);
  QXwObjectId objects[] = {30, 31};
  QXwObjectIdList both{2, objects}, router{1, objects};
  ASSERT_EQ(QXwSetObjectAckState(map(), &both, 1), 0);
  ASSERT_EQ(_QXwUnmanageObjects(map(), &router), 0);
  ASSERT_EQ(_QXwUnmanageObjects(map(), &router), 0);  // nothing changes a second time
  ASSERT_EQ(_QXwManageObjects(map(), &router), 0);
  nlohmann::json dumped = ControlOk("dump")["map"]["objects"];
  EXPECT_EQ(dumped[2]["acknowledged"], true);
  EXPECT_EQ(dumped[3]["acknowledged"], true);
  EXPECT_EQ(dumped[2]["managed"], true);

  // Deleting 104 takes the connection to it; 103, placed after it, then
  // follows nothing.
  ASSERT_EQ(QXwDeleteSymbols(map(), &first), 0);
  skifftest::DeliverPending();
  EXPECT_EQ(g_seen,
            (std::vector<std::string>{"23 [103@3:30]", "24 [104@3:40]", "25 [102@2:30 103@3:30]",
                                      "25 [102@2:30 103@3:30]", "14 [104@3:40 107@3:60]"}));
  QXwSymbolList* left = QXwListSymbols(map(), 3, QXW_PLANE_ALL, nullptr);
  EXPECT_EQ(left->symbols[0].var_un.position.un.pred_symbol, 0u);
  EXPECT_EQ(Of(left), (Ids{103, 105, 106, 108}));
  QXwObjectInfo* host = QXwGetObjectInfo(map(), 40);
  EXPECT_EQ(host->num_symbols, 1);
  QXwFreeObjectInfo(host);
}

TEST_F(EventsTest, RefusedCommandsChangeNothing) {
  struct Case {
    const char* command;
    const char* error;
  } cases[] = {
      {"hide 103 999", "symbol 999 does not exist"},
      {"hide", "at least one id is needed"},
      {"hide x", "an id must be an integer, not \"x\""},
      {"status 3", "usage: status STATUS ID..."},
      {"move 104 1 5", "wrong number of arguments for move"},
      {"move 104 2 109", "pred 109 is not another symbol of submap 3"},
      {"move 104 2 103", "pred 103 would make a loop: 104 after 103 after 104"},
      {"move 104 2 107", "pred 107 is a connection"},
      {"normalize 104 2", "the flag must be 0 or 1, not \"2\""},
      {R"(create-symbol {"submap": 99, "object": 51, "variety": 1, "plane": 2})",
       "symbol 111: submap 99 does not exist"},
      {"create-symbol [1]", "the argument must be a JSON object"},
      {R"(create-submap {"parentObject": 40})", "object 40 already has child submap 4"},
      {R"(create-object {"id": 30})", "object 30 already exists"},
      {R"(create-object {"fields": {"Selection Name": "rtr1"}})",
       "object 71: selection name \"rtr1\" is already used by object 30"},
      {"set-field 30 \"No Field\" 1", "field \"No Field\" does not exist"},
      {"set-field 30 isNode maybe", "a boolean value is TRUE or FALSE, not \"maybe\""},
      {R"(create-object [{"fields": {"Selection Name": "x"}}, {"fields": {"Selection Name": "x"}}])",
       "selection name \"x\" is given twice"},
      {"create-object []", "no object was given"},
      {"open-map /nonexistent.json", "/nonexistent.json: cannot be read"},
      {"delete-objects 30 999", "object 999 does not exist"},
      {"frobnicate", "unknown command \"frobnicate\""},
      {"fail QXwInit x", "the code must be an integer, not \"x\""},
      {"fail QXwInit for 3", "QXwInit has no id argument"},
      {"fail QXwGetSubmapInfo times 2 1 3", "the count is given twice"},
      {"fail QXwGetSubmapInfo after 1 after 2", "\"after\" is given twice"},
      {"fail QXwFreeSymbolList", "QXwFreeSymbolList cannot fail"},
      {"fail QXwNothing", "unknown platform function \"QXwNothing\""},
      {"list-order permuted x", "the seed must be an integer, not \"x\""},
      {"lists empty odd", "\"odd\" is none of usual, empty, null, whole, partial"},
      {"order submap 99", "submap 99 does not exist"},
      {"hide \"103", "unterminated quoted word"},
  };
  std::string before = qxwemu::Control("dump");
  for (const Case& c : cases) {
    nlohmann::json reply = Control(c.command);
    EXPECT_EQ(reply["ok"], false) << c.command;
    EXPECT_EQ(reply["error"], c.error) << c.command;
  }
  EXPECT_EQ(qxwemu::Control("dump"), before);
  EXPECT_EQ(qxwemu::PendingEvents(), 0u);
}

TEST_F(EventsTest, SetFieldChangesTheDatabaseWithoutAnEvent) {
  ControlOk("set-field 30 \"IP Hostname\" core.example");
  ControlOk("set-field 30 vendor Globex");
  ControlOk("set-field 30 \"TopM Interface List\" [\"1 a 10.0.0.1 255.0.0.0 x\"]");
  EXPECT_EQ(QXwDbHostnameToObjectId("core.example"), 30u);
  nlohmann::json fields = ControlOk("dump")["map"]["objects"][2]["fields"];
  EXPECT_EQ(fields["vendor"], "Globex");
  EXPECT_EQ(fields["TopM Interface List"], nlohmann::json::array({"1 a 10.0.0.1 255.0.0.0 x"}));
  EXPECT_EQ(qxwemu::PendingEvents(), 0u);
}

TEST_F(EventsTest, ObjectsMadeTogetherComeInOneEventAndUnhandledEventsAreDropped) {
  ControlOk(R"(create-object {"id": 79})");  // with no handler for the code: dropped
  EXPECT_EQ(skifftest::DeliverPending(), 1);
  EXPECT_EQ(g_seen, std::vector<std::string>{});
  Register(QXW_EVENT_OBJECTS_CREATED, OnObjects, nullptr, "all");
  EXPECT_EQ(ControlOk(R"(create-object [{"fields": {"isInterface": true}}, {"id": 90},
                                        {"fields": {"isInterface": true}}])")["ids"],
            nlohmann::json::array({80, 90, 81}));
  skifftest::DeliverPending();
  EXPECT_EQ(g_seen, std::vector<std::string>{"all 18 [80>0 90>0 81>0]"});
}

// Each command on the map as loaded: the events it makes, in order, and the
// submaps left.
TEST_F(EventsTest, CommandsReportEverythingTheyChangeInDependencyOrder) {
  struct Case {
    const char* command;
    std::vector<std::string> events;
    std::vector<unsigned> submapsLeft = {1, 2, 3, 4, 5};
  } cases[] = {
      {R"(create-symbol {"submap": 3, "object": 51, "variety": 1, "plane": 2})", {"17 [111@3:51]"}},
      {"delete-objects 70 10",
       {"14 [100@1:10 101@2:20 102@2:30]", "16 [2<10]", "all 15 [70>0 10>2]"},
       {1, 3, 4, 5}},
      {"delete-objects 30 30", {"14 [102@2:30 103@3:30 107@3:60]", "all 15 [30>0]"}},
      {"delete-objects 51", {"all 15 [51>0]"}},
      {"delete-submaps 5 4 5", {"14 [109@4:41 110@4:42]", "16 [5<0 4<40]"}, {1, 2, 3}},
      {"delete-submaps 2", {"14 [101@2:20 102@2:30]", "16 [2<10]"}, {1, 3, 4, 5}},
  };
  Register(QXW_EVENT_OBJECTS_DELETED, OnObjects, nullptr, "all");
  const std::string path = skifftest::WriteTempFile(skifftest::TestMap("platform.json"));
  for (const Case& c : cases) {
    SCOPED_TRACE(c.command);
    ControlOk("open-map " + path);
    skifftest::DeliverPending();
    g_seen.clear();
    ControlOk(c.command);
    EXPECT_EQ(skifftest::DeliverPending(), static_cast<int>(c.events.size()));
    EXPECT_EQ(g_seen, c.events);
    std::vector<unsigned> submapsLeft;
    nlohmann::json submaps = ControlOk("dump")["map"]["submaps"];
    for (const nlohmann::json& s : submaps) submapsLeft.push_back(s["id"]);
    EXPECT_EQ(submapsLeft, c.submapsLeft);
  }
  std::remove(path.c_str());
}

TEST_F(EventsTest, InputsAndCommandsFromAnotherThreadAreServedByTheLoop) {
  // The other thread is started by an input handler, that is from inside
  // QXwProcessEvent, and the handler returns only once the command waits for
  // the loop: so the command cannot be applied on the other thread.
  struct Inside {
    int fd = -1;
    std::thread other;
    std::string reply;
  } inside;
  auto handler = [](int fd, void* data) {
    char byte;
    ASSERT_EQ(read(fd, &byte, 1), 1);
    auto* in = static_cast<Inside*>(data);
    in->fd = fd;
    in->other = std::thread([in] { in->reply = qxwemu::Control("hide 103"); });
    qxwemu::AwaitPendingCommands(1);
  };
  int fds[2];
  ASSERT_EQ(pipe(fds), 0);
  QXwInputId input = QXwAddInput(fds[0], QXW_INPUT_READABLE, handler, &inside);
  ASSERT_NE(input, 0u);
  ASSERT_EQ(write(fds[1], "x", 1), 1);
  EXPECT_EQ(QXwProcessEvent(), 0);  // the handler hands the command over
  EXPECT_EQ(inside.fd, fds[0]);
  EXPECT_EQ(QXwProcessEvent(), 0);  // applies the command
  EXPECT_EQ(QXwProcessEvent(), 0);  // delivers its event
  ASSERT_TRUE(inside.other.joinable());
  inside.other.join();
  EXPECT_EQ(inside.reply, "{\"ok\":true}");
  EXPECT_EQ(g_seen, std::vector<std::string>{"23 [103@3:30]"});
  EXPECT_EQ(QXwRemoveInput(input), 0);
  EXPECT_NE(QXwRemoveInput(input), 0);
  close(fds[0]);
  close(fds[1]);
}

TEST_F(EventsTest, AClosedMapKeepsItsDatabaseAndAnEndedSessionDeliversNoEvents) {
  ControlOk("close-map");
  ControlOk("close-map");
  skifftest::DeliverPending();
  EXPECT_EQ(g_seen, (std::vector<std::string>{"4 test campus", "4 no map"}));
  EXPECT_EQ(QXwDbSelectionNameToObjectId("rtr1"), 30u);  // the database stays
  ControlOk("end-session");
  EXPECT_EQ(skifftest::DeliverPending(), 1);
  EXPECT_LT(QXwProcessEvent(), 0);  // once the end is delivered, the loop delivers nothing more
}

TEST(SessionTest, AFailedInitLeavesNoSessionAndAnOpenOneRefusesAnother) {
  setenv("QXW_INIT_ERROR", "77", 1);
  EXPECT_NE(QXwInit(), 0);
  EXPECT_EQ(QXwError(), 77);
  EXPECT_LT(QXwProcessEvent(), 0);
  unsetenv("QXW_INIT_ERROR");

  skifftest::PlatformSession session;
  ASSERT_TRUE(session.ok()) << session.error();
  EXPECT_STREQ(session.map()->map_name, "campus");
  EXPECT_NE(QXwInit(), 0);
  EXPECT_EQ(QXwError(), QXW_ERR_SESSION_OPEN);
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

}  // namespace
