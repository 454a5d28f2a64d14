// QxwInterface: the client side of the request channel, used by every Java
// thread but the dispatcher thread.
//
// Each request operation sends one request on the one shared connection to
// the dispatcher thread and waits for its answer; a request and its answer
// are exchanged under one lock, so Java threads may call at the same time.
// The results themselves reach Java through the dispatcher object's methods
// before the answer comes.
#ifndef SKIFF_CHANNEL_QXWINTERFACE_H_
#define SKIFF_CHANNEL_QXWINTERFACE_H_

#include <jni.h>
#include <netinet/in.h>

#include "bridge/javacall.h"
#include "platform/qxwrecords.h"

// The connected client socket; 0 while there is no connection. Read and
// written under the request lock only.
extern int s_ThreadCallbackSocketDescriptor;

class QxwInterface {
 public:
  QxwInterface() = delete;

  static const skiff::jni::JavaMethod m_printError;            // static
  static const skiff::jni::JavaMethod m_setConnectionResults;  // instance
  static int m_doUseVerboseMode;

  // Binds the Java client object with its two methods and makes it the one
  // in use (an earlier binding stays valid for whoever holds it). Always
  // true.
  static bool Open(JNIEnv* pEnv, jobject object);
  // The Java client object in use, with its class and method ids; null
  // before open. Any thread.
  static const skiff::jni::JavaPeer* Peer();
  // Closes the connection; later requests are not sent.
  static void Close();
  // Makes the one connection to the request server, from a socket bound to
  // 127.0.0.1 whose port is published first (the server accepts only that
  // peer). True when connected. Called under the request lock.
  static bool Connect();
  // The port of the client's socket in network byte order, 0 before Connect
  // has bound it. Any thread.
  static in_port_t GetClientPort();
  static void SetVerbose(bool flag);
  // Reports the outcome of start-up to the Java client object (dispatcher
  // thread); a null map name reaches Java as the empty string.
  static void SetConnectionResults(bool connectionEstablished, const char* mapName,
                                   bool isReadOnly);
  // Reports an error text through the Java client class's printError.
  static void PrintError(const char* errorString);
  // The same with a context in front, cut to 1,023 bytes.
  static void PrintError(const char* context, const char* errorString);

  // The request operations, one per request code. Requests 1 and 2 return
  // the answer; a request that was not sent, or whose answer could not be
  // read, counts as answered 0. A request is refused with a message, and not
  // sent, when it would not fit in a message, when a text argument holds a
  // vertical tab, or when it is made on the dispatcher thread (from inside a
  // callback), which could never serve it.

  // Connects first when there is no connection yet; submap 0 stands for the
  // open map's root submap.
  static bool GetSubmapAndSymbols(QXwSubmapId submapId);
  static bool GetSymbolRowData(QXwSymbolId symbolId, QXwObjectId objectId, int propertySetIndex);
  static void GetNodeSymbol(const char* selectionName, const char* parentSelectionName,
                            QXwSubmapId customSubmapId, bool doRecreateParentPath);
  static void GetNodeParentPath(const char* hostnameOrIPAddress, const char* parentSelectionName,
                                int numRootObjects);
  static void GetSymbolParentPath(QXwSymbolId symbolId, QXwSubmapId submapSymbolLivesOn,
                                  int numRootObjects);
  static void GetOtherSymbols(QXwSymbolId symbolId, QXwObjectId objectId, int numRootObjects);
  static void GetMatchingSymbols(int queryCategoryType, int queryMatchType, const char* queryString,
                                 int numRootObjects);
  static void GetLocationScopingInfo();
  static void SetAcknowledgeState(int numObjs, bool doAcknowledge);
  static void SetManageState(int numObjs, bool doManage);
  static void SetSymbolVisibilityState(int numSymbols, bool doSetHidden);
  static void SetInterfaceAndNodeVisibilityState(int numInterfaceObjects, bool doSetHidden);
  static void DeleteAllSymbolsForObjects(int numObjects);
};

#endif  // SKIFF_CHANNEL_QXWINTERFACE_H_
