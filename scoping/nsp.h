// NSP: the "Location ID" field of locations and networks, and the kind of an
// object (location, network, segment, router, node) read from its
// capability fields.
//
// "Location ID" holds the parent object of the submap on which the object's
// application-plane symbol in the IP topology lives: for a network drawn
// inside a location, that location. It is written for single symbols as they
// are created and can be recomputed for every location or network at once.
// Dispatcher thread only; the dispatcher decides when (see
// QxwEventDispatcher's location-tracking flags).
#ifndef SKIFF_SCOPING_NSP_H_
#define SKIFF_SCOPING_NSP_H_

#include <jni.h>

#include "platform/qxwrecords.h"
#include "platform/recordowners.h"

class ObjectSymbolInfoHashtable;
class QXwSubmapInfoHashtable;
class SubmapHashtable;

enum TOPLEVEL_OBJECT_TYPE : int {
  LOCATION_TYPE = 0,
  NETWORK_TYPE = 1,
  SEGMENT_TYPE = 2,
  ROUTER_TYPE = 3,
  NODE_TYPE = 4,
  UNKNOWN_TYPE = 5,
};

class NSP {
 public:
  NSP() = delete;

  // Write the verbose lines of NSP on standard error (QxwInterface.open sets
  // it with its third switch).
  static int m_doUseVerboseMode;
  // Ids of the capability fields and of "Location ID"; 0 until
  // CacheNSPFieldIds, and 0 for a field the database lacks.
  static QXwFieldId m_isLocationFieldId;
  static QXwFieldId m_isNetworkFieldId;
  static QXwFieldId m_isSegmentFieldId;
  static QXwFieldId m_isRouterFieldId;
  static QXwFieldId m_isNodeFieldId;
  static QXwFieldId m_LocationIDFieldId;

  static void SetVerbose(int doUseVerboseMode);
  // Resolves the field ids, each one that the database lacks with
  // "Could not obtain field id for field: NAME"; the others are still
  // resolved. Once per connection to the platform.
  static void CacheNSPFieldIds();
  static QXwFieldId GetIsNetworkFieldId() { return m_isNetworkFieldId; }

  // For a newly created symbol: a location or network symbol on the
  // application plane of an IP topology submap sets its object's Location ID
  // to that submap's parent object. Anything else changes nothing.
  static void SetLocationIDFieldIfNeeded(QXwMapInfo* pMap, const QXwSymbolInfo* pSymbolInfo);
  // Recomputes the Location ID of every location / every network, in the
  // database's order (see MaybeSetObjectLocationIDField).
  static void SynchronizeLocationIDFieldForSubLocations(QXwMapInfo* pMap);
  static void SynchronizeLocationIDFieldForNetworks(QXwMapInfo* pMap);
  // Every object whose "isNetwork" is true, as a list the caller releases
  // with QXwDbFreeObjectIdList; null when there is none.
  static QXwObjectIdList* GetNetworkObjectIds();

  // The object's kind from its capability fields: the first true one of
  // location, network and segment in the object's field order, else router
  // when it is a router (a router is also a node, in either order), else
  // node, else UNKNOWN_TYPE. An object whose capability fields cannot be
  // fetched is reported on standard error and is UNKNOWN_TYPE.
  static TOPLEVEL_OBJECT_TYPE GetObjectType(QXwObjectId objectId, const char* selectionName);

  // Writes the symbol's object's Location ID: the submap's parent object.
  // The result of the write is not examined.
  static void SetLocationIDField(const QXwSymbolInfo* pSymbolInfo,
                                 const QXwSubmapInfo* pSubmapInfo);
  // Writes the object's Location ID from each of its application-plane
  // symbols on an IP topology submap, in the platform's order (so the last
  // wins). An object with other than exactly one such symbol is reported on
  // standard error. 1 when at least one symbol set the field.
  static int MaybeSetObjectLocationIDField(QXwObjectId objectId, QXwMapInfo* pMap);
  // MaybeSetObjectLocationIDField for each object of the list, in order; a
  // null list does nothing.
  static void ResetObjectLocationIDFields(const QXwObjectIdList* pLocationOrNetworkObjectIds,
                                          QXwMapInfo* pMap);

  // Top-most symbol selection (scoping/topmost.cpp): which of an object's
  // symbols stands for it. Each call keeps its own caches for its scope
  // tests.

  // The object's symbol that the whole hierarchy within the scope shows it
  // by: an application-plane IP topology icon within the scope and not on a
  // meta-connection's submap (for a router, one whose status comes from its
  // compound status when there is one); for an object of unknown kind, else
  // an in-scope icon of any application, application plane first. 0, with a
  // message, when the object has symbols but none qualifies; 0 silently when
  // it has none.
  static QXwSymbolId GetTopMostIPMapSymbolForObject(JNIEnv* pEnv, QXwMapInfo* pMap,
                                                    QXwObjectId objectId,
                                                    SubmapHashtable* pRootSubmapsHashtable);
  // The same for the object with that selection name. Also stores the
  // chosen symbol's submap in *pSubmapSymbolLivesOn (untouched when none is
  // chosen) and, for an icon and a non-zero customSubmapId, reports it to
  // Java with addNodeSymbol under that submap id.
  static QXwSymbolId GetTopMostIPMapSymbolForObject(JNIEnv* pEnv, QXwMapInfo* pMap,
                                                    const char* selectionName, int customSubmapId,
                                                    SubmapHashtable* pRootSubmapsHashtable,
                                                    QXwSubmapId* pSubmapSymbolLivesOn);
  // The object's icon on the child submap of the object named
  // parentSelectionName: the first on the application plane, else the last
  // on another plane. Outputs and reporting as above; 0 with a message when
  // there is none.
  static QXwSymbolId GetSymbolForObject(JNIEnv* pEnv, QXwMapInfo* pMap, const char* selectionName,
                                        const char* parentSelectionName, int customSubmapId,
                                        QXwSubmapId* pSubmapSymbolLivesOn);

 private:
  // Fetches the object's symbols into *pSymbols (null when it has none) and
  // returns the top-most of them, or null; with caches of its own for the
  // scope tests.
  static const QXwSymbolInfo* ChooseTopMostSymbol(JNIEnv* pEnv, QXwMapInfo* pMap,
                                                  QXwObjectId objectId, const char* selectionName,
                                                  SubmapHashtable* pRootSubmapsHashtable,
                                                  skiff::SymbolListPtr* pSymbols);
  // The choosers of the top-most selection; each returns a symbol of the
  // list, or null.
  static QXwSymbolInfo* GetTopmostSymbolInfo(JNIEnv* pEnv, QXwMapInfo* pMap, QXwObjectId objectId,
                                             const char* selectionName, QXwSymbolList* pSymbolList,
                                             SubmapHashtable* pRootSubmapsHashtable,
                                             QXwSubmapInfoHashtable* pSubmapInfoHashtable,
                                             ObjectSymbolInfoHashtable* pSymbolInfoHashtable);
  static QXwSymbolInfo* GetAppPlaneIPMapSymbolInfo(JNIEnv* pEnv, QXwMapInfo* pMap,
                                                   SubmapHashtable* pRootSubmapsHashtable,
                                                   QXwSubmapInfoHashtable* pSubmapInfoHashtable,
                                                   ObjectSymbolInfoHashtable* pSymbolInfoHashtable,
                                                   QXwSymbolList* pSymbolList,
                                                   int doRestrictToCompoundStatusSource);
  static QXwSymbolInfo* GetAppPlaneSymbolInfo(JNIEnv* pEnv, QXwMapInfo* pMap,
                                              SubmapHashtable* pRootSubmapsHashtable,
                                              QXwSubmapInfoHashtable* pSubmapInfoHashtable,
                                              ObjectSymbolInfoHashtable* pSymbolInfoHashtable,
                                              QXwSymbolList* pSymbolList);
  static QXwSymbolInfo* GetSymbolInfoPreferablyFromAppPlane(QXwMapInfo* pMap,
                                                            QXwSymbolList* pSymbolList,
                                                            QXwObjectId parentObjectId);

  // Stores the named field's id in `fieldId`; false when the database has no
  // such field (reported when doReportErrorIfFieldNotFound is non-zero).
  static int InitializeField(QXwFieldId& fieldId, const char* fieldName,
                             int doReportErrorIfFieldNotFound);
  // The binding is for that capability field and its value is exactly true.
  static int IsFieldAndValueIsTrue(const QXwFieldBinding* pFieldBinding,
                                   QXwFieldId capabilityFieldId);
  // Recomputes the Location ID of every object whose capability is true;
  // `operation` and `kind` name them in the verbose lines.
  static void SynchronizeLocationIDField(QXwMapInfo* pMap, QXwFieldId capabilityFieldId,
                                         const char* operation, const char* kind);
};

#endif  // SKIFF_SCOPING_NSP_H_
