// What the platform's tests share: a session on tests/maps/platform.json, the
// ids of the lists the platform hands out, and field values to query with.
#ifndef SKIFF_TESTS_PLATFORM_PLATFORM_TEST_H_
#define SKIFF_TESTS_PLATFORM_PLATFORM_TEST_H_

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "platform/qxw.h"
#include "platform/qxwdb.h"
#include "tests/support/platform_session.h"

namespace skifftest {

using Ids = std::vector<uint32_t>;

// The ids `id(list, i)` of a list, which `free` releases; {0} for none.
template <class List, class Id>
Ids IdsOf(List* list, Id id, void (*free)(List*)) {
  if (list == nullptr) return {0};
  Ids ids;
  for (int i = 0; i < list->count; ++i) ids.push_back(id(*list, i));
  free(list);
  return ids;
}
inline Ids Of(QXwSymbolList* l) {
  return IdsOf(
      l, [](auto& l, int i) { return l.symbols[i].symbol_id; }, QXwFreeSymbolList);
}
inline Ids Of(QXwObjectIdList* l) {
  return IdsOf(
      l, [](auto& l, int i) { return l.object_ids[i]; }, QXwDbFreeObjectIdList);
}
inline Ids Of(QXwFieldBindList* l) {
  return IdsOf(
      l, [](auto& l, int i) { return l.fields[i].field_id; }, QXwDbFreeFieldBindList);
}
inline Ids Of(QXwFieldList* l) {
  return IdsOf(
      l, [](auto& l, int i) { return l.field_list[i].field_id; }, QXwDbFreeFieldList);
}
inline Ids Of(QXwObjectFieldList* l) {
  return IdsOf(
      l, [](auto& l, int i) { return l.objects[i].object_id; }, QXwDbFreeObjectFieldList);
}

// An integer, boolean or enumeration value, or with `text` a string value.
inline QXwFieldValue Value(int type, int number, const char* text = nullptr) {
  QXwFieldValue value{};
  value.field_type = type;
  value.un.int_val = number;
  if (text != nullptr) value.un.string_val = const_cast<char*>(text);
  return value;
}

// A session on the platform test map.
class PlatformTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(session_.ok()) << session_.error(); }
  QXwMapInfo* map() { return session_.map(); }
  static QXwFieldId Field(const char* name) { return QXwDbFieldNameToFieldId(name); }

  PlatformSession session_{TestMap("platform.json")};
};

}  // namespace skifftest

#endif  // SKIFF_TESTS_PLATFORM_PLATFORM_TEST_H_
