// QxwEventDispatcher: the one session with the map platform and the Java
// dispatcher object that receives map content and map changes.
//
// The dispatcher thread calls connect and then listenForEvents; it alone
// calls the platform and the Java dispatcher object: inside connect, inside
// the platform's event handlers and inside the request server, which the
// event loop runs whenever a client request arrives. Client threads read
// only the request server's port and the root submap id.
#ifndef SKIFF_DISPATCHER_MAIN_H_
#define SKIFF_DISPATCHER_MAIN_H_

#include <jni.h>
#include <netinet/in.h>

#include <memory>

#include "bridge/javacall.h"
#include "dispatcher/fieldids.h"
#include "platform/qxw.h"
#include "platform/qxwdb.h"
#include "platform/recordowners.h"
#include "search/findobject.h"

class NetworkSubmapNodeInterfacesHashtable;
class ObjectSymbolInfoHashtable;
class QXwChildSubmapIdHashtable;
class QXwObjectIdHashtable;
class SubmapHashtable;
class SubmapSymbolInfoHashtable;

// The Java dispatcher object's methods, in the order Open resolves them
// (their ids are defined in dispatcher/main.cpp):
// X(name, JNI signature, kind). Each is the member m_<name>.
#define SKIFF_DISPATCHER_JAVA_METHODS(X)                                                         \
  X(beginMapSync, "()V", Instance)                                                               \
  X(endMapSync, "()V", Instance)                                                                 \
  X(submapInCache, "(I)Z", Instance)                                                             \
  X(qxwdbObjectInCache, "(I)Z", Instance)                                                        \
  X(addSubmap,                                                                                   \
    "(IILjava/lang/String;IZLjava/lang/String;)Lcom/quenda/skiff/trellis/server/Submap;",        \
    Instance)                                                                                    \
  X(addNodeSymbol,                                                                               \
    "(IILjava/lang/String;Ljava/lang/String;Ljava/lang/String;IIIIZIIIII)"                       \
    "Lcom/quenda/skiff/trellis/server/MapNodeSymbol;",                                           \
    Instance)                                                                                    \
  X(addParentPathInfo, "(I)V", Instance)                                                         \
  X(addParentLocationInfo, "(II)V", Instance)                                                    \
  X(addFoundSymbolInfo,                                                                          \
    "(Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;IIILjava/lang/String;I)V", Instance) \
  X(addConnectionSymbol,                                                                         \
    "(IILjava/lang/String;Ljava/lang/String;IIIIZII)"                                            \
    "Lcom/quenda/skiff/trellis/server/MapConnectionSymbol;",                                     \
    Instance)                                                                                    \
  X(getSymbolRowData, "(III)Ljava/lang/String;", Instance)                                       \
  X(synchronizeLayoutAppearance, "(I)V", Instance)                                               \
  X(printError, "(Ljava/lang/String;)V", Static)                                                 \
  X(getRootObjectSelectionNames, "()[Ljava/lang/String;", Instance)                              \
  X(getManageObjectList, "(I)[I", Instance)                                                      \
  X(getAckObjectList, "(I)[I", Instance)                                                         \
  X(getVisibilityStateSymbolIds, "()[I", Instance)                                               \
  X(getInterfaceAndNodeVisibilityStateObjectIds, "()[I", Instance)                               \
  X(getDeleteSymbolsObjectIds, "()[I", Instance)                                                 \
  X(qxwdbObjectFieldValuesInCache, "(I)Z", Instance)                                             \
  X(setQxwdbObjectFieldValues, "(ILjava/util/Properties;)V", Instance)                           \
  X(endSessionCB, "()V", Instance)                                                               \
  X(symbolHiddenCB, "(IIZ)V", Instance)                                                          \
  X(symbolUnhiddenCB, "(IIZ)V", Instance)                                                        \
  X(symbolStatusChangeCB, "(IIIZ)V", Instance)                                                   \
  X(symbolCreatedCB, "(Lcom/quenda/skiff/trellis/server/MapSymbol;I)V", Instance)                \
  X(symbolDeletedCB, "(IIZ)V", Instance)                                                         \
  X(symbolMovedCB, "(IIIIIIZZZ)V", Instance)                                                     \
  X(symbolNormalizeChangeCB, "(IIZ)V", Instance)                                                 \
  X(submapCreatedCB, "(II)V", Instance)                                                          \
  X(submapDeletedCB, "(II)V", Instance)                                                          \
  X(submapAutoLayoutChangeCB, "(IIZ)V", Instance)                                                \
  X(mapOpenCB, "(Ljava/lang/String;ZI)V", Instance)                                              \
  X(mapCloseCB, "(Ljava/lang/String;I)V", Instance)                                              \
  X(scopingNetworkCreatedCB, "(I[I)V", Instance)                                                 \
  X(scopingInterfacesCreatedCB, "([I[I)V", Instance)                                             \
  X(scopingInterfacesDeletedCB, "([I)V", Instance)

// The class the Java side requires. Its members are defined in ten files;
// each group below names its file.
class QxwEventDispatcher {
 public:
  QxwEventDispatcher() = delete;

  // The slots of the Java methods in a dispatcher peer's method table.
  enum MethodSlot {
#define SKIFF_JAVA_METHOD_SLOT(name, signature, kind) kSlot_##name,
    SKIFF_DISPATCHER_JAVA_METHODS(SKIFF_JAVA_METHOD_SLOT)
#undef SKIFF_JAVA_METHOD_SLOT
  };

  // Session state (dispatcher/main.cpp); zero or null until connect.
  static QXwMapInfo* m_pMap;  // the open map, null while none; replace it with SetMap
  static char* m_mapNameForLocationTracking;  // owned copy, or null
  static int m_thisQxwSessionEnablesLocationTracking;
  static int m_doInvokeJavaCallbacksForScopingUpdates;
  static int m_doSetLocationIDFieldInCallbacks;
  static int m_doSyncLocationIDFieldInSubLocations;
  static int m_doSyncLocationIDFieldInNetworks;
  static int m_doUseVerboseMode;
  // The platform has reported the end of the session.
  static bool m_sessionEnded;
  // The request server's listening address as the system assigned it.
  // Dispatcher thread only; set it with SetJavaCallbackSocketName, which
  // publishes its port to client threads (GetJavaCallbackSocketPort).
  static sockaddr_in m_JavaCallbackSocketName;

#define SKIFF_DECLARE_JAVA_METHOD(name, signature, kind) \
  static const skiff::jni::JavaMethod m_##name;
  SKIFF_DISPATCHER_JAVA_METHODS(SKIFF_DECLARE_JAVA_METHOD)
#undef SKIFF_DECLARE_JAVA_METHOD

#define SKIFF_DECLARE_FIELD_ID(member, name, fieldName) static QXwFieldId member;
  SKIFF_DISPATCHER_FIELDS(SKIFF_DECLARE_FIELD_ID)
#undef SKIFF_DECLARE_FIELD_ID

  // The session's life (dispatcher/main.cpp), down to the request server.

  // The Java dispatcher object in use with its class and method ids, bound
  // together (see bridge/javacall.h); null before the first connect. A
  // binding stays valid for the life of the process, so the dispatcher thread
  // may go on with one while a later connect publishes another. Any thread.
  static const skiff::jni::JavaPeer* Peer();
  // Binds the Java dispatcher object (a method that does not resolve is
  // reported and never called) and makes it the one in use. False when Java
  // fails.
  static bool Bind(JNIEnv* pEnv, jobject object);
  // Makes an earlier binding (or none) the one in use again.
  static void Restore(const skiff::jni::JavaPeer* peer);
  // Binds the Java dispatcher object; stores the map name for location
  // tracking (copied) and the four flags. Only before the session runs: the
  // dispatcher thread owns them afterwards. Always true.
  static bool Open(JNIEnv* pEnv, jobject object, const char* mapNameForLocationTracking,
                   bool doInvokeJavaCallbacksForScopingUpdates,
                   bool doSetLocationIDFieldInCallbacks, bool doSyncLocationIDFieldInSubLocations,
                   bool doSyncLocationIDFieldInNetworks);
  // Opens the platform session and everything that lives with it (the
  // caches, the field ids, the event handlers), starts the request server,
  // waits for the client's connection, then synchronizes the Location ID
  // fields if needed. True when the session is usable (also when the
  // platform has no map information).
  static bool Connect();
  // Runs the platform's event loop until it can deliver no more events
  // (saying so on standard error when that was not the end of the session),
  // then closes the request server's end of the client connection, so that
  // every later request fails at once instead of waiting for an answer.
  static void Listen();
  // Marks the calling thread as the dispatcher thread while it is inside
  // connect or listenForEvents, where it serves client requests.
  class DispatcherThreadScope {
   public:
    DispatcherThreadScope();
    ~DispatcherThreadScope();
    DispatcherThreadScope(const DispatcherThreadScope&) = delete;
    DispatcherThreadScope& operator=(const DispatcherThreadScope&) = delete;
  };
  // True on the dispatcher thread while it is inside connect or
  // listenForEvents. A client request made there could never be served (the
  // thread would wait on itself). Any thread.
  static bool OnDispatcherThread();

  // Resolves the database fields' ids (skiff::ResolveFieldIds) into the
  // s_*FieldId members; a field the database lacks keeps id 0.
  static void CacheFieldIds();
  // The ids CacheFieldIds stored, as one value.
  static skiff::FieldIds SessionFieldIds();
  // Stores the field's id in *pFieldId; false, with a message, when the
  // database has no such field.
  static bool InitializeField(QXwFieldId* pFieldId, const char* fieldName);
  // True when the map is open for writing and is the one named.
  static bool ShouldEnableLocationTracking(const QXwMapInfo* pMap,
                                           const char* mapNameForLocationTracking);

  static void SetVerbose(bool flag);
  // Reports an error text through the Java dispatcher class's printError.
  static void PrintError(const char* errorString);
  // The same with a context in front, cut to 1,023 bytes.
  static void PrintError(const char* context, const char* errorString);

  // The request server's port in network byte order; 0 until it is bound.
  // Any thread.
  static in_port_t GetJavaCallbackSocketPort();
  // Makes `name` the request server's listening address and publishes its
  // port to client threads.
  static void SetJavaCallbackSocketName(const sockaddr_in& name);
  // The open map's root submap id, 0 while no map is open. Any thread.
  static QXwSubmapId GetRootSubmapId();
  // Makes `pMap` the open map (the caller frees the previous one) and
  // publishes its root submap id to client threads.
  static void SetMap(QXwMapInfo* pMap);
  // Publishes the root submap id of the open map to client threads.
  static void PublishRootSubmapId(QXwSubmapId rootSubmapId);

  // The request server (channel/server.cpp): opens the listening socket,
  // reports the connection results to the Java client object, accepts the
  // library's own client connection and registers it with the event loop.
  static void EnableJavaCallbacks(bool connectionEstablished);
  // Serves the requests waiting on the client connection and answers them.
  static void ServiceJavaRequestCB(int socketDescriptor, void* userData);
  // Stops serving: unregisters the client connection and closes it.
  static void DisableJavaCallbacks();

  // Row data of a symbol (dispatcher/rowdata.cpp): the Java dispatcher
  // object's getSymbolRowData string, null when it gave none.
  static skiff::jni::LocalRef<jstring> GetSymbolRowData(QXwSymbolId symbolId, QXwObjectId objectId,
                                                        int propertySetIndex);

  // Submap contents (dispatcher/submap.cpp). Java receives a submap as one
  // addSubmap, then one addNodeSymbol or addConnectionSymbol per symbol in the
  // platform's order; node symbols bring their object's field values when
  // Java lacks them.

  // Reports the submap and its symbols. The large-database setting is read
  // afresh first, whether or not the submap exists. The Submap object that
  // addSubmap returned; null, with nothing reported, for an unknown submap.
  static skiff::jni::LocalRef<jobject> GetSubmapAndSymbols(QXwSubmapId submapId);
  // One addSubmap call; its result.
  static skiff::jni::LocalRef<jobject> AddSubmap(JNIEnv* pEnv, QXwObjectId parentObjectId,
                                                 QXwSubmapId submapId, const char* submapName,
                                                 int layoutStyle, bool doUseAutoLayout,
                                                 const char* backgroundGraphicsFile);
  // One addNodeSymbol call (customSubmapId 0 when the symbol is reported on
  // its own submap), then qxwdbObjectFieldValuesInCache and, when that says
  // false, setQxwdbObjectFieldValues. The MapNodeSymbol object.
  static skiff::jni::LocalRef<jobject> AddNodeSymbol(JNIEnv* pEnv, const QXwSymbolInfo* pSymbolInfo,
                                                     QXwSubmapId customSubmapId);
  // One addConnectionSymbol call; the MapConnectionSymbol object.
  static skiff::jni::LocalRef<jobject> AddConnectionSymbol(JNIEnv* pEnv,
                                                           const QXwSymbolInfo* pSymbolInfo);
  // The root submaps of a search: for numRootObjects 1 or more, the child
  // submaps of the objects named by getRootObjectSelectionNames (a length
  // other than numRootObjects is reported, and the names that came are
  // used); otherwise the open map's root submap alone.
  static std::unique_ptr<SubmapHashtable> GetRootSubmapsHashtable(JNIEnv* pEnv, int numRootObjects);

  // Object field values (dispatcher/fieldvalues.cpp).

  // A new Properties of the object's tool-tip fields (see
  // dispatcher/fieldvalues.h); empty for object 0 or an object without
  // field values. Null only when Java fails.
  static skiff::jni::LocalRef<jobject> GetObjectFieldValues(JNIEnv* pEnv, QXwObjectId objectId);
  // True for the fourteen tool-tip fields. The first call takes their ids,
  // so it must come after CacheFieldIds.
  static bool IsToolTipField(QXwFieldId fieldId);

  // Map state operations (state/objectstates.cpp: acknowledge and manage;
  // state/visibility.cpp: the four visibility members; state/deletion.cpp:
  // deletion). Each fetches its ids from the Java
  // dispatcher object; when the callback gives no array, or one whose length
  // differs from the count, it writes its failure line and changes nothing.
  // Platform failures are written on standard error; none reaches the caller.

  // Acknowledges (1) or unacknowledges (0) the objects of getAckObjectList.
  static void SetAcknowledgeState(int numObjs, int doAcknowledge);
  // Manages (1) or unmanages (any other state) the objects of
  // getManageObjectList.
  static void SetManageState(int numObjs, int doManage);
  // Hides (1) or shows (0) the symbols of getVisibilityStateSymbolIds.
  static void SetSymbolVisibilityState(int numSymbols, int doSetHidden);
  // Hides (1) or shows (0), for each interface of
  // getInterfaceAndNodeVisibilityStateObjectIds, its symbol on its node's
  // submap and its node's symbols on the segment and network submaps; a
  // node's network symbol is hidden only when none of the node's other
  // interfaces on that network stays visible. One platform call for all.
  static void SetInterfaceAndNodeVisibilityState(int numInterfaceObjects, int doSetHidden);
  // Finds the interface's symbol on the node's submap and the node's symbols
  // on the segment's and the network's submaps. An output not found keeps its
  // value; nothing is found when the segment has no child submap.
  static void GetAssociatedIPMapSymbolsInvolvedInVisibilityChange(
      QXwObjectId interfaceObjectId, QXwObjectId nodeObjectId, QXwObjectId segmentObjectId,
      QXwObjectId networkObjectId, QXwChildSubmapIdHashtable* pChildSubmapIdHashtable,
      ObjectSymbolInfoHashtable* pSymbolInfoHashtable, QXwSymbolId* pInterfaceSymbolId,
      QXwSymbolId* pSegmentNodeSymbolId, QXwSymbolId* pNetworkNodeSymbolId);
  // True when the node's symbol on the network's submap is to take the
  // requested state: always when showing; when hiding, only if every
  // interface of the node on that network is hidden or is being hidden now
  // (the interfaces of pInterfaceObjectIdHashtable).
  static QXwBoolean DoSetNetworkSubmapNodeSymbolHidden(
      QXwObjectId nodeObjectId, QXwObjectId networkObjectId, int doSetHidden,
      SubmapSymbolInfoHashtable* pNodeSubmapSymbolInfoHashtable,
      QXwChildSubmapIdHashtable* pChildSubmapIdHashtable,
      NetworkSubmapNodeInterfacesHashtable* pNetworkSubmapNodeInterfacesHashtable,
      QXwObjectIdHashtable* pInterfaceObjectIdHashtable);
  // Deletes every symbol of each object of getDeleteSymbolsObjectIds, one
  // platform call per object that has a symbol list (also an empty one);
  // objects the platform gives no list for are passed over.
  static void DeleteAllSymbolsForObjects(int numObjects);

  // Search (search/matchingsymbols.cpp).

  // Reports, with one addFoundSymbolInfo each, the symbols of the objects
  // that match the query (see FindSymbol::ForEachFoundSymbol); for
  // numRootObjects 1 or more only those within the scope of the Java side's
  // root objects. Nothing when no object matches or the query makes no
  // clause. The collection service is open only while the query is
  // evaluated.
  static void GetMatchingSymbols(QUERY_CATEGORY_TYPE queryCategoryType,
                                 QUERY_MATCH_TYPE queryMatchType, const char* queryString,
                                 int numRootObjects);
  // One addFoundSymbolInfo call; a null text reaches Java as "".
  static void AddFoundSymbolInfo(JNIEnv* pEnv, const char* symbolLabel, const char* submapName,
                                 const char* objectSelectionName, QXwObjectId objectId,
                                 QXwSymbolId symbolId, QXwSubmapId submapId, const char* symbolType,
                                 QXwStatusType symbolStatus);
  // The selection name of the node with that host name or address (the
  // database's own look-up), else of the node of the first interface, in
  // the database's order, that carries the address and whose "TopM Node ID"
  // can be read. A copy that the caller releases with free; null when no
  // node is found.
  static char* GetNodeSelectionNameGivenHostnameOrIPAddress(const char* hostnameOrIPAddress);

  // Parent paths and other symbols (search/pathrequests.cpp). Each reports
  // to Java before the request is answered.

  // One addParentPathInfo call.
  static void AddParentPathInfo(JNIEnv* pEnv, QXwSymbolId symbolId);
  // The path from the scope of the root objects down to the symbol, any
  // application carrying it, then the symbol itself (also when no path was
  // found).
  static void RecreateSymbolParentPath(QXwSymbolId symbolId, QXwSubmapId submapSymbolLivesOn,
                                       int numRootObjects);
  // Chooses the symbol of the object named selectionName (inside the child
  // submap of parentSelectionName when that is not empty, else its top-most
  // IP topology symbol within the scope), reports it with addNodeSymbol for
  // a non-zero customSubmapId, and when asked its IP topology path then
  // itself.
  static void GetNodeSymbol(const char* selectionName, const char* parentSelectionName,
                            int customSubmapId, int doRecreateParentPath, int numRootObjects);
  // The object's other icon symbols, within the scope when root objects are
  // given (see FindSymbol::AddOtherSymbolsInfo).
  static void GetOtherSymbols(QXwSymbolId symbolId, QXwObjectId objectId, int numRootObjects);

  // Location scoping (scoping/locationscoping.cpp).

  // Reports every network with the locations that contain it, then makes
  // the open map the one whose locations are tracked.
  static void GetLocationScopingInfo();
  // One addParentLocationInfo call.
  static void AddParentLocationInfo(JNIEnv* pEnv, QXwObjectId networkObjectId,
                                    QXwObjectId parentLocationObjectId);
  // One scopingNetworkCreatedCB call with the locations as an int array.
  static void ScopingNetworkCreatedCB(JNIEnv* pEnv, QXwObjectId networkObjectId,
                                      int numParentLocations,
                                      const QXwObjectId* pParentLocationObjectIds);

  // Map events (dispatcher/events.cpp). The platform calls these handlers on
  // the dispatcher thread, inside the event loop. Changes to submaps Java has
  // loaded come inside beginMapSync ... endMapSync, which closes on every
  // path; each submap they touched then gets its node positions reported
  // again and synchronizeLayoutAppearance, once. A missing symbol list counts
  // as empty.

  // Registers the handlers of the fifteen events, the interface-object events
  // with the filter "isInterface" = TRUE. A registration that fails is
  // reported and the others are still made; true when none failed. Needs the
  // cached field ids.
  static bool AddQXwCallbacks();
  // Hidden, unhidden, created and deleted symbols: reported only for loaded
  // submaps, each touched submap refreshed; the bracket is always made.
  static void SymbolsHiddenCB(void* userData, int eventType, QXwMapInfo* pMap,
                              QXwSymbolList* pSymbols);
  static void SymbolsUnhiddenCB(void* userData, int eventType, QXwMapInfo* pMap,
                                QXwSymbolList* pSymbols);
  // A node symbol is reported with addNodeSymbol (and its object's field
  // values when Java lacks them), a connection with addConnectionSymbol; then
  // symbolCreatedCB with that symbol object.
  static void SymbolsCreatedCB(void* userData, int eventType, QXwMapInfo* pMap,
                               QXwSymbolList* pSymbols);
  static void SymbolsDeletedCB(void* userData, int eventType, QXwMapInfo* pMap,
                               QXwSymbolList* pSymbols);
  // Every symbol's new status, loaded submap or not; no bracket.
  static void SymbolsStatusChangeCB(void* userData, int eventType, QXwMapInfo* pMap,
                                    QXwSymbolList* pSymbols);
  // Inside a bracket: a node symbol placed by coordinates or after another
  // symbol is reported and its submap refreshed; anything else reports
  // nothing.
  static void SymbolMovedCB(void* userData, int eventType, QXwMapInfo* pMap,
                            QXwSymbolInfo* pSymbol);
  // Node symbols only.
  static void SymbolNormalizeChangeCB(void* userData, int eventType, QXwMapInfo* pMap,
                                      QXwSymbolInfo* pSymbol, QXwBoolean isNormalized);
  // Each submap of the list, loaded or not; nothing without a list. A deleted
  // submap reaches the scoping cache before Java hears of it.
  static void SubmapsCreatedCB(void* userData, int eventType, QXwMapInfo* pMap,
                               QXwSubmapList* pSubmaps);
  static void SubmapsDeletedCB(void* userData, int eventType, QXwMapInfo* pMap,
                               QXwSubmapList* pSubmaps);
  // Switched off: submapAutoLayoutChangeCB alone. Switched on: inside a
  // bracket, with the submap refreshed after it.
  static void SubmapAutoLayoutChangeCB(void* userData, int eventType, QXwMapInfo* pMap,
                                       QXwSubmapInfo* pSubmap);
  // Reports the position of every node symbol of the submap (any placement)
  // with symbolMovedCB, moreToFollow false for the last one only.
  static void RefreshSubmapSymbolPositions(JNIEnv* pEnv, QXwSubmapId submapId);

  // Session events (dispatcher/session.cpp).

  // The platform session is closed before Java hears of the end; the field
  // information and scoping caches are closed after.
  static void EndSessionCB(void* userData, int eventType, QXwBoolean normalEnd);
  // Takes the new map's information, decides location tracking again and
  // reports the root submap with its symbols before mapOpenCB. Nothing
  // without map information. When the platform gives no copy of the new
  // map's information, its root submap id is still published, and the next
  // request takes the copy (TakeMissingMapInfo).
  static void MapOpenCB(void* userData, int eventType, QXwMapInfo* pMap,
                        QXwFieldBindList* pConfigParams);
  // Before a request is served: when the platform gave no copy of the
  // information of the map opened last, takes it now, with what the map
  // open decides from it (location tracking and its synchronization), so
  // that a passing platform failure does not leave that map unserved.
  static void TakeMissingMapInfo();
  // mapCloseCB when the event names the map; then, in every case, the map
  // information is taken afresh and the close acknowledged, last.
  static void MapCloseCB(void* userData, int eventType, QXwMapInfo* pMap, time_t closingTime);
  // Brings the Location ID fields up to date when this session tracks
  // locations, as the two synchronization flags ask.
  static void SynchronizeLocationTrackingIfNeeded();
  // The "TopM Node ID" values of the listed objects (a missing list counts as
  // empty), in list order; null when the platform gives none.
  static skiff::ObjectFieldValueListPtr GetTopMNodeIdFieldValueList(
      const QXwObjectList* pObjectList);
  // With scoping updates on: scopingInterfacesCreatedCB with the interfaces
  // that have a node and those nodes; nothing when none has one.
  static void CreateInterfaceObjectsCB(void* userData, int eventType, QXwMapInfo* pMap,
                                       QXwObjectList* pObjects);
  // With scoping updates on: scopingInterfacesDeletedCB with every object of
  // the event, also none.
  static void DeleteInterfaceObjectsCB(void* userData, int eventType, QXwMapInfo* pMap,
                                       QXwObjectList* pObjects);
};

#endif  // SKIFF_DISPATCHER_MAIN_H_
