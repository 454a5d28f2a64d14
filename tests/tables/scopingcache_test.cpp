// The scoping cache resolves each name and child submap once per session,
// forgets what the map no longer has, and closes safely.
#include "tables/scopingcache.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/qxw.h"
#include "tests/support/platform_session.h"
#include "tests/tables/tablesmap.h"

namespace {

using skifftest::Calls;
using skifftest::ControlOk;

class ScopingCacheTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(session_.ok()) << session_.error();
    ScopingCache::OpenScopeCache();
    skifftest::ResetCalls();
  }
  void TearDown() override { ScopingCache::CloseScopeCache(); }
  QXwSubmapId Child(const char* name) {
    return ScopingCache::GetChildSubmapId(session_.map(), name);
  }
  // Deletes the submap from the map and tells the cache, as the submap
  // deletion handler does.
  void DeleteSubmap(QXwSubmapId submapId) {
    QXwSubmapInfo* info = QXwGetSubmapInfo(session_.map(), submapId);
    ASSERT_NE(info, nullptr);
    ControlOk("delete-submaps " + std::to_string(submapId));
    ScopingCache::SubmapHasBeenDeleted(info);
    QXwFreeSubmapInfo(info);
  }

  skifftest::PlatformSession session_{skifftest::kTablesMap};
};

TEST_F(ScopingCacheTest, ResolvesNamesAndChildSubmapsOncePerSession) {
  struct Case {
    const char* name;
    QXwSubmapId child;
    uint64_t nameLookups, objectLookups;  // platform calls for three calls
  } cases[] = {
      {"IP Internet", 2, 1, 1},
      {"leaf", 0, 1, 3},    // no child submap: nothing stored for the object
      {"nobody", 0, 3, 0},  // unknown name: asked again every time
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    skifftest::ResetCalls();
    for (int i = 0; i < 3; ++i) EXPECT_EQ(Child(c.name), c.child);
    EXPECT_EQ(Calls("QXwDbSelectionNameToObjectId"), c.nameLookups);
    EXPECT_EQ(Calls("QXwGetObjectInfo"), c.objectLookups);
  }
}

TEST_F(ScopingCacheTest, ForgetsADeletedSubmapAndFindsItsSuccessor) {
  EXPECT_EQ(Child("net1"), 3u);
  DeleteSubmap(3);
  EXPECT_EQ(Child("net1"), 0u);
  QXwSubmapId successor =
      ControlOk(R"(create-submap {"name": "net1 again", "parentObject": 20})")["id"];
  EXPECT_EQ(Child("net1"), successor);
  EXPECT_EQ(Child("net1"), successor);
  EXPECT_EQ(Calls("QXwDbSelectionNameToObjectId"), 1u);
  EXPECT_EQ(Calls("QXwGetObjectInfo"), 3u);
}

TEST_F(ScopingCacheTest, ForgetsADeletedObjectAndFindsTheNewObjectOfItsName) {
  EXPECT_EQ(Child("spare"), 0u);
  ControlOk("delete-objects 60");
  EXPECT_EQ(Child("spare"), 0u);  // the cached id no longer exists: the name is forgotten
  EXPECT_EQ(Calls("QXwDbSelectionNameToObjectId"), 1u);
  EXPECT_EQ(Child("spare"), 0u);
  EXPECT_EQ(Calls("QXwDbSelectionNameToObjectId"), 2u);
  ControlOk(R"(create-object {"id": 61, "childSubmap": 5, "fields": {"Selection Name": "spare"}})");
  EXPECT_EQ(Child("spare"), 5u);
  EXPECT_EQ(ScopingCache::MapSelectionNameToObjectId("spare"), 61u);
}

TEST_F(ScopingCacheTest, CloseTwiceOrWithoutOpenIsHarmlessAndReopenStartsEmpty) {
  EXPECT_EQ(Child("IP Internet"), 2u);
  ScopingCache::CloseScopeCache();
  ScopingCache::CloseScopeCache();
  EXPECT_EQ(Child("IP Internet"), 0u);  // closed: answers 0 and asks nothing
  EXPECT_EQ(Calls("QXwDbSelectionNameToObjectId"), 1u);
  ScopingCache::OpenScopeCache();
  EXPECT_EQ(Child("IP Internet"), 2u);
  EXPECT_EQ(Calls("QXwDbSelectionNameToObjectId"), 2u);
}

}  // namespace
