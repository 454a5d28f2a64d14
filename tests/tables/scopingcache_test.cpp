// The scoping cache forgets the name of an object the map no longer has.
// That it resolves each name and child submap once per session, forgets a
// deleted submap and closes safely is the Java tests' (location scoping, map
// events and map sessions fail without it).
#include "tables/scopingcache.h"

#include <gtest/gtest.h>

#include "platform/qxw.h"
#include "tests/support/platform_session.h"
#include "tests/tables/tablesmap.h"

namespace {

TEST(ScopingCacheTest, ForgetsADeletedObjectAndFindsTheNewObjectOfItsName) {
  skifftest::PlatformSession session(skifftest::kTablesMap);
  ASSERT_TRUE(session.ok()) << session.error();
  ScopingCache::OpenScopeCache();
  skifftest::ResetCalls();
  auto spare = [&] { return ScopingCache::GetChildSubmapId(session.map(), "spare"); };
  auto nameLookups = [] { return skifftest::Calls("QXwDbSelectionNameToObjectId"); };
  EXPECT_EQ(spare(), 0u);
  skifftest::ControlOk("delete-objects 60");
  EXPECT_EQ(spare(), 0u);  // the cached id no longer exists: the name is forgotten
  EXPECT_EQ(nameLookups(), 1u);
  EXPECT_EQ(spare(), 0u);
  EXPECT_EQ(nameLookups(), 2u);
  skifftest::ControlOk(
      R"(create-object {"id": 61, "childSubmap": 5, "fields": {"Selection Name": "spare"}})");
  EXPECT_EQ(spare(), 5u);
  EXPECT_EQ(ScopingCache::MapSelectionNameToObjectId("spare"), 61u);
  ScopingCache::CloseScopeCache();
}

}  // namespace
