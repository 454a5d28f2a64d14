// The caching keyed tables ask the platform once per key, never cache a
// failed answer, and free what they cached exactly once.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tables/childsubmapidhashtable.h"
#include "tables/submapinfohashtable.h"
#include "tables/symbolinfohashtables.h"
#include "tests/support/platform_session.h"
#include "tests/tables/tablesmap.h"

namespace {

using skifftest::Calls;
using skifftest::ControlOk;

class CachingTablesTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(session_.ok()) << session_.error();
    skifftest::ResetCalls();
  }
  QXwMapInfo* map() { return session_.map(); }

  // Looks up `key` (one injected failure first), `key` twice more and the
  // unknown `missingKey` twice: the platform is asked on the failure, once for
  // `key` and every time for `missingKey`; destroying the table frees the one
  // cached record.
  template <class Table, class Lookup>
  void CheckAsksOncePerKey(const std::string& fetch, const std::string& release, uint32_t key,
                           uint32_t missingKey, Lookup lookup) {
    SCOPED_TRACE(fetch);
    skifftest::ResetCalls();
    {
      Table table;
      ControlOk("fail " + fetch + " 1 1");
      EXPECT_EQ(lookup(table, key), nullptr);
      const void* first = lookup(table, key);
      ASSERT_NE(first, nullptr);
      EXPECT_EQ(lookup(table, key), first);
      EXPECT_EQ(Calls(fetch), 2u);
      EXPECT_EQ(lookup(table, missingKey), nullptr);
      EXPECT_EQ(lookup(table, missingKey), nullptr);
      EXPECT_EQ(Calls(fetch), 4u);
      EXPECT_EQ(Calls(release), 0u);
    }
    EXPECT_EQ(Calls(release), 1u);
  }

  skifftest::PlatformSession session_{skifftest::kTablesMap};
};

TEST_F(CachingTablesTest, RecordCachesAskOncePerKeyAndFreeOnce) {
  std::vector<int> wasCached;  // as the submap information table reports it
  CheckAsksOncePerKey<QXwSubmapInfoHashtable>(
      "QXwGetSubmapInfo", "QXwFreeSubmapInfo", 2, 99, [&](QXwSubmapInfoHashtable& t, uint32_t id) {
        return t.GetSubmapInfo(map(), id, wasCached.emplace_back(-1));
      });
  EXPECT_EQ(wasCached, (std::vector<int>{0, 0, 1, 0, 0}));
  CheckAsksOncePerKey<ObjectSymbolInfoHashtable>(
      "QXwGetSymbolsByObject", "QXwFreeSymbolList", 50, 99,
      [&](ObjectSymbolInfoHashtable& t, uint32_t id) { return t.GetSymbolList(map(), id); });
  CheckAsksOncePerKey<SubmapSymbolInfoHashtable>(
      "QXwListSymbols", "QXwFreeSymbolList", 2, 99, [&](SubmapSymbolInfoHashtable& t, uint32_t id) {
        return t.GetSymbolList(map(), id, QXW_PLANE_ALL, nullptr);
      });
}

TEST_F(CachingTablesTest, SubmapSymbolsAreKeyedBySubmapAlone) {
  SubmapSymbolInfoHashtable table;
  QXwSymbolList* userPlane = table.GetSymbolList(map(), 2, QXW_PLANE_USER, nullptr);
  ASSERT_NE(userPlane, nullptr);
  EXPECT_EQ(userPlane->count, 0);
  EXPECT_EQ(table.GetSymbolList(map(), 2, QXW_PLANE_ALL, nullptr), userPlane);
  EXPECT_EQ(Calls("QXwListSymbols"), 1u);
}

TEST_F(CachingTablesTest, ChildSubmapIdCachesOnlyNonZeroAnswers) {
  QXwChildSubmapIdHashtable table;
  struct Case {
    QXwObjectId object;
    QXwSubmapId child;
    uint64_t platformCallsForThree;
  } cases[] = {
      {10, 2, 1},   // a child submap: asked once
      {50, 0, 3},   // no child submap: the stored 0 reads as a miss
      {999, 0, 3},  // unknown object: nothing stored
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.object);
    skifftest::ResetCalls();
    for (int i = 0; i < 3; ++i) EXPECT_EQ(table.GetChildSubmapId(map(), c.object), c.child);
    EXPECT_EQ(Calls("QXwGetObjectInfo"), c.platformCallsForThree);
    EXPECT_EQ(Calls("QXwFreeObjectInfo"), c.object == 999 ? 0u : c.platformCallsForThree);
  }
}

}  // namespace
