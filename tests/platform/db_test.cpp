// The object database: field descriptions, values and queries by value.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "platform/qxwdb.h"
#include "tests/support/platform_session.h"

namespace {

std::vector<QXwObjectId> Ids(QXwObjectIdList* list) {
  std::vector<QXwObjectId> ids;
  for (int i = 0; list != nullptr && i < list->count; ++i) ids.push_back(list->object_ids[i]);
  QXwDbFreeObjectIdList(list);
  return ids;
}

QXwFieldValue Integer(int v) {
  QXwFieldValue value{};
  value.field_type = QXW_FIELD_INTEGER;
  value.un.int_val = v;
  return value;
}

QXwFieldValue Boolean(int v) {
  QXwFieldValue value{};
  value.field_type = QXW_FIELD_BOOLEAN;
  value.un.bool_val = v;
  return value;
}

QXwFieldValue Text(const char* v) {
  QXwFieldValue value{};
  value.field_type = QXW_FIELD_STRING;
  value.un.string_val = const_cast<char*>(v);
  return value;
}

class DbTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(session_.ok()) << session_.error(); }
  QXwFieldId Field(const char* name) { return QXwDbFieldNameToFieldId(name); }

  skifftest::PlatformSession session_{skifftest::TestMap("platform.json")};
};

TEST_F(DbTest, NamesAndIdsResolve) {
  EXPECT_EQ(Field("Selection Name"), 1u);
  EXPECT_EQ(Field("Serial Number"), 26u);  // after the 25 standard fields
  EXPECT_EQ(Field("No Such Field"), 0u);
  EXPECT_EQ(QXwDbSelectionNameToObjectId("rtr1"), 30u);
  EXPECT_EQ(QXwDbSelectionNameToObjectId("nobody"), 0u);
  char* name = QXwDbObjectIdToSelectionName(42);
  EXPECT_STREQ(name, "host1:le1");
  std::free(name);
  EXPECT_EQ(QXwDbObjectIdToSelectionName(70), nullptr);  // has no selection name
  EXPECT_EQ(QXwDbObjectIdToSelectionName(999), nullptr);
}

TEST_F(DbTest, HostnamesAndOwnAddressesFindNodesOnly) {
  EXPECT_EQ(QXwDbHostnameToObjectId("host1.example"), 40u);
  EXPECT_EQ(QXwDbHostnameToObjectId("10.1.0.20"),
            40u);  // the node's own address, not its interface's
  EXPECT_EQ(QXwDbHostnameToObjectId("10.1.0.21"), 0u);  // only an interface carries it
  EXPECT_EQ(QXwDbHostnameToObjectId("10.1.0.0"), 0u);   // a network
  EXPECT_EQ(QXwDbHostnameToObjectId("rtr2.example"), 31u);
}

TEST_F(DbTest, FieldValuesComeInTheObjectsOrder) {
  QXwFieldBindList* values = QXwDbGetFieldValues(40);
  ASSERT_NE(values, nullptr);
  std::vector<QXwFieldId> order;
  for (int i = 0; i < values->count; ++i) order.push_back(values->fields[i].field_id);
  EXPECT_EQ(order,
            (std::vector<QXwFieldId>{Field("Selection Name"), Field("isSNMPSupported"),
                                     Field("IP Hostname"), Field("IP Address"), Field("isNode"),
                                     Field("vendor"), Field("TopM Interface List")}));
  const QXwFieldValue* vendor = values->fields[5].field_val;
  EXPECT_EQ(vendor->field_type, QXW_FIELD_ENUMERATION);
  EXPECT_EQ(vendor->un.enum_val, 2);
  const QXwFieldValue* list = values->fields[6].field_val;
  ASSERT_EQ(list->is_list, 1);
  ASSERT_EQ(list->un.list_val->count, 2);
  EXPECT_STREQ(list->un.list_val->list[1].string_val,
               "2 le1 10.1.0.21 255.255.255.0 08:00:2b:0a:0b:0c");
  QXwDbFreeFieldBindList(values);

  QXwFieldBindList* capabilities = QXwDbGetCapabilityFieldValues(40);
  ASSERT_EQ(capabilities->count, 2);
  EXPECT_EQ(capabilities->fields[0].field_id, Field("isSNMPSupported"));
  EXPECT_EQ(capabilities->fields[1].field_id, Field("isNode"));
  EXPECT_EQ(capabilities->fields[1].field_val->un.bool_val, 1);
  QXwDbFreeFieldBindList(capabilities);

  QXwFieldBindList* none = QXwDbGetFieldValues(70);
  ASSERT_NE(none, nullptr);
  EXPECT_EQ(none->count, 0);
  QXwDbFreeFieldBindList(none);
  EXPECT_EQ(QXwDbGetFieldValues(999), nullptr);
}

TEST_F(DbTest, ValuesByObjectsKeepOnePlacePerObject) {
  QXwObjectId ids[] = {41, 999, 42, 43, 50};
  QXwObjectIdList list{5, ids};
  QXwObjectFieldList* nodes = QXwDbGetFieldValuesByObjects(&list, Field("TopM Node ID"));
  ASSERT_NE(nodes, nullptr);
  ASSERT_EQ(nodes->count, 5);
  for (int i = 0; i < 5; ++i) EXPECT_EQ(nodes->objects[i].object_id, ids[i]);
  EXPECT_EQ(nodes->objects[0].field_value->un.int_val, 40);
  EXPECT_EQ(nodes->objects[1].field_value, nullptr);  // no such object
  EXPECT_EQ(nodes->objects[2].field_value->un.int_val, 40);
  EXPECT_EQ(nodes->objects[3].field_value->un.int_val, -1);  // 4294967295
  EXPECT_EQ(nodes->objects[4].field_value, nullptr);         // no value
  QXwDbFreeObjectFieldList(nodes);
  EXPECT_EQ(QXwDbGetFieldValuesByObjects(&list, 999), nullptr);
}

TEST_F(DbTest, IntegerValuesReadAndWrite) {
  EXPECT_EQ(QXwDbGetFieldIntegerValue(41, Field("TopM Node ID")), 40);
  EXPECT_EQ(QXwDbGetFieldIntegerValue(31, Field("Rack")), -1);
  EXPECT_EQ(QXwDbGetFieldIntegerValue(30, Field("Location ID")), -1);  // not set
  EXPECT_EQ(QXwError(), QXW_ERR_NO_VALUE);
  EXPECT_EQ(QXwDbGetFieldIntegerValue(30, Field("Selection Name")), -1);
  EXPECT_EQ(QXwError(), QXW_ERR_WRONG_TYPE);
  ASSERT_EQ(QXwDbSetFieldIntegerValue(30, Field("Location ID"), 20), 0);
  EXPECT_EQ(QXwDbGetFieldIntegerValue(30, Field("Location ID")), 20);
  EXPECT_NE(QXwDbSetFieldIntegerValue(30, Field("IP Address"), 1), 0);
  EXPECT_NE(QXwDbSetFieldIntegerValue(999, Field("Location ID"), 1), 0);
  // A written value is found by value at once.
  QXwFieldValue twenty = Integer(20);
  QXwFieldBinding binding{Field("Location ID"), &twenty};
  EXPECT_EQ(Ids(QXwDbListObjectsByFieldValue(&binding)), (std::vector<QXwObjectId>{30}));
}

TEST_F(DbTest, ObjectsByValueMatchEveryBindingInCreationOrder) {
  QXwFieldValue yes = Boolean(1), node40 = Integer(40), net20 = Integer(20);
  QXwFieldValue address = Text("10.1.0.21"), allBits = Integer(-1), alias = Text("beta");
  struct Case {
    const char* what;
    std::vector<QXwFieldBinding> bindings;
    std::vector<QXwObjectId> ids;
  } cases[] = {
      {"capability", {{Field("isInterface"), &yes}}, {41, 42, 43}},
      {"interfaces of a node on a network",
       {{Field("isInterface"), &yes},
        {Field("TopM Network ID"), &net20},
        {Field("TopM Node ID"), &node40}},
       {41, 42}},
      {"address of an interface",
       {{Field("IP Address"), &address}, {Field("isInterface"), &yes}},
       {42}},
      {"all bits set", {{Field("TopM Node ID"), &allBits}}, {43}},
      {"an element of a list field", {{Field("Aliases"), &alias}}, {50}},
      {"no match", {{Field("isLocation"), &yes}}, {}},
  };
  for (const Case& c : cases) {
    QXwFieldBindList list{static_cast<int>(c.bindings.size()),
                          const_cast<QXwFieldBinding*>(c.bindings.data())};
    EXPECT_EQ(Ids(QXwDbListObjectsByFieldValues(&list)), c.ids) << c.what;
  }
  QXwFieldBinding unknown{999, &yes};
  EXPECT_EQ(QXwDbListObjectsByFieldValue(&unknown), nullptr);
  EXPECT_EQ(QXwError(), QXW_ERR_NO_SUCH_FIELD);
}

TEST_F(DbTest, FieldDescriptionsAndConstants) {
  QXwFieldList* fields = QXwDbListFields(0);
  ASSERT_NE(fields, nullptr);
  ASSERT_EQ(fields->count, 28);
  EXPECT_STREQ(fields->field_list[0].field_name, "Selection Name");
  const QXwFieldInfo& interfaces = fields->field_list[20];
  EXPECT_STREQ(interfaces.field_name, "TopM Interface List");
  EXPECT_EQ(interfaces.field_flags, static_cast<unsigned>(QXW_FIELD_FLAG_LIST));
  QXwDbFreeFieldList(fields);

  QXwFieldInfo* isNode = QXwDbGetFieldInfo(Field("isNode"));
  ASSERT_NE(isNode, nullptr);
  EXPECT_EQ(isNode->field_type, QXW_FIELD_BOOLEAN);
  EXPECT_EQ(isNode->field_flags, static_cast<unsigned>(QXW_FIELD_FLAG_CAPABILITY));
  QXwDbFreeFieldInfo(isNode);
  EXPECT_EQ(QXwDbGetFieldInfo(999), nullptr);

  QXwEnumConstants* vendors = QXwDbGetEnumConstants(Field("vendor"));
  ASSERT_NE(vendors, nullptr);
  ASSERT_GT(vendors->count, 2);
  EXPECT_STREQ(vendors->names[1], "Acme");
  QXwDbFreeEnumConstants(vendors);
  EXPECT_EQ(QXwDbGetEnumConstants(Field("Rack")), nullptr);
  EXPECT_EQ(QXwError(), QXW_ERR_WRONG_TYPE);
}

}  // namespace
