// An object's tool-tip fields as text: what the Java side receives as the
// object's field values when one of its node symbols is reported.
//
// Only the fourteen tool-tip fields are rendered. A node's "TopM Interface List" becomes three
// properties, "IP Address", "IP Subnet Mask" and "SNMP ifPhysAddr", each with one line per
// interface. On a large database only string fields are rendered.
#ifndef SKIFF_DISPATCHER_FIELDVALUES_H_
#define SKIFF_DISPATCHER_FIELDVALUES_H_

#include <array>
#include <string>
#include <vector>

#include "dispatcher/fieldids.h"
#include "platform/qxwrecords.h"

struct FieldInfoTables;

namespace skiff {

// The fields an object's tool tip shows.
struct ToolTipFields {
  // The fourteen tool-tip fields' ids, in the order of the dispatcher's field
  // table.
  std::array<QXwFieldId, 14> fields;
  // The "TopM Interface List" field's id.
  QXwFieldId interfaceList;

  // True when fieldId is one of the fourteen.
  bool Contains(QXwFieldId fieldId) const;
};

// The tool-tip fields among the given ids.
ToolTipFields ToolTipFieldsOf(const FieldIds& ids);

// One property: its key (a field name owned by the field information cache,
// or a fixed text) and its value. Platform text (string values and
// enumeration names) crosses to Java converted from the platform's character
// set; the rest (numbers, "TRUE", "FALSE", interface tokens) as it is.
struct ToolTipProperty {
  const char* key;
  std::string value;
  bool isPlatformText;
};

// The properties of the object's field bindings that are tool-tip fields, in
// the bindings' order. A key may recur; the later property then replaces the
// earlier one. Fields the tables cannot describe are skipped; an enumeration
// value without a constant name, and an absent string, render as "".
std::vector<ToolTipProperty> RenderToolTipFields(const QXwFieldBindList& bindings,
                                                 const ToolTipFields& toolTipFields, bool isLargeDb,
                                                 const FieldInfoTables& tables);

}  // namespace skiff

#endif  // SKIFF_DISPATCHER_FIELDVALUES_H_
