// Records, identifiers and constants of the map platform's client library.
//
// The platform allocates every record and list it returns; the caller gives
// each back with the matching free function (see qxw.h and qxwdb.h). Text is
// NUL-terminated multibyte text in the platform's encoding.
#ifndef SKIFF_PLATFORM_QXWRECORDS_H_
#define SKIFF_PLATFORM_QXWRECORDS_H_

#include <stddef.h>
#include <stdint.h>
#include <time.h>

#ifdef __cplusplus
extern "C" {
#endif

// Identifiers: unsigned 32-bit, 0 means "none" everywhere.
typedef uint32_t QXwObjectId;
typedef uint32_t QXwSymbolId;
typedef uint32_t QXwSubmapId;
typedef uint32_t QXwFieldId;
typedef uint32_t QXwInputId;

typedef uint32_t QXwStatusType;
typedef uint32_t QXwPlaneType;
typedef int QXwBoolean;

// Planes of a symbol, and the selector that names all of them.
enum { QXW_PLANE_BASE = 1, QXW_PLANE_APPLICATION = 2, QXW_PLANE_USER = 4, QXW_PLANE_ALL = 7 };

// Symbol varieties.
enum { QXW_SYMBOL_ICON = 1, QXW_SYMBOL_CONNECTION = 2 };

// Placements of an icon symbol.
enum { QXW_PLACEMENT_COORDS = 1, QXW_PLACEMENT_AFTER = 2 };

// Status sources of a symbol.
enum { QXW_STATUS_SOURCE_OBJECT = 1, QXW_STATUS_SOURCE_COMPOUND = 2 };

// Map permissions.
enum { QXW_MAP_READ_ONLY = 1, QXW_MAP_READ_WRITE = 2 };

// The submap policy of a meta-connection's child submap.
enum { QXW_SUBMAP_POLICY_META_CONNECTION = 3 };

// Field value types.
enum {
  QXW_FIELD_INTEGER = 1,
  QXW_FIELD_BOOLEAN = 2,
  QXW_FIELD_STRING = 3,
  QXW_FIELD_ENUMERATION = 4
};

// Bits of QXwFieldInfo.field_flags.
enum { QXW_FIELD_FLAG_LIST = 0x1, QXW_FIELD_FLAG_CAPABILITY = 0x2 };

// Condition of an input source (QXwAddInput).
enum { QXW_INPUT_READABLE = 1 };

// Event codes.
enum {
  QXW_EVENT_END_SESSION = 1,
  QXW_EVENT_MAP_OPEN = 3,
  QXW_EVENT_MAP_CLOSE = 4,
  QXW_EVENT_SYMBOLS_DELETED = 14,
  QXW_EVENT_OBJECTS_DELETED = 15,
  QXW_EVENT_SUBMAPS_DELETED = 16,
  QXW_EVENT_SYMBOLS_CREATED = 17,
  QXW_EVENT_OBJECTS_CREATED = 18,
  QXW_EVENT_SUBMAPS_CREATED = 19,
  QXW_EVENT_SYMBOL_MOVED = 20,
  QXW_EVENT_SYMBOLS_HIDDEN = 23,
  QXW_EVENT_SYMBOLS_UNHIDDEN = 24,
  QXW_EVENT_SYMBOLS_STATUS = 25,
  QXW_EVENT_SYMBOL_NORMALIZE = 39,
  QXW_EVENT_SUBMAP_AUTOLAYOUT = 40
};

// Error codes (QXwError). QXwErrorMsg gives a text for each.
enum {
  QXW_OK = 0,
  QXW_ERR_FAILED = 1,  // generic failure; also an unreadable or invalid map
  QXW_ERR_NO_MAP_INFO = 2,
  QXW_ERR_NO_SESSION = 3,
  QXW_ERR_NO_MAP = 4,
  QXW_ERR_BAD_ARGUMENT = 5,
  QXW_ERR_NO_SUCH_SUBMAP = 6,
  QXW_ERR_NO_SUCH_SYMBOL = 7,
  QXW_ERR_NO_SUCH_OBJECT = 8,
  QXW_ERR_NO_SUCH_FIELD = 9,
  QXW_ERR_NO_VALUE = 10,
  QXW_ERR_WRONG_TYPE = 11,
  QXW_ERR_READ_ONLY = 12,
  QXW_ERR_NOT_FOUND = 13,
  QXW_ERR_SESSION_OPEN = 14,
  QXW_ERR_BAD_EXPRESSION = 15,
  QXW_ERR_NOT_OPEN = 16
};

typedef struct {
  char* map_name;
  int permissions;
  time_t creation_time;
  time_t last_closed_time;
  QXwSubmapId root_submap_id;
} QXwMapInfo;

typedef struct QXwFieldValue QXwFieldValue;

typedef struct {
  QXwFieldId field_id;
  QXwFieldValue* field_val;
} QXwFieldBinding;

typedef struct {
  int count;
  QXwFieldBinding* fields;
} QXwFieldBindList;

// One value of a list field: a bare union, read by the list's field_type.
typedef union {
  int int_val;
  QXwBoolean bool_val;
  char* string_val;
  int enum_val;
} QXwListFieldEntry;

typedef struct {
  int count;
  QXwListFieldEntry* list;
} QXwListFieldValue;

struct QXwFieldValue {
  QXwBoolean is_list;
  int field_type;
  union {
    int int_val;
    QXwBoolean bool_val;
    char* string_val;
    int enum_val;
    QXwListFieldValue* list_val;
  } un;
  QXwBoolean modified;
};

typedef struct {
  QXwObjectId object_id;
  QXwSubmapId child_submap_id;
  int num_symbols;
  QXwStatusType object_status;
  QXwStatusType compound_status;
  int op_scope;
  QXwFieldBindList* field_values;
} QXwObjectInfo;

typedef struct {
  int placement;
  union {
    struct {
      int x;
      int y;
      int width;
      int height;
    } coords;
    QXwSymbolId pred_symbol;
  } un;
} QXwSymbolPosition;

typedef struct {
  QXwSymbolId endpoint1_id;
  QXwSymbolId endpoint2_id;
  QXwBoolean is_meta_conn;
} QXwConnectionInfo;

typedef struct {
  int count;
  char** names;
} QXwAppList;

typedef struct {
  QXwSymbolId symbol_id;
  QXwSubmapId submap_id;
  QXwObjectInfo object;
  char* symbol_label;
  QXwStatusType symbol_status;
  int status_source;
  QXwPlaneType plane;
  QXwBoolean hidden;
  char* symbol_type;
  int symbol_variety;
  union {
    QXwSymbolPosition position;
    QXwConnectionInfo conninfo;
  } var_un;
  int behavior;
  QXwAppList apps;
} QXwSymbolInfo;

typedef struct {
  QXwSubmapId submap_id;
  char* submap_name;
  int submap_policy;
  char* app_name;
  int submap_type;
  QXwObjectId parent_object_id;
  int layout_style;
  QXwBoolean layout_on;
  char* bg_graphics;
} QXwSubmapInfo;

typedef struct {
  QXwObjectId object_id;
  QXwFieldValue* field_value;
} QXwObjectField;

typedef struct {
  QXwObjectId object_id;
  QXwFieldBindList* fields;
} QXwObjectFieldValues;

typedef struct {
  QXwFieldId field_id;
  char* field_name;
  int field_type;
  unsigned int field_flags;
} QXwFieldInfo;

typedef struct {
  QXwSymbolId symbol_id;
  QXwStatusType status;
  int error;
} QXwSymbolStatus;

typedef struct {
  QXwObjectId object_id;
  QXwStatusType status;
  int error;
} QXwObjectStatus;

typedef struct {
  int count;
  QXwSymbolInfo* symbols;
} QXwSymbolList;

typedef struct {
  int count;
  QXwSubmapInfo* submaps;
} QXwSubmapList;

typedef struct {
  int count;
  QXwObjectInfo* objects;
} QXwObjectList;

typedef struct {
  int count;
  QXwObjectId* object_ids;
} QXwObjectIdList;

typedef struct {
  int count;
  QXwSymbolId* symbol_ids;
} QXwSymbolIdList;

typedef struct {
  int count;
  QXwFieldId* field_ids;
} QXwFieldIdList;

typedef struct {
  int count;
  QXwObjectField* objects;
} QXwObjectFieldList;

typedef struct {
  int count;
  QXwObjectFieldValues* objects;
} QXwObjectsFieldValuesList;

typedef struct {
  int count;
  QXwFieldInfo* field_list;
} QXwFieldList;

typedef struct {
  int count;
  char** names;
} QXwEnumConstants;

// The layouts above are the platform library's own: a record that differs by
// one member or one byte of padding reads every later field, and every list
// entry after the first, at the wrong offset. Pinned for both x86 word sizes.
#if defined(__cplusplus)
#define QXW_LAYOUT_ASSERT(cond) static_assert(cond, #cond)
#else
#define QXW_LAYOUT_ASSERT(cond) _Static_assert(cond, #cond)
#endif
#define QXW_AT(type, member, at64, at32) \
  QXW_LAYOUT_ASSERT(offsetof(type, member) == (QXW_LP64 ? (at64) : (at32)))
#define QXW_SIZE(type, size64, size32) \
  QXW_LAYOUT_ASSERT(sizeof(type) == (QXW_LP64 ? (size64) : (size32)))

#if defined(__x86_64__) || defined(__i386__)
#if defined(__x86_64__)
#define QXW_LP64 1
#else
#define QXW_LP64 0
#endif
QXW_AT(QXwMapInfo, permissions, 8, 4);
QXW_AT(QXwMapInfo, creation_time, 16, 8);
QXW_AT(QXwMapInfo, last_closed_time, 24, 12);
QXW_AT(QXwMapInfo, root_submap_id, 32, 16);
QXW_SIZE(QXwMapInfo, 40, 20);

QXW_AT(QXwFieldBinding, field_val, 8, 4);
QXW_SIZE(QXwFieldBinding, 16, 8);
QXW_SIZE(QXwListFieldEntry, 8, 4);
QXW_AT(QXwFieldValue, field_type, 4, 4);
QXW_AT(QXwFieldValue, un, 8, 8);
QXW_AT(QXwFieldValue, modified, 16, 12);
QXW_SIZE(QXwFieldValue, 24, 16);

QXW_AT(QXwObjectInfo, child_submap_id, 4, 4);
QXW_AT(QXwObjectInfo, num_symbols, 8, 8);
QXW_AT(QXwObjectInfo, object_status, 12, 12);
QXW_AT(QXwObjectInfo, compound_status, 16, 16);
QXW_AT(QXwObjectInfo, op_scope, 20, 20);
QXW_AT(QXwObjectInfo, field_values, 24, 24);
QXW_SIZE(QXwObjectInfo, 32, 28);

QXW_AT(QXwSymbolPosition, un, 4, 4);
QXW_SIZE(QXwSymbolPosition, 20, 20);
QXW_AT(QXwConnectionInfo, is_meta_conn, 8, 8);
QXW_SIZE(QXwConnectionInfo, 12, 12);
QXW_AT(QXwAppList, names, 8, 4);
QXW_SIZE(QXwAppList, 16, 8);

QXW_AT(QXwSymbolInfo, submap_id, 4, 4);
QXW_AT(QXwSymbolInfo, object, 8, 8);
QXW_AT(QXwSymbolInfo, symbol_label, 40, 36);
QXW_AT(QXwSymbolInfo, symbol_status, 48, 40);
QXW_AT(QXwSymbolInfo, status_source, 52, 44);
QXW_AT(QXwSymbolInfo, plane, 56, 48);
QXW_AT(QXwSymbolInfo, hidden, 60, 52);
QXW_AT(QXwSymbolInfo, symbol_type, 64, 56);
QXW_AT(QXwSymbolInfo, symbol_variety, 72, 60);
QXW_AT(QXwSymbolInfo, var_un, 76, 64);
QXW_AT(QXwSymbolInfo, behavior, 96, 84);
QXW_AT(QXwSymbolInfo, apps, 104, 88);
QXW_SIZE(QXwSymbolInfo, 120, 96);

QXW_AT(QXwSubmapInfo, submap_name, 8, 4);
QXW_AT(QXwSubmapInfo, submap_policy, 16, 8);
QXW_AT(QXwSubmapInfo, app_name, 24, 12);
QXW_AT(QXwSubmapInfo, submap_type, 32, 16);
QXW_AT(QXwSubmapInfo, parent_object_id, 36, 20);
QXW_AT(QXwSubmapInfo, layout_style, 40, 24);
QXW_AT(QXwSubmapInfo, layout_on, 44, 28);
QXW_AT(QXwSubmapInfo, bg_graphics, 48, 32);
QXW_SIZE(QXwSubmapInfo, 56, 36);

QXW_AT(QXwObjectField, field_value, 8, 4);
QXW_SIZE(QXwObjectField, 16, 8);
QXW_AT(QXwObjectFieldValues, fields, 8, 4);
QXW_SIZE(QXwObjectFieldValues, 16, 8);
QXW_AT(QXwFieldInfo, field_name, 8, 4);
QXW_AT(QXwFieldInfo, field_type, 16, 8);
QXW_AT(QXwFieldInfo, field_flags, 20, 12);
QXW_SIZE(QXwFieldInfo, 24, 16);
QXW_AT(QXwSymbolStatus, error, 8, 8);
QXW_SIZE(QXwSymbolStatus, 12, 12);
QXW_AT(QXwObjectStatus, error, 8, 8);
QXW_SIZE(QXwObjectStatus, 12, 12);

// Every list: a count, then a pointer to its first element.
QXW_AT(QXwSymbolList, symbols, 8, 4);
QXW_AT(QXwSubmapList, submaps, 8, 4);
QXW_AT(QXwObjectList, objects, 8, 4);
QXW_AT(QXwObjectIdList, object_ids, 8, 4);
QXW_AT(QXwSymbolIdList, symbol_ids, 8, 4);
QXW_AT(QXwFieldIdList, field_ids, 8, 4);
QXW_AT(QXwFieldBindList, fields, 8, 4);
QXW_AT(QXwObjectFieldList, objects, 8, 4);
QXW_AT(QXwObjectsFieldValuesList, objects, 8, 4);
QXW_AT(QXwFieldList, field_list, 8, 4);
QXW_AT(QXwEnumConstants, names, 8, 4);
QXW_AT(QXwListFieldValue, list, 8, 4);
QXW_SIZE(QXwSymbolList, 16, 8);
#undef QXW_LP64
#endif
#undef QXW_AT
#undef QXW_SIZE
#undef QXW_LAYOUT_ASSERT

#ifdef __cplusplus
}
#endif

#endif  // SKIFF_PLATFORM_QXWRECORDS_H_
