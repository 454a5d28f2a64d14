// FindSymbol: what a platform symbol is, and whether it lies within the part
// of the submap hierarchy that Java shows. The search, path and scoping
// operations all decide with these rules and no others.
//
// Every rule here is a pure function of the records passed in, except
// GetIPInternetSubmapId, which asks the platform, and SymbolIsWithinScope,
// which reads the platform through the caller's caches. Text tests are
// byte-exact and case-sensitive; a null text never matches. Dispatcher
// thread only.
#ifndef SKIFF_SEARCH_FINDSYMBOL_H_
#define SKIFF_SEARCH_FINDSYMBOL_H_

#include <jni.h>

#include <functional>

#include "platform/qxwrecords.h"

class ObjectSymbolInfoHashtable;
class QXwObjectIdHashtable;
class QXwSubmapInfoHashtable;
class SubmapHashtable;

class FindSymbol {
 public:
  FindSymbol() = delete;

  // The application whose submaps and symbols make up the IP topology.
  static constexpr const char* kIPTopologyAppName = "IP Map";

  // Predicates: 1 for true, 0 for false; a null record is 0.

  // The submap's app_name is "IP Map".
  static int IsInIPTopology(const QXwSubmapInfo* pSubmapInfo);
  // One of the symbol's first apps.count application names is "IP Map".
  static int IsInIPTopology(const QXwSymbolInfo* pSymbolInfo);
  // The symbol type begins with "Location:" / "Network:".
  static int IsLocationSymbol(const QXwSymbolInfo* pSymbolInfo);
  static int IsNetworkSymbol(const QXwSymbolInfo* pSymbolInfo);
  // The plane is exactly the application (2) / user (4) plane.
  static int IsOnAppPlane(const QXwSymbolInfo* pSymbolInfo);
  static int IsOnUserPlane(const QXwSymbolInfo* pSymbolInfo);
  // The variety is icon (1) / connection (2); a meta-connection is a
  // connection that the platform marks so.
  static int IsIconSymbol(const QXwSymbolInfo* pSymbolInfo);
  static int IsConnectionSymbol(const QXwSymbolInfo* pSymbolInfo);
  static int IsMetaConnection(const QXwSymbolInfo* pSymbolInfo);

  // Cursor iterators. `fromIndex` is where the next scan starts: the caller
  // sets it to 0 before the first call on a list and passes the same variable
  // to every later call on that list. Each returns the next qualifying symbol
  // (a pointer into the list) and moves the cursor past it; at the end of the
  // list it sets the cursor to count and returns null. A null list returns
  // null and leaves the cursor alone. Filters, in order: the application
  // plane when asked, the kind, then the IP topology when asked.

  // The next explodable symbol: an icon, or also a meta-connection when
  // doIncludeMetaConnSymbols is non-zero.
  static QXwSymbolInfo* GetNextExplodableSymbol(QXwSymbolList* pSymbolList, int& fromIndex,
                                                int doRestrictToIPTopology,
                                                int doRestrictToApplicationPlane,
                                                int doIncludeMetaConnSymbols);
  // The next icon that is a location symbol.
  static QXwSymbolInfo* GetNextLocationSymbol(QXwSymbolList* pSymbolList, int& fromIndex,
                                              int doRestrictToIPTopology,
                                              int doRestrictToApplicationPlane);
  // The next meta-connection (no topology filter).
  static QXwSymbolInfo* GetNextMetaConnSymbol(QXwSymbolList* pSymbolList, int& fromIndex,
                                              int doRestrictToApplicationPlane);

  // The child submap of the object named "IP Internet", or 0 when there is no
  // such object or it has no child submap. Asks the platform every time.
  static QXwSubmapId GetIPInternetSubmapId(QXwMapInfo* pMap);

  // 1 when the submap `submapSymbolLivesOn` is within the scope: it is one of
  // the roots, or its parent object has an application-plane explodable
  // symbol (meta-connections included; in the IP topology too when
  // doRestrictToIPTopology is non-zero) on a submap within the scope. A root
  // is within scope without any platform call. Submaps and symbol lists come
  // through the two caches, so one operation's walks fetch each at most once
  // (see search/climb.h for how a cycle ends). `pEnv` and `symbolId` name the
  // symbol being tested and do not change the result.
  static int SymbolIsWithinScope(JNIEnv* pEnv, QXwMapInfo* pMap, QXwSymbolId symbolId,
                                 QXwSubmapId submapSymbolLivesOn,
                                 SubmapHashtable* pRootSubmapsHashtable, int doRestrictToIPTopology,
                                 QXwSubmapInfoHashtable* pSubmapInfoHashtable,
                                 ObjectSymbolInfoHashtable* pSymbolInfoHashtable);

  // One found symbol: the symbol, the name of the submap it lives on ("" when
  // the submap cannot be fetched) and its object's selection name ("" when
  // it has none).
  using FoundSymbolSink = std::function<void(const QXwSymbolInfo& symbol, const char* submapName,
                                             const char* selectionName)>;
  // Hands `sink` every symbol of the listed objects that a search reports,
  // object by object in list order and each object's symbols in the
  // platform's order: every icon and connection symbol when the scope is
  // unrestricted, otherwise only those within the scope (IP topology walks).
  static void ForEachFoundSymbol(QXwMapInfo* pMap, const QXwObjectIdList* pObjectIdList,
                                 int isScopeUnrestricted, SubmapHashtable* pRootSubmapsHashtable,
                                 const FoundSymbolSink& sink);
  // Reports those symbols to Java, one addFoundSymbolInfo each.
  static void AddFoundSymbolsInfo(JNIEnv* pEnv, QXwMapInfo* pMap,
                                  const QXwObjectIdList* pObjectIdList, int isScopeUnrestricted,
                                  SubmapHashtable* pRootSubmapsHashtable);
  // Reports to Java, with addFoundSymbolInfo, the object's icon symbols
  // other than symbolId, in the platform's order; when the scope is
  // restricted, only those within it.
  static void AddOtherSymbolsInfo(JNIEnv* pEnv, QXwMapInfo* pMap, QXwSymbolId symbolId,
                                  QXwObjectId objectId, int isScopeUnrestricted,
                                  SubmapHashtable* pRootSubmapsHashtable);

  // Parent paths (search/parentpath.cpp). A path climbs from a submap
  // through the symbols of each submap's parent object until it reaches a
  // submap of the scope. At each level the first symbol, in the platform's
  // order, whose own climb succeeds is taken (search/climb.h).

  // Receives the symbols of a path, one at a time, from the top down.
  using PathSink = std::function<void(QXwSymbolId symbolId)>;
  // Hands `sink` the parent path of a symbol living on submapSymbolLivesOn,
  // without the symbol itself: when the top is not the map's root submap,
  // first the symbol by which the whole map shows the top submap's parent
  // object (0 when there is none, or when the top submap cannot be
  // fetched); then, from the top down, the symbol on each level that opens
  // the next. Application-plane symbols are tried first and any plane only
  // when they give no path; unrestricted walks may also pass through a
  // meta-connection at the first level. 1 when a path was found (a failed
  // walk hands out nothing).
  static int RecreateParentPath(JNIEnv* pEnv, QXwMapInfo* pMap, QXwSymbolId symbolId,
                                QXwSubmapId submapSymbolLivesOn,
                                SubmapHashtable* pRootSubmapsHashtable, int doRestrictToIPTopology,
                                const PathSink& sink);
  // The same, reporting each symbol to Java with addParentPathInfo.
  static int RecreateParentPath(JNIEnv* pEnv, QXwMapInfo* pMap, QXwSymbolId symbolId,
                                QXwSubmapId submapSymbolLivesOn,
                                SubmapHashtable* pRootSubmapsHashtable, int doRestrictToIPTopology);
  // Adds to pObjectIdHashtable the locations on the first path (through
  // application-plane IP topology location symbols) from submapSymbolLivesOn
  // up to the scope; 1 when such a path exists (nothing is added for a
  // submap of the scope). symbolId and networkObjectId name what is examined
  // and do not change the result.
  static int GetParentLocations(QXwMapInfo* pMap, QXwSymbolId symbolId,
                                QXwSubmapId submapSymbolLivesOn, QXwObjectId networkObjectId,
                                QXwSubmapInfoHashtable* pSubmapInfoHashtable,
                                ObjectSymbolInfoHashtable* pSymbolInfoHashtable,
                                SubmapHashtable* pRootSubmapsHashtable,
                                QXwObjectIdHashtable* pObjectIdHashtable);

  // Location scoping (scoping/locationscoping.cpp): the locations that
  // contain each network, up to the "IP Internet" child submap.

  // Reports addParentLocationInfo(network, location) for each network of the
  // list, once per application-plane IP topology symbol of it, for each
  // location on the path from that symbol's submap up to
  // ipInternetSubmapId. Networks on one submap share one walk.
  static void AddNetworkToLocationScopingInfo(JNIEnv* pEnv, QXwMapInfo* pMap,
                                              const QXwObjectIdList* pNetworkObjectIdList,
                                              QXwSubmapId ipInternetSubmapId);
  // 0 when the symbol's object has an application-plane IP topology icon and
  // the first such lies on a submap whose layout style is not 6; else 1.
  static int NoSiblingsOnIPMapAppPlane(QXwMapInfo* pMap, const QXwSymbolInfo* pSymbolInfo);
  // For a new network symbol on the application plane of the IP topology
  // (or elsewhere when NoSiblingsOnIPMapAppPlane says so): reports its
  // object with the locations above it, with scopingNetworkCreatedCB (also
  // when there are none).
  static void InvokeScopingNetworkCreatedCallbackIfNeeded(JNIEnv* pEnv, QXwMapInfo* pMap,
                                                          const QXwSymbolInfo* pSymbolInfo,
                                                          QXwSubmapId ipInternetSubmapId);
};

#endif  // SKIFF_SEARCH_FINDSYMBOL_H_
