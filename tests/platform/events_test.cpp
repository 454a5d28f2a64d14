// The event loop: events from control commands and from the platform's own
// changes, one per QXwProcessEvent, each in its handler's form; filters,
// input descriptors, and commands from other threads.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "emulator/qxwemu.h"
#include "platform/qxw.h"
#include "platform/qxwdb.h"
#include "tests/support/platform_session.h"

namespace {

using skifftest::ControlOk;

std::vector<std::string> g_seen;

std::string Join(const std::vector<unsigned>& ids) {
  std::string s = "[";
  for (size_t i = 0; i < ids.size(); ++i) s += (i ? " " : "") + std::to_string(ids[i]);
  return s + "]";
}

void OnSymbols(void*, int code, QXwMapInfo* map, QXwSymbolList* list) {
  std::vector<unsigned> ids;
  for (int i = 0; i < list->count; ++i) ids.push_back(list->symbols[i].symbol_id);
  g_seen.push_back(std::to_string(code) + " " + Join(ids) + (map != nullptr ? "" : " no map"));
}
void OnMoved(void*, int code, QXwMapInfo*, QXwSymbolInfo* s) {
  if (s->symbol_variety == QXW_SYMBOL_CONNECTION) {
    g_seen.push_back(std::to_string(code) + " " + std::to_string(s->symbol_id) + " connection");
    return;
  }
  const QXwSymbolPosition& p = s->var_un.position;
  g_seen.push_back(std::to_string(code) + " " + std::to_string(s->symbol_id) + " placement " +
                   std::to_string(p.placement) + " " + std::to_string(p.un.coords.x) + "," +
                   std::to_string(p.un.coords.y));
}
void OnNormalize(void*, int code, QXwMapInfo*, QXwSymbolInfo* s, QXwBoolean on) {
  g_seen.push_back(std::to_string(code) + " " + std::to_string(s->symbol_id) + " " +
                   std::to_string(on));
}
void OnSubmaps(void*, int code, QXwMapInfo*, QXwSubmapList* list) {
  std::vector<unsigned> ids;
  for (int i = 0; i < list->count; ++i) ids.push_back(list->submaps[i].submap_id);
  g_seen.push_back(std::to_string(code) + " " + Join(ids));
}
void OnSubmap(void*, int code, QXwMapInfo*, QXwSubmapInfo* s) {
  g_seen.push_back(std::to_string(code) + " " + std::to_string(s->submap_id) + " " +
                   std::to_string(s->layout_on));
}
void OnObjects(void* tag, int code, QXwMapInfo*, QXwObjectList* list) {
  std::vector<unsigned> ids;
  for (int i = 0; i < list->count; ++i) ids.push_back(list->objects[i].object_id);
  g_seen.push_back(std::string(static_cast<const char*>(tag)) + " " + std::to_string(code) + " " +
                   Join(ids));
}
void OnMapOpen(void*, int code, QXwMapInfo* map, QXwFieldBindList* params) {
  g_seen.push_back(std::to_string(code) + " " + map->map_name +
                   (params == nullptr ? "" : " params"));
}
void OnMapClose(void*, int code, QXwMapInfo* map, time_t) {
  g_seen.push_back(std::to_string(code) + " " + (map != nullptr ? map->map_name : "no map"));
}
void OnEnd(void*, int code, QXwBoolean normal) {
  g_seen.push_back(std::to_string(code) + " " + std::to_string(normal));
}

template <class Proc>
void Register(int code, Proc proc, QXwFieldBindList* filter = nullptr, const char* tag = "") {
  ASSERT_EQ(
      QXwAddCallback(code, filter, reinterpret_cast<QXwCallbackProc>(proc), const_cast<char*>(tag)),
      0);
}

class EventsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(session_.ok()) << session_.error();
    g_seen.clear();
    for (int code : {QXW_EVENT_SYMBOLS_HIDDEN, QXW_EVENT_SYMBOLS_UNHIDDEN, QXW_EVENT_SYMBOLS_STATUS,
                     QXW_EVENT_SYMBOLS_CREATED, QXW_EVENT_SYMBOLS_DELETED}) {
      Register(code, OnSymbols);
    }
    Register(QXW_EVENT_SYMBOL_MOVED, OnMoved);
    Register(QXW_EVENT_SYMBOL_NORMALIZE, OnNormalize);
    Register(QXW_EVENT_SUBMAPS_CREATED, OnSubmaps);
    Register(QXW_EVENT_SUBMAPS_DELETED, OnSubmaps);
    Register(QXW_EVENT_SUBMAP_AUTOLAYOUT, OnSubmap);
    Register(QXW_EVENT_MAP_OPEN, OnMapOpen);
    Register(QXW_EVENT_MAP_CLOSE, OnMapClose);
    Register(QXW_EVENT_END_SESSION, OnEnd);
  }

  skifftest::PlatformSession session_{skifftest::TestMap("platform.json")};
};

TEST_F(EventsTest, CommandsMakeOneEventEachInTheirHandlersForm) {
  const char* commands[] = {
      "hide 103 105",
      "unhide 104",
      "status 3 104 103",
      "move 104 1 50 60",
      "move 107 1 0 0",
      "normalize 104 1",
      R"(create-symbol {"submap": 3, "object": 51, "variety": 1, "plane": 2})",
      "delete-symbols 104",
      R"(create-submap {"name": "New", "parentObject": 51})",
      "autolayout 3 0",
      "delete-submaps 5",
      "close-map",
      "close-map",
      "open-map",
      "end-session"};
  for (const char* c : commands) ControlOk(c);
  EXPECT_EQ(skifftest::DeliverPending(), 15);
  EXPECT_EQ(g_seen, (std::vector<std::string>{
                        "23 [103 105]", "24 [104]", "25 [104 103]", "20 104 placement 1 50,60",
                        "20 107 connection", "39 104 1", "17 [111]", "14 [104 107]", "19 [6]",
                        "40 3 0", "16 [5]", "4 test campus", "4 no map", "3 campus", "1 1"}));
  // After the end of the session is delivered the loop delivers nothing more.
  EXPECT_LT(QXwProcessEvent(), 0);
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
      {"normalize 104 2", "the flag must be 0 or 1, not \"2\""},
      {R"(create-symbol {"submap": 99, "object": 51, "variety": 1, "plane": 2})",
       "symbol 111: submap 99 does not exist"},
      {R"(create-symbol {"id": 120, "submap": 3, "object": 60, "variety": 2, "plane": 2,
                         "endpoint1": 120, "endpoint2": 103})",
       "symbol 120: endpoint 120 is the connection itself"},
      {R"(create-symbol {"submap": 3, "object": 60, "variety": 2, "plane": 2,
                         "endpoint1": 103, "endpoint2": 109})",
       "symbol 111: endpoint 109 lies on another submap"},
      {"move 104 2 107", "pred 107 is a connection"},
      {R"(create-symbol {"submap": 3, "object": 51, "variety": 1, "plane": 2,
                         "placement": 2, "pred": 107})",
       "symbol 111: pred 107 is a connection"},
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
      {"hide \"103", "unterminated quoted word"},
  };
  std::string before = qxwemu::Control("dump");
  for (const Case& c : cases) {
    nlohmann::json reply = skifftest::Control(c.command);
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

TEST_F(EventsTest, ObjectEventsReachEachHandlerThroughItsFilter) {
  QXwFieldValue yes{};
  yes.field_type = QXW_FIELD_BOOLEAN;
  yes.un.bool_val = 1;
  QXwFieldBinding binding{QXwDbFieldNameToFieldId("isInterface"), &yes};
  QXwFieldBindList filter{1, &binding};
  for (int code : {QXW_EVENT_OBJECTS_CREATED, QXW_EVENT_OBJECTS_DELETED}) {
    Register(code, OnObjects, &filter, "interfaces");
    Register(code, OnObjects, nullptr, "all");
  }
  ControlOk(R"(create-object {"id": 80, "fields": {"isInterface": true, "TopM Node ID": 40}})");
  ControlOk(R"(create-object {"id": 81, "fields": {"isNode": true}})");
  ControlOk("delete-objects 41 30 42");
  // Several objects made together come in one event.
  EXPECT_EQ(ControlOk(R"(create-object [{"fields": {"isInterface": true}}, {"id": 90},
                                        {"fields": {"isInterface": true}}])")["ids"],
            nlohmann::json::array({82, 90, 83}));
  skifftest::DeliverPending();
  EXPECT_EQ(g_seen, (std::vector<std::string>{"interfaces 18 [80]", "all 18 [80]", "all 18 [81]",
                                              "14 [109 102 103 110 107]", "interfaces 15 [41 42]",
                                              "all 15 [41 30 42]", "interfaces 18 [82 83]",
                                              "all 18 [82 90 83]"}));
}

// Deleted items as the deletion events carry them: symbols as
// "id@submap:object", submaps as "id<parent object", objects as
// "id>child submap".
void OnDeletedSymbols(void*, int code, QXwMapInfo*, QXwSymbolList* list) {
  std::string line = std::to_string(code);
  for (int i = 0; i < list->count; ++i) {
    const QXwSymbolInfo& s = list->symbols[i];
    line += " " + std::to_string(s.symbol_id) + "@" + std::to_string(s.submap_id) + ":" +
            std::to_string(s.object.object_id);
  }
  g_seen.push_back(line);
}
void OnDeletedSubmaps(void*, int code, QXwMapInfo*, QXwSubmapList* list) {
  std::string line = std::to_string(code);
  for (int i = 0; i < list->count; ++i) {
    line += " " + std::to_string(list->submaps[i].submap_id) + "<" +
            std::to_string(list->submaps[i].parent_object_id);
  }
  g_seen.push_back(line);
}
void OnDeletedObjects(void*, int code, QXwMapInfo*, QXwObjectList* list) {
  std::string line = std::to_string(code);
  for (int i = 0; i < list->count; ++i) {
    line += " " + std::to_string(list->objects[i].object_id) + ">" +
            std::to_string(list->objects[i].child_submap_id);
  }
  g_seen.push_back(line);
}

TEST(DeletionEventsTest, DeletionsReportEverythingTheyTakeInDependencyOrder) {
  struct Case {
    const char* command;
    std::vector<std::string> events;
    std::vector<unsigned> submapsLeft;
  } cases[] = {
      // Its symbols, its child submap with the symbols there (of other
      // objects, which stay), and the connection to one of its symbols.
      {"delete-objects 40",
       {"14 104@3:40 105@3:40 109@4:41 110@4:42 107@3:60", "16 4<40", "15 40>4"},
       {1, 2, 3, 5}},
      {"delete-objects 70 10",
       {"14 100@1:10 101@2:20 102@2:30", "16 2<10", "15 70>0 10>2"},
       {1, 3, 4, 5}},
      {"delete-objects 30 30", {"14 102@2:30 103@3:30 107@3:60", "15 30>0"}, {1, 2, 3, 4, 5}},
      {"delete-objects 51", {"15 51>0"}, {1, 2, 3, 4, 5}},
      {"delete-submaps 4", {"14 109@4:41 110@4:42", "16 4<40"}, {1, 2, 3, 5}},
      {"delete-submaps 5 4 5", {"14 109@4:41 110@4:42", "16 5<0 4<40"}, {1, 2, 3}},
      {"delete-submaps 2", {"14 101@2:20 102@2:30", "16 2<10"}, {1, 3, 4, 5}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.command);
    skifftest::PlatformSession session(skifftest::TestMap("platform.json"));
    ASSERT_TRUE(session.ok()) << session.error();
    Register(QXW_EVENT_SYMBOLS_DELETED, OnDeletedSymbols);
    Register(QXW_EVENT_SUBMAPS_DELETED, OnDeletedSubmaps);
    Register(QXW_EVENT_OBJECTS_DELETED, OnDeletedObjects);
    g_seen.clear();
    ControlOk(c.command);
    skifftest::DeliverPending();
    EXPECT_EQ(g_seen, c.events);
    nlohmann::json map = ControlOk("dump")["map"];
    std::vector<unsigned> submapsLeft;
    for (const nlohmann::json& s : map["submaps"]) submapsLeft.push_back(s["id"]);
    EXPECT_EQ(submapsLeft, c.submapsLeft);
  }
}

TEST_F(EventsTest, EventsWithoutHandlersAreDropped) {
  ControlOk(R"(create-object {"id": 80})");  // no handler for objects created
  ControlOk("hide 103");
  EXPECT_EQ(skifftest::DeliverPending(), 2);
  EXPECT_EQ(g_seen, std::vector<std::string>{"23 [103]"});
}

TEST_F(EventsTest, ReadableInputsCallTheirHandler) {
  int fds[2];
  ASSERT_EQ(pipe(fds), 0);
  static int calledWith = -1;
  static void* userData = nullptr;
  auto handler = [](int fd, void* ud) {
    char byte;
    ASSERT_EQ(read(fd, &byte, 1), 1);
    calledWith = fd;
    userData = ud;
  };
  int tag = 0;
  QXwInputId id = QXwAddInput(fds[0], QXW_INPUT_READABLE, handler, &tag);
  ASSERT_NE(id, 0u);
  ASSERT_EQ(write(fds[1], "x", 1), 1);
  EXPECT_EQ(QXwProcessEvent(), 0);
  EXPECT_EQ(calledWith, fds[0]);
  EXPECT_EQ(userData, &tag);
  EXPECT_EQ(QXwRemoveInput(id), 0);
  EXPECT_NE(QXwRemoveInput(id), 0);
  close(fds[0]);
  close(fds[1]);
}

TEST_F(EventsTest, CommandsFromAnotherThreadWaitForTheLoop) {
  // The other thread is started by an input handler, that is from inside
  // QXwProcessEvent, and the handler returns only once the command waits for
  // the loop: so the command cannot be applied on the other thread.
  struct Inside {
    std::thread other;
    std::string reply;
  } inside;
  auto handler = [](int fd, void* data) {
    char byte;
    ASSERT_EQ(read(fd, &byte, 1), 1);
    auto* in = static_cast<Inside*>(data);
    in->other = std::thread([in] { in->reply = qxwemu::Control("hide 103"); });
    qxwemu::AwaitPendingCommands(1);
  };
  int fds[2];
  ASSERT_EQ(pipe(fds), 0);
  QXwInputId input = QXwAddInput(fds[0], QXW_INPUT_READABLE, handler, &inside);
  ASSERT_EQ(write(fds[1], "x", 1), 1);
  EXPECT_EQ(QXwProcessEvent(), 0);  // the handler hands the command over
  EXPECT_EQ(QXwProcessEvent(), 0);  // applies the command
  EXPECT_EQ(QXwProcessEvent(), 0);  // delivers its event
  ASSERT_TRUE(inside.other.joinable());
  inside.other.join();
  EXPECT_EQ(inside.reply, "{\"ok\":true}");
  EXPECT_EQ(g_seen, std::vector<std::string>{"23 [103]"});
  QXwRemoveInput(input);
  close(fds[0]);
  close(fds[1]);
}

TEST_F(EventsTest, AClosedMapServesNoContents) {
  ControlOk("close-map");
  skifftest::DeliverPending();
  EXPECT_EQ(QXwGetMapInfo(), nullptr);
  EXPECT_EQ(QXwListSymbols(session_.map(), 3, QXW_PLANE_ALL, nullptr), nullptr);
  EXPECT_EQ(QXwError(), QXW_ERR_NO_MAP);
  EXPECT_EQ(QXwDbSelectionNameToObjectId("rtr1"), 30u);  // the database stays
}

TEST(SessionTest, InitErrorsAndANewSessionAfterDone) {
  setenv("QXW_INIT_ERROR", "77", 1);
  EXPECT_NE(QXwInit(), 0);
  EXPECT_EQ(QXwError(), 77);
  EXPECT_STREQ(QXwErrorMsg(77), "unknown error 77");
  EXPECT_LT(QXwProcessEvent(), 0);

  setenv("QXW_INIT_ERROR", "2", 1);
  EXPECT_NE(QXwInit(), 0);
  EXPECT_EQ(QXwError(), QXW_ERR_NO_MAP_INFO);
  EXPECT_EQ(QXwGetMapInfo(), nullptr);
  EXPECT_NE(QXwAddCallback(QXW_EVENT_MAP_OPEN, nullptr,
                           reinterpret_cast<QXwCallbackProc>(OnMapOpen), nullptr),
            -1);
  g_seen.clear();
  ControlOk("open-map");
  skifftest::DeliverPending();
  EXPECT_EQ(g_seen, std::vector<std::string>{"3 campus"});
  EXPECT_EQ(QXwDone(), 0);
  unsetenv("QXW_INIT_ERROR");

  skifftest::PlatformSession again;
  ASSERT_TRUE(again.ok()) << again.error();
  EXPECT_STREQ(again.map()->map_name, "campus");
  EXPECT_NE(QXwInit(), 0);
  EXPECT_EQ(QXwError(), QXW_ERR_SESSION_OPEN);
}

}  // namespace
