// Id sets, the parent-locations table and the selection-name table: each key
// is held once, and every set and key copy the tables own is released once.
#include <gtest/gtest.h>
#include <string.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tables/idsets.h"
#include "tables/parentlocationshashtable.h"
#include "tables/selectionnametoobjectidhashtable.h"

namespace {

TEST(IdSetsTest, HoldEachIdOnce) {
  QXwObjectIdHashtable objects;
  EXPECT_EQ(objects.GetObjectIds(), nullptr);
  for (QXwObjectId id : {7u, 5u, 7u, 9u, 5u}) objects.Add(id);
  ASSERT_EQ(objects.GetCount(), 3);
  std::unique_ptr<QXwObjectId[]> ids = objects.GetObjectIds();
  std::vector<QXwObjectId> sorted(ids.get(), ids.get() + objects.GetCount());
  std::sort(sorted.begin(), sorted.end());
  EXPECT_EQ(sorted, (std::vector<QXwObjectId>{5, 7, 9}));
}

// A set that counts its destructions.
struct CountedSet : QXwObjectIdHashtable {
  explicit CountedSet(int* destroyed) : destroyed_(destroyed) {}
  ~CountedSet() override { ++*destroyed_; }
  int* destroyed_;
};

TEST(ParentLocationsTest, DestroysEverySetOnceAndPassesOverEmptyEntries) {
  int destroyed = 0;
  {
    ParentLocationsHashtable table;
    for (QXwSubmapId submap = 1; submap <= 100; ++submap) {
      if (submap % 3 == 0) {
        table.Insert(submap, nullptr);
      } else {
        table.Insert(submap, std::make_unique<CountedSet>(&destroyed));
      }
    }
    table.Insert(1, std::make_unique<CountedSet>(&destroyed));  // replaces the first set
    EXPECT_EQ(destroyed, 1);
    EXPECT_EQ(table.GetParentLocations(3), nullptr);
    EXPECT_EQ(table.GetParentLocations(101), nullptr);
    ASSERT_NE(table.GetParentLocations(2), nullptr);
  }
  EXPECT_EQ(destroyed, 1 + 67);  // the replaced set, then the 67 sets held
}

skiff::OwnedText Copy(const char* text) { return skiff::OwnedText(strdup(text)); }

TEST(SelectionNameTableTest, KeysAreComparedByText) {
  SelectionNameToObjectIdHashtable table;
  table.Put(Copy("IP Internet"), 10);
  table.Put(Copy("net1"), 20);
  std::string sameText = "IP Internet";
  EXPECT_EQ(table.Get(sameText.c_str()), 10u);
  EXPECT_EQ(table.Get("IP Internet "), 0u);
  EXPECT_EQ(table.Get("ip internet"), 0u);

  table.Put(Copy("IP Internet"), 11);  // the new copy is released
  EXPECT_EQ(table.Get("IP Internet"), 11u);
  EXPECT_EQ(table.size(), 2);

  table.Remove(sameText.c_str());
  EXPECT_EQ(table.Get("IP Internet"), 0u);
  EXPECT_EQ(table.Get("net1"), 20u);

  for (int i = 0; i < 200; ++i) table.Put(Copy(("name " + std::to_string(i)).c_str()), i + 1);
  EXPECT_EQ(table.Get("name 123"), 124u);
}

}  // namespace
