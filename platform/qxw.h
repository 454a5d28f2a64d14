// The map platform's client library: session, events and map contents.
//
// A function that returns a record or list returns a fresh allocation that
// the matching free function releases, or a null pointer on failure; the
// failure's code is then available from QXwError and its text from
// QXwErrorMsg. Functions returning int return 0 on success unless stated.
#ifndef SKIFF_PLATFORM_QXW_H_
#define SKIFF_PLATFORM_QXW_H_

#include "platform/qxwrecords.h"

#ifdef __cplusplus
extern "C" {
#endif

// Handler types. Every event handler receives the user data given at
// registration and the event code first; the data that follow depend on the
// event. Event data belong to the platform and are valid during the call only.

// QXW_EVENT_END_SESSION.
typedef void (*QXwEndSessionProc)(void* userData, int eventType, QXwBoolean normalEnd);
// QXW_EVENT_MAP_OPEN: the opened map and its configuration parameters.
typedef void (*QXwMapOpenProc)(void* userData, int eventType, QXwMapInfo* map,
                               QXwFieldBindList* configParams);
// QXW_EVENT_MAP_CLOSE: the closing map (may be null) and the closing time.
typedef void (*QXwMapCloseProc)(void* userData, int eventType, QXwMapInfo* map,
                                time_t closingTime);
// QXW_EVENT_SYMBOLS_HIDDEN, _UNHIDDEN, _STATUS, _CREATED, _DELETED.
typedef void (*QXwSymbolListProc)(void* userData, int eventType, QXwMapInfo* map,
                                  QXwSymbolList* symbols);
// QXW_EVENT_SYMBOL_MOVED.
typedef void (*QXwSymbolProc)(void* userData, int eventType, QXwMapInfo* map,
                              QXwSymbolInfo* symbol);
// QXW_EVENT_SYMBOL_NORMALIZE: the symbol and its new normalize flag.
typedef void (*QXwSymbolNormalizeProc)(void* userData, int eventType, QXwMapInfo* map,
                                       QXwSymbolInfo* symbol, QXwBoolean isNormalized);
// QXW_EVENT_SUBMAPS_CREATED, _DELETED.
typedef void (*QXwSubmapListProc)(void* userData, int eventType, QXwMapInfo* map,
                                  QXwSubmapList* submaps);
// QXW_EVENT_SUBMAP_AUTOLAYOUT.
typedef void (*QXwSubmapProc)(void* userData, int eventType, QXwMapInfo* map,
                              QXwSubmapInfo* submap);
// QXW_EVENT_OBJECTS_CREATED, _DELETED: objects with their field values.
typedef void (*QXwObjectListProc)(void* userData, int eventType, QXwMapInfo* map,
                                  QXwObjectList* objects);

// The registration type: any of the handler types above, cast to this one.
// The platform calls the handler through the type that matches the event.
typedef void (*QXwCallbackProc)(void);

// Input handler: called with the readable descriptor and the user data.
typedef void (*QXwInputProc)(int fd, void* userData);

// Session and events.

// Opens the session as a map application. 0 on success; otherwise the code
// is in QXwError (2: the session is usable but no map information exists).
int QXwInit(void);
// A new record describing the open map, or null when no map is open.
QXwMapInfo* QXwGetMapInfo(void);
void QXwFreeMapInfo(QXwMapInfo* map);
// Waits for and handles one event, calling handlers on this thread; returns
// a negative value once the session can deliver no more events.
int QXwProcessEvent(void);
// Ends the session.
int QXwDone(void);
// Acknowledges the notice that the map is closing.
int QXwAckMapClose(QXwMapInfo* map, int flags);
// Registers a handler for an event code; `filter` (may be null) restricts
// object events to matching objects and must stay valid while registered.
// A negative result means failure.
int QXwAddCallback(int eventType, QXwFieldBindList* filter, QXwCallbackProc handler,
                   void* userData);
// Calls `handler` from inside QXwProcessEvent whenever `fd` is readable.
// Returns a non-zero id, 0 on failure.
QXwInputId QXwAddInput(int fd, int condition, QXwInputProc handler, void* userData);
// Unregisters an input source; 0 on success.
int QXwRemoveInput(QXwInputId id);
// The code of the last failure on this thread, and a text for a code (owned
// by the platform).
int QXwError(void);
char* QXwErrorMsg(int errorCode);

// Map contents.

// Symbols of a submap whose plane is a bit of `planes` and, when `appName`
// is given and not empty, that belong to that application; creation order.
QXwSymbolList* QXwListSymbols(QXwMapInfo* map, QXwSubmapId submapId, QXwPlaneType planes,
                              const char* appName);
// Every symbol that shows the object, in creation order.
QXwSymbolList* QXwGetSymbolsByObject(QXwMapInfo* map, QXwObjectId objectId);
void QXwFreeSymbolList(QXwSymbolList* list);
QXwSubmapInfo* QXwGetSubmapInfo(QXwMapInfo* map, QXwSubmapId submapId);
void QXwFreeSubmapInfo(QXwSubmapInfo* submap);
QXwObjectInfo* QXwGetObjectInfo(QXwMapInfo* map, QXwObjectId objectId);
void QXwFreeObjectInfo(QXwObjectInfo* object);
int QXwDeleteSymbols(QXwMapInfo* map, QXwSymbolIdList* symbols);
int QXwSetSymbolsVisibility(QXwMapInfo* map, QXwSymbolIdList* symbols, QXwBoolean hidden);
int QXwSetObjectAckState(QXwMapInfo* map, QXwObjectIdList* objects, QXwBoolean acknowledged);
int _QXwManageObjects(QXwMapInfo* map, QXwObjectIdList* objects);
int _QXwUnmanageObjects(QXwMapInfo* map, QXwObjectIdList* objects);

#ifdef __cplusplus
}
#endif

#endif  // SKIFF_PLATFORM_QXW_H_
