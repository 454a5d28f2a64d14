// What the platform does when a caller or the test makes it fail: failures
// injected by the fail command, by call number and by id argument, and
// records released the wrong way.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/platform/platform_test.h"

namespace {

using skifftest::ControlOk;

class FailuresTest : public skifftest::PlatformTest {};

// Which calls fail, by call number and by id argument: "x" for a call that
// fails (with the code given, else 1), "." for one that succeeds. Calls that
// fail are counted as well.
TEST_F(FailuresTest, InjectedFailuresChooseTheirCallsFailAsTheFunctionDoesAndAreCounted) {
  struct Case {
    const char* command;
    std::vector<QXwSubmapId> calls;
    const char* failed;
    int code = 1;
  } cases[] = {
      {"fail QXwGetSubmapInfo 6 2", {3, 3, 3}, "xx.", 6},
      {"fail QXwGetSubmapInfo", {1, 2, 3}, "xxx"},
      {"fail QXwGetSubmapInfo after 2 times 2", {1, 1, 1, 1, 1, 1}, "..xx.."},
      {"fail QXwGetSubmapInfo after 1", {1, 2, 3}, ".xx"},
      {"fail QXwGetSubmapInfo for 3", {1, 3, 2, 3}, ".x.x"},
      {"fail QXwGetSubmapInfo for 3 after 1 times 1 7", {3, 1, 3, 3}, "..x.", 7},
  };
  skifftest::ResetCalls();
  uint64_t calls = 0, succeeded = 0;
  for (const Case& c : cases) {
    ControlOk(c.command);
    std::string failed;
    for (QXwSubmapId id : c.calls) {
      QXwSubmapInfo* info = QXwGetSubmapInfo(map(), id);
      failed += info == nullptr ? "x" : ".";
      if (info == nullptr) {
        EXPECT_EQ(QXwError(), c.code) << c.command;
      } else {
        QXwFreeSubmapInfo(info);
        ++succeeded;
      }
    }
    calls += c.calls.size();
    EXPECT_EQ(failed, c.failed) << c.command;
    ControlOk("fail QXwGetSubmapInfo off");
  }
  EXPECT_EQ(skifftest::Calls("QXwGetSubmapInfo"), calls);
  EXPECT_EQ(skifftest::Calls("QXwFreeSubmapInfo"), succeeded);
  EXPECT_EQ(skifftest::Calls("QXwListSymbols"), 0u);
  EXPECT_STREQ(QXwErrorMsg(6), "no such submap");

  // An id in a list argument, or a field id in a binding, counts too.
  ControlOk("fail QXwSetSymbolsVisibility for 104");
  QXwSymbolId ids[] = {103, 104};
  QXwSymbolIdList first{1, ids}, both{2, ids};
  EXPECT_EQ(QXwSetSymbolsVisibility(map(), &first, 1), 0);
  EXPECT_EQ(QXwSetSymbolsVisibility(map(), &both, 1), -1);
  EXPECT_STREQ(QXwErrorMsg(QXwError()), "the operation failed");
  ControlOk("fail QXwSetSymbolsVisibility off");
  EXPECT_EQ(QXwSetSymbolsVisibility(map(), &both, 1), 0);
  QXwFieldValue yes = skifftest::Value(QXW_FIELD_BOOLEAN, 1);
  QXwFieldBinding isNode{Field("isNode"), &yes};
  ControlOk("fail QXwDbListObjectsByFieldValue for " + std::to_string(isNode.field_id));
  EXPECT_EQ(QXwDbListObjectsByFieldValue(&isNode), nullptr);
  ControlOk("fail QXwAddInput 1 1");
  QXwInputProc ignore = [](int, void*) {};
  EXPECT_EQ(QXwAddInput(0, QXW_INPUT_READABLE, ignore, nullptr), 0u);
}

TEST_F(FailuresTest, ARecordReleasedTwiceOrByAnotherTypesFreeFunctionStopsTheProcess) {
  QXwSubmapInfo* info = QXwGetSubmapInfo(map(), 1);
  QXwFreeSubmapInfo(info);
  EXPECT_DEATH(QXwFreeSubmapInfo(info), "");
  // Lists of the same shape ({count, items}) too: the record's type tells.
  struct Case {
    void (*wrong)(QXwMapInfo* map);
    const char* message;
  } cases[] = {
      {[](QXwMapInfo* m) {
         QXwDbFreeObjectIdList(
             reinterpret_cast<QXwObjectIdList*>(QXwListSymbols(m, 3, QXW_PLANE_ALL, nullptr)));
       },
       "a QXwSymbolList was released as a QXwObjectIdList"},
      {[](QXwMapInfo* m) {
         QXwFreeSubmapInfo(reinterpret_cast<QXwSubmapInfo*>(QXwGetObjectInfo(m, 30)));
       },
       "a QXwObjectInfo was released as a QXwSubmapInfo"},
      {[](QXwMapInfo*) {
         QXwDbFreeFieldList(reinterpret_cast<QXwFieldList*>(QXwDbGetFieldValues(30)));
       },
       "a QXwFieldBindList was released as a QXwFieldList"},
  };
  for (const Case& c : cases) EXPECT_DEATH(c.wrong(map()), c.message);
}

}  // namespace
