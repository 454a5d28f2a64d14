// Tool-tip fields as text, for what no map file can hold (an absent string,
// in a field or in the interface list, a boolean other than 0 and 1, an
// enumeration value outside the constants) and a field the field information
// cache cannot describe. The rest, the interface list's tokens included, is
// tested through Java.
#include "dispatcher/fieldvalues.h"

#include <gtest/gtest.h>

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

QXwFieldValue Scalar(int type, int number) {
  QXwFieldValue value{};
  value.field_type = type;
  value.un.int_val = number;
  return value;
}

QXwFieldValue Text(const char* text) {
  QXwFieldValue value = Scalar(QXW_FIELD_STRING, 0);
  value.un.string_val = const_cast<char*>(text);
  return value;
}

class FieldValuesTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(session_.ok()) << session_.error(); }

  Rendered Render(std::vector<QXwFieldBinding> bindings, const FieldInfoTables& tables) {
    QXwFieldBindList list{static_cast<int>(bindings.size()), bindings.data()};
    Rendered rendered;
    for (const skiff::ToolTipProperty& p :
         skiff::RenderToolTipFields(list, skiff::ToolTipFieldsOf(ids_), false, tables)) {
      rendered.emplace_back(p.key, p.value, p.isPlatformText);
    }
    return rendered;
  }

  skifftest::PlatformSession session_{kFieldsMap};
  QXwdbFieldInfoHashtable infos_;
  QXwdbEnumConstantsHashtable enums_;
  const skiff::FieldIds ids_ = skiff::ResolveFieldIds();
};

TEST_F(FieldValuesTest, ValuesWithoutATextOfTheirOwnRenderAsDefaults) {
  QXwListFieldEntry entries[2] = {};
  entries[0].string_val = const_cast<char*>("1 le0 10.1.2.3 255.0.0.0 x");
  QXwListFieldValue list{2, entries};
  QXwFieldValue absent = Text(nullptr), two = Scalar(QXW_FIELD_BOOLEAN, 2),
                acme = Scalar(QXW_FIELD_ENUMERATION, 1), past = Scalar(QXW_FIELD_ENUMERATION, 2),
                negative = Scalar(QXW_FIELD_ENUMERATION, -1), interfaces = Text(nullptr),
                numbers = Scalar(QXW_FIELD_INTEGER, 0);
  interfaces.is_list = numbers.is_list = 1;
  interfaces.un.list_val = &list;
  EXPECT_EQ(Render({{ids_.snmpSysObjectId, &absent},
                    {ids_.isNormalized, &two},
                    {ids_.vendor, &acme},
                    {ids_.vendor, &past},
                    {ids_.vendor, &negative},
                    {ids_.topMInterfaceList, &numbers},  // no strings, no interfaces
                    {ids_.topMInterfaceList, &interfaces}},
                   {&infos_, &enums_}),
            (Rendered{{"SNMP sysObjectID", "", true},
                      {"isNormalized", "FALSE", false},
                      {"vendor", "Acme", true},
                      {"vendor", "", true},
                      {"vendor", "", true},
                      {"IP Address", "10.1.2.3\n", false},
                      {"IP Subnet Mask", "255.0.0.0\n", false},
                      {"SNMP ifPhysAddr", "x\n", false}}));
}

TEST_F(FieldValuesTest, AFieldTheCacheCannotDescribeIsSkipped) {
  skifftest::ControlOk("fail QXwDbListFields 1 1");
  QXwdbFieldInfoHashtable unlisted;
  skifftest::ControlOk("fail QXwDbGetFieldInfo 1 1");
  QXwFieldValue name = Text("host-a");
  testing::internal::CaptureStderr();
  EXPECT_TRUE(Render({{ids_.selectionName, &name}}, {&unlisted, &enums_}).empty());
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "QXwDbGetFieldInfo call failed for field " + std::to_string(ids_.selectionName));
  // The next lookup asks again and succeeds.
  EXPECT_EQ(Render({{ids_.selectionName, &name}}, {&unlisted, &enums_}),
            (Rendered{{"Selection Name", "host-a", true}}));
}

}  // namespace
