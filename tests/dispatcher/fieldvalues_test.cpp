// Tool-tip fields as text, for what no map file can hold (an absent string, a
// boolean other than 0 and 1, an enumeration value outside the constants) and
// a field the field information cache cannot describe. The rest is tested
// through Java.
#include "dispatcher/fieldvalues.h"

#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <tuple>
#include <vector>

#include "dispatcher/fieldids.h"
#include "dispatcher/fieldinfocache.h"
#include "tests/support/platform_session.h"

namespace {

constexpr char kFieldsMap[] = R"({
  "map": {"name": "fields", "permissions": 2, "rootSubmap": 1},
  "fields": [{"name": "vendor", "type": "enumeration", "enum": ["Unset", "Acme"]}],
  "submaps": [{"id": 1, "name": "Root"}]
})";

using Rendered = std::vector<std::tuple<std::string, std::string, bool>>;

Rendered Render(const skiff::FieldIds& ids, const FieldInfoTables& tables,
                std::vector<QXwFieldBinding> bindings) {
  QXwFieldBindList list{static_cast<int>(bindings.size()), bindings.data()};
  Rendered rendered;
  for (const skiff::ToolTipProperty& p :
       skiff::RenderToolTipFields(list, skiff::ToolTipFieldsOf(ids), false, tables)) {
    rendered.emplace_back(p.key, p.value, p.isPlatformText);
  }
  return rendered;
}

QXwFieldValue Scalar(int type, int number) {
  QXwFieldValue value{};
  value.field_type = type;
  value.un.int_val = number;
  return value;
}

QXwFieldValue Text(const char* text) {
  QXwFieldValue value{};
  value.field_type = QXW_FIELD_STRING;
  value.un.string_val = const_cast<char*>(text);
  return value;
}

class FieldValuesTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(session_.ok()) << session_.error();
    ids_ = skiff::ResolveFieldIds();
  }

  skifftest::PlatformSession session_{kFieldsMap};
  QXwdbFieldInfoHashtable infos_;
  QXwdbEnumConstantsHashtable enums_;
  FieldInfoTables tables_{&infos_, &enums_};
  skiff::FieldIds ids_;
};

TEST_F(FieldValuesTest, ValuesWithoutATextOfTheirOwnRenderAsDefaults) {
  QXwFieldValue values[] = {Text(nullptr), Scalar(QXW_FIELD_BOOLEAN, 2),
                            Scalar(QXW_FIELD_ENUMERATION, 1), Scalar(QXW_FIELD_ENUMERATION, 2),
                            Scalar(QXW_FIELD_ENUMERATION, -1)};
  const QXwFieldId fields[] = {ids_.snmpSysObjectId, ids_.isNormalized, ids_.vendor, ids_.vendor,
                               ids_.vendor};
  std::vector<QXwFieldBinding> bindings;
  for (size_t i = 0; i < std::size(values); ++i) bindings.push_back({fields[i], &values[i]});
  EXPECT_EQ(Render(ids_, tables_, bindings), (Rendered{{"SNMP sysObjectID", "", true},
                                                       {"isNormalized", "FALSE", false},
                                                       {"vendor", "Acme", true},
                                                       {"vendor", "", true},
                                                       {"vendor", "", true}}));
}

TEST_F(FieldValuesTest, AFieldTheCacheCannotDescribeIsSkipped) {
  skifftest::ControlOk("fail QXwDbListFields 1 1");
  QXwdbFieldInfoHashtable unlisted;
  FieldInfoTables tables{&unlisted, &enums_};
  skifftest::ControlOk("fail QXwDbGetFieldInfo 1 1");
  QXwFieldValue name = Text("host-a");
  testing::internal::CaptureStderr();
  Rendered rendered = Render(ids_, tables, {{ids_.selectionName, &name}});
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "QXwDbGetFieldInfo call failed for field " + std::to_string(ids_.selectionName));
  EXPECT_TRUE(rendered.empty());
  // The next lookup asks again and succeeds.
  EXPECT_EQ(Render(ids_, tables, {{ids_.selectionName, &name}}),
            (Rendered{{"Selection Name", "host-a", true}}));
}

}  // namespace
