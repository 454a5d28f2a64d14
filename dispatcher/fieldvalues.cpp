// Object field values: the tool-tip fields of an object, rendered as text and
// handed to Java as a java.util.Properties.
#include "dispatcher/fieldvalues.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <string>

#include "bridge/properties.h"
#include "bridge/text.h"
#include "bridge/tracescope.h"
#include "dispatcher/fieldinfocache.h"
#include "dispatcher/interfacestrings.h"
#include "dispatcher/largedb.h"
#include "dispatcher/main.h"
#include "dispatcher/verbose.h"
#include "platform/qxwdb.h"
#include "platform/recordowners.h"

using skiff::jni::LocalRef;

namespace skiff {

namespace {

// The interface list's tokens and the keys they are reported under.
struct InterfaceToken {
  int index;
  const char* key;
};
constexpr InterfaceToken kInterfaceTokens[] = {
    {2, "IP Address"}, {3, "IP Subnet Mask"}, {4, "SNMP ifPhysAddr"}};

// Adds the three joined interface tokens, unless the list is empty.
void RenderInterfaceList(const QXwListFieldValue* list, std::vector<ToolTipProperty>& properties) {
  std::vector<std::string> interfaces = GetInterfaceStrings(list);
  if (interfaces.empty()) return;
  for (const InterfaceToken& token : kInterfaceTokens) {
    properties.push_back({token.key, ConcatenateIndexedTokens(token.index, interfaces), false});
  }
}

}  // namespace

bool ToolTipFields::Contains(QXwFieldId fieldId) const {
  for (QXwFieldId field : fields) {
    if (field == fieldId) return true;
  }
  return false;
}

ToolTipFields ToolTipFieldsOf(const FieldIds& ids) {
  return ToolTipFields{
      {ids.selectionName, ids.ipAddress, ids.snmpIfPhysAddr, ids.ipSubnetMask, ids.snmpSysObjectId,
       ids.snmpSysLocation, ids.snmpSysDescr, ids.snmpSysContact, ids.vendor, ids.snmpAgent,
       ids.isSnmpProxied, ids.isSnmpSupported, ids.isNormalized, ids.topMInterfaceList},
      ids.topMInterfaceList};
}

std::vector<ToolTipProperty> RenderToolTipFields(const QXwFieldBindList& bindings,
                                                 const ToolTipFields& toolTipFields, bool isLargeDb,
                                                 const FieldInfoTables& tables) {
  std::vector<ToolTipProperty> properties;
  // One per binding at most, and two more when the interface list gives three.
  properties.reserve(static_cast<size_t>(std::max(bindings.count, 0)) + 2);
  for (int i = 0; i < bindings.count; ++i) {
    const QXwFieldBinding& binding = bindings.fields[i];
    const QXwFieldValue* value = binding.field_val;
    if (value == nullptr || !toolTipFields.Contains(binding.field_id)) continue;
    const QXwFieldInfo* info = tables.Info(binding.field_id);
    if (info == nullptr) continue;
    const char* name = info->field_name;
    if (value->is_list) {
      // Of the list fields only the interface list is shown, and not on a
      // large database.
      if (!isLargeDb && binding.field_id == toolTipFields.interfaceList) {
        RenderInterfaceList(StringListValue(value), properties);
      }
      continue;
    }
    if (value->field_type == QXW_FIELD_STRING) {
      const char* text = value->un.string_val;
      properties.push_back({name, text != nullptr ? text : "", true});
      continue;
    }
    if (isLargeDb) continue;
    switch (value->field_type) {
      case QXW_FIELD_INTEGER:
        properties.push_back({name, std::to_string(value->un.int_val), false});
        break;
      case QXW_FIELD_BOOLEAN:
        properties.push_back({name, value->un.bool_val == 1 ? "TRUE" : "FALSE", false});
        break;
      case QXW_FIELD_ENUMERATION: {
        const char* constant = tables.EnumName(binding.field_id, value->un.enum_val);
        properties.push_back({name, constant != nullptr ? constant : "", true});
        break;
      }
      default:
        break;
    }
  }
  return properties;
}

}  // namespace skiff

namespace {

// The session's tool-tip fields: the fourteen as the first call found them,
// after CacheFieldIds (that table is never refreshed), and the interface
// list's id as cached now.
skiff::ToolTipFields SessionToolTipFields() {
  static const std::array<QXwFieldId, 14> table =
      skiff::ToolTipFieldsOf(QxwEventDispatcher::SessionFieldIds()).fields;
  return skiff::ToolTipFields{table, QxwEventDispatcher::s_TopMInterfaceListFieldId};
}

}  // namespace

bool QxwEventDispatcher::IsToolTipField(QXwFieldId fieldId) {
  SKIFF_TRACE("QxwEventDispatcher::IsToolTipField");
  return SessionToolTipFields().Contains(fieldId);
}

skiff::jni::LocalRef<jobject> QxwEventDispatcher::GetObjectFieldValues(JNIEnv* pEnv,
                                                                       QXwObjectId objectId) {
  SKIFF_TRACE("QxwEventDispatcher::GetObjectFieldValues");
  skiff::DispatcherVerbose("QxwEventDispatcher::GetObjectFieldValues\n");
  LocalRef<jobject> properties = skiff::jni::NewProperties(pEnv);
  if (!properties || objectId == 0) return properties;

  skiff::FieldBindListPtr bindings(QXwDbGetFieldValues(objectId));
  if (bindings == nullptr) return properties;
  for (const skiff::ToolTipProperty& property : skiff::RenderToolTipFields(
           *bindings, SessionToolTipFields(), skiff::IsLargeDb(), OpenFieldInfoTables())) {
    LocalRef<jstring> key = skiff::jni::NewUtf8String(pEnv, property.key);
    LocalRef<jstring> value =
        property.isPlatformText ? LocalRef<jstring>(pEnv, mb2jstring(pEnv, property.value.c_str()))
                                : skiff::jni::NewUtf8String(pEnv, property.value.c_str());
    skiff::jni::PutProperty(pEnv, properties.get(), key.get(), value.get());
  }
  return properties;
}
