// NSP: the "Location ID" field of locations and networks (see
// scoping/locationid.h), the kind of an object (scoping/objecttype.h) and the
// top-most symbol selection, with the session state they read: the verbose
// switch and the field ids. Its Location ID and classification members hand
// that state to the logic, which takes it as arguments. Dispatcher thread
// only; the dispatcher decides when (see
// QxwEventDispatcher's location-tracking flags).
#ifndef SKIFF_SCOPING_NSP_H_
#define SKIFF_SCOPING_NSP_H_

#include <jni.h>

#include "platform/qxwrecords.h"
#include "platform/recordowners.h"
#include "scoping/nspfieldids.h"
#include "scoping/objecttype.h"

class ObjectSymbolInfoHashtable;
class QXwSubmapInfoHashtable;
class SubmapHashtable;

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

  // skiff::scoping::SetLocationIDFieldIfNeeded on that map with the
  // session's field ids and verbose switch.
  static void SetLocationIDFieldIfNeeded(QXwMapInfo* pMap, const QXwSymbolInfo* pSymbolInfo);
  // skiff::scoping::SynchronizeLocationIDFieldForSubLocations / ...ForNetworks
  // on that map with the session's field ids and verbose switch.
  static void SynchronizeLocationIDFieldForSubLocations(QXwMapInfo* pMap);
  static void SynchronizeLocationIDFieldForNetworks(QXwMapInfo* pMap);
  // Every object whose "isNetwork" is true, as a list the caller releases
  // with QXwDbFreeObjectIdList; null when there is none.
  static QXwObjectIdList* GetNetworkObjectIds();

  // skiff::scoping::GetObjectType with the session's field ids.
  static TOPLEVEL_OBJECT_TYPE GetObjectType(QXwObjectId objectId, const char* selectionName);

  // skiff::scoping::SetLocationIDField, MaybeSetObjectLocationIDField and
  // ResetObjectLocationIDFields with the session's field ids and verbose
  // switch.
  static void SetLocationIDField(const QXwSymbolInfo* pSymbolInfo,
                                 const QXwSubmapInfo* pSubmapInfo);
  static int MaybeSetObjectLocationIDField(QXwObjectId objectId, QXwMapInfo* pMap);
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
  // skiff::scoping::IsFieldAndValueIsTrue.
  static int IsFieldAndValueIsTrue(const QXwFieldBinding* pFieldBinding,
                                   QXwFieldId capabilityFieldId);

  // Resolves the field ids with InitializeField.
  friend skiff::scoping::NSPFieldIds skiff::scoping::ResolveNSPFieldIds();
};

#endif  // SKIFF_SCOPING_NSP_H_
