// Fuzz target: an object's tool-tip fields rendered as text, with its
// interface strings cut into tokens. The bindings come from the input: any
// field, tool-tip or not, with a value of any type, lists included, and
// absent texts. Each interface property has one line per interface string,
// and a large database renders string fields alone.
#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <deque>
#include <string>
#include <vector>

#include "dispatcher/fieldinfocache.h"
#include "dispatcher/fieldvalues.h"
#include "dispatcher/interfacestrings.h"
#include "platform/qxw.h"
#include "tests/fuzz/check.h"

namespace {

// What the bindings point at, kept while they are rendered.
struct Values {
  std::deque<std::string> texts;
  std::deque<std::vector<QXwListFieldEntry>> entries;
  std::deque<QXwListFieldValue> lists;
  std::deque<QXwFieldValue> values;
};

char* Text(FuzzedDataProvider& in, Values& v) {
  if (in.ConsumeIntegralInRange(0, 7) == 0) return nullptr;
  return v.texts.emplace_back(in.ConsumeRandomLengthString(80).c_str()).data();
}

QXwFieldValue* Value(FuzzedDataProvider& in, Values& v) {
  QXwFieldValue& value = v.values.emplace_back();
  value.field_type = in.ConsumeIntegralInRange(0, 5);
  value.is_list = in.ConsumeBool();
  if (value.is_list) {
    std::vector<QXwListFieldEntry>& entries = v.entries.emplace_back();
    entries.resize(in.ConsumeIntegralInRange(0, 6));
    for (QXwListFieldEntry& entry : entries) {
      if (value.field_type == QXW_FIELD_STRING)
        entry.string_val = Text(in, v);
      else
        entry.int_val = in.ConsumeIntegral<int>();
    }
    value.un.list_val =
        &v.lists.emplace_back(QXwListFieldValue{int(entries.size()), entries.data()});
  } else if (value.field_type == QXW_FIELD_STRING) {
    value.un.string_val = Text(in, v);
  } else {
    value.un.int_val = in.ConsumeIntegral<int>();
  }
  return &value;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool open = [] {
    setenv("QXW_MAP", SKIFF_SOURCE_DIR "/java/test/resources/maps/field-values.json", 1);
    return QXwInit() == 0;
  }();
  static QXwdbFieldInfoHashtable* infos = new QXwdbFieldInfoHashtable();
  static QXwdbEnumConstantsHashtable* enums = new QXwdbEnumConstantsHashtable();
  static const skiff::ToolTipFields fields = skiff::ToolTipFieldsOf(skiff::ResolveFieldIds());
  Check(open);

  FuzzedDataProvider in(data, size);
  const bool isLargeDb = in.ConsumeBool();
  Values v;
  std::vector<QXwFieldBinding> bindings(in.ConsumeIntegralInRange(0, 8));
  for (QXwFieldBinding& binding : bindings) {
    binding.field_id = in.ConsumeBool() ? fields.fields[in.ConsumeIntegralInRange(0, 13)]
                                        : in.ConsumeIntegralInRange(0, 60);
    binding.field_val = in.ConsumeIntegralInRange(0, 9) == 0 ? nullptr : Value(in, v);
  }
  const QXwFieldBindList list{static_cast<int>(bindings.size()), bindings.data()};
  const FieldInfoTables tables{infos, enums};
  for (const skiff::ToolTipProperty& p :
       skiff::RenderToolTipFields(list, fields, isLargeDb, tables)) {
    Check(p.key != nullptr && (!isLargeDb || p.isPlatformText));
  }
  for (const QXwFieldValue& value : v.values) {
    if (!value.is_list || value.field_type != QXW_FIELD_STRING) continue;
    const std::vector<std::string> strings = skiff::GetInterfaceStrings(value.un.list_val);
    Check(strings.size() == size_t(value.un.list_val->count));
    for (int token : {0, 2, 3, 4}) {
      const std::string joined = skiff::ConcatenateIndexedTokens(token, strings);
      Check(std::count(joined.begin(), joined.end(), '\n') + 1 ==
            std::max<long>(strings.size(), 1));
    }
  }
  return 0;
}
