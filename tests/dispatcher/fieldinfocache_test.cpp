// The field information cache loads every field description with one call,
// asks for enumeration constants once per field, hands out independent
// copies, and opens and closes safely.
#include "dispatcher/fieldinfocache.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "tests/support/platform_session.h"

namespace {

using skifftest::Calls;

constexpr char kFieldsMap[] = R"({
  "map": {"name": "fields", "permissions": 2, "rootSubmap": 1},
  "standardFields": false,
  "fields": [{"id": 1, "name": "Selection Name", "type": "string"},
             {"id": 2, "name": "vendor", "type": "enumeration", "enum": ["Unset", "Acme"]},
             {"id": 3, "name": "isNode", "type": "boolean", "capability": true}],
  "submaps": [{"id": 1, "name": "Root"}]
})";

class FieldInfoCacheTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(session_.ok()) << session_.error();
    skifftest::ResetCalls();
  }
  void TearDown() override { CloseFieldInfoCache(); }

  skifftest::PlatformSession session_{kFieldsMap};
};

TEST_F(FieldInfoCacheTest, LoadsEveryFieldOnceAndListsIndependentCopies) {
  OpenFieldInfoCache();
  bool wasCached = false;
  QXwFieldInfo* vendor = GetFieldInfo(2, &wasCached);
  ASSERT_NE(vendor, nullptr);
  EXPECT_STREQ(vendor->field_name, "vendor");
  EXPECT_EQ(vendor->field_type, QXW_FIELD_ENUMERATION);
  EXPECT_TRUE(wasCached);
  EXPECT_EQ(GetFieldInfo(3)->field_flags, unsigned{QXW_FIELD_FLAG_CAPABILITY});
  EXPECT_EQ(Calls("QXwDbListFields"), 1u);
  EXPECT_EQ(Calls("QXwDbGetFieldInfo"), 0u);

  skiff::FieldInfoListCopyPtr list = GetFieldList();
  ASSERT_EQ(list->count, 3);
  CloseFieldInfoCache();  // the copies outlive the cache
  std::set<std::string> names;
  for (int i = 0; i < list->count; ++i) names.insert(list->field_list[i].field_name);
  EXPECT_EQ(names, (std::set<std::string>{"Selection Name", "vendor", "isNode"}));
}

TEST_F(FieldInfoCacheTest, FieldsNotListedAreAskedForOneByOne) {
  skifftest::ControlOk("fail QXwDbListFields 1 1");
  OpenFieldInfoCache();
  bool wasCached = true;
  QXwFieldInfo* vendor = GetFieldInfo(2, &wasCached);
  ASSERT_NE(vendor, nullptr);
  EXPECT_FALSE(wasCached);
  EXPECT_EQ(GetFieldInfo(2, &wasCached), vendor);
  EXPECT_TRUE(wasCached);
  EXPECT_EQ(Calls("QXwDbGetFieldInfo"), 1u);

  // An unknown field is asked for on every lookup (what it reports is the
  // field-values test's).
  testing::internal::CaptureStderr();
  EXPECT_EQ(GetFieldInfo(99), nullptr);
  EXPECT_EQ(GetFieldInfo(99, &wasCached), nullptr);
  testing::internal::GetCapturedStderr();
  EXPECT_TRUE(wasCached);
  EXPECT_EQ(Calls("QXwDbGetFieldInfo"), 3u);
}

TEST_F(FieldInfoCacheTest, EnumerationConstantsAreAskedOncePerField) {
  OpenFieldInfoCache();
  struct Case {
    QXwFieldId field;
    int value;
    const char* name;  // null: none
  } cases[] = {{2, 0, "Unset"},  {2, 1, "Acme"},  {2, 2, nullptr},
               {2, -1, nullptr}, {3, 0, nullptr}, {99, 0, nullptr}};
  for (int round = 0; round < 2; ++round) {
    for (const Case& c : cases) {
      EXPECT_STREQ(GetEnumValueAsString(c.field, c.value), c.name) << c.field << " " << c.value;
    }
  }
  // Field 2 once; fields 3 and 99 have no constants and are asked each round.
  EXPECT_EQ(Calls("QXwDbGetEnumConstants"), 1u + 2u * 2u);
}

TEST_F(FieldInfoCacheTest, CloseTwiceOrWithoutOpenIsHarmless) {
  CloseFieldInfoCache();
  CloseFieldInfoCache();
  EXPECT_EQ(GetFieldInfo(1), nullptr);
  EXPECT_EQ(GetEnumConstants(2), nullptr);
  EXPECT_EQ(GetFieldList(), nullptr);

  OpenFieldInfoCache();
  EXPECT_NE(GetEnumConstants(2), nullptr);
  CloseFieldInfoCache();
  CloseFieldInfoCache();
  EXPECT_EQ(Calls("QXwDbFreeEnumConstants"), 1u);
  OpenFieldInfoCache();  // a fresh cache asks again
  EXPECT_STREQ(GetEnumValueAsString(2, 1), "Acme");
  EXPECT_EQ(Calls("QXwDbGetEnumConstants"), 2u);
}

}  // namespace
