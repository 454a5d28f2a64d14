// The ids of the object database fields the dispatcher reads, resolved by
// name once per session and handed, as one value, to the operations that
// read those fields, so that none of them depends on session state.
#ifndef SKIFF_DISPATCHER_FIELDIDS_H_
#define SKIFF_DISPATCHER_FIELDIDS_H_

#include "platform/qxwrecords.h"

// The database fields the dispatcher resolves at connect, in the order it
// resolves them: X(dispatcher member, FieldIds member, field name). The first
// fourteen are the tool-tip fields.
#define SKIFF_DISPATCHER_FIELDS(X)                                        \
  X(s_SelectionNameFieldId, selectionName, "Selection Name")              \
  X(s_IPAddressFieldId, ipAddress, "IP Address")                          \
  X(s_SNMPifPhysAddrFieldId, snmpIfPhysAddr, "SNMP ifPhysAddr")           \
  X(s_IPSubnetMaskFieldId, ipSubnetMask, "IP Subnet Mask")                \
  X(s_SNMPsysObjectIDFieldId, snmpSysObjectId, "SNMP sysObjectID")        \
  X(s_SNMPsysLocationFieldId, snmpSysLocation, "SNMP sysLocation")        \
  X(s_SNMPsysDescrFieldId, snmpSysDescr, "SNMP sysDescr")                 \
  X(s_SNMPsysContactFieldId, snmpSysContact, "SNMP sysContact")           \
  X(s_vendorFieldId, vendor, "vendor")                                    \
  X(s_SNMPAgentFieldId, snmpAgent, "SNMPAgent")                           \
  X(s_isSNMPProxiedFieldId, isSnmpProxied, "isSNMPProxied")               \
  X(s_isSNMPSupportedFieldId, isSnmpSupported, "isSNMPSupported")         \
  X(s_isNormalizedFieldId, isNormalized, "isNormalized")                  \
  X(s_TopMInterfaceListFieldId, topMInterfaceList, "TopM Interface List") \
  X(s_isInterfaceFieldId, isInterface, "isInterface")                     \
  X(s_TopMNodeIdFieldId, topMNodeId, "TopM Node ID")                      \
  X(s_TopMSegmentIdFieldId, topMSegmentId, "TopM Segment ID")             \
  X(s_TopMNetworkIdFieldId, topMNetworkId, "TopM Network ID")

namespace skiff {

// One id per field of SKIFF_DISPATCHER_FIELDS; 0 for a field the database
// lacks.
struct FieldIds {
#define SKIFF_FIELD_IDS_MEMBER(member, name, fieldName) QXwFieldId name = 0;
  SKIFF_DISPATCHER_FIELDS(SKIFF_FIELD_IDS_MEMBER)
#undef SKIFF_FIELD_IDS_MEMBER
};

// Resolves every field by name in the open platform session, in table order;
// each field the database lacks is reported on standard error and keeps 0.
FieldIds ResolveFieldIds();

}  // namespace skiff

#endif  // SKIFF_DISPATCHER_FIELDIDS_H_
