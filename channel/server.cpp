// The request server: the dispatcher thread's end of the request channel.
// EnableJavaCallbacks starts it during connect; from then on the platform's
// event loop calls ServiceJavaRequestCB whenever the client connection is
// readable, and each request is served to its end, answer included, before
// the loop takes the next event.
#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "bridge/tracescope.h"
#include "channel/protocol.h"
#include "channel/qxwinterface.h"
#include "channel/socketio.h"
#include "dispatcher/main.h"
#include "tables/keyedtable.h"

using skiff::channel::kMessageSize;
using skiff::channel::MessageAssembler;
using skiff::channel::RequestCode;

namespace {

// The client connection's registration with the event loop, 0 while none.
QXwInputId s_clientInput = 0;
// What has arrived of the request being received.
MessageAssembler s_received;

// Serves one request from its argument text; returns what the answer
// reports.
using ServeRequest = bool (*)(char* arguments);

bool ServeSubmapAndSymbols(char* arguments) {
  auto [submapId] = skiff::channel::ParseNumbers<1>(arguments);
  return static_cast<bool>(QxwEventDispatcher::GetSubmapAndSymbols(submapId));
}

bool ServeSymbolRowData(char* arguments) {
  auto [symbolId, objectId, propertySetIndex] = skiff::channel::ParseNumbers<3>(arguments);
  return static_cast<bool>(
      QxwEventDispatcher::GetSymbolRowData(symbolId, objectId, propertySetIndex));
}

// A node's symbol, and its path when asked; the node requests always look
// within the map's own root (no root objects).
bool ServeNodeSymbol(char* arguments) {
  skiff::channel::NodeSymbolRequest request = skiff::channel::ParseNodeSymbol(arguments);
  QxwEventDispatcher::GetNodeSymbol(request.selectionName, request.parentSelectionName,
                                    request.customSubmapId, request.doRecreateParentPath, 0);
  return true;
}

// The path to the node with that host name or address; nothing when there
// is no such node.
bool ServeNodeParentPath(char* arguments) {
  skiff::channel::NodeParentPathRequest request = skiff::channel::ParseNodeParentPath(arguments);
  skiff::OwnedText name(QxwEventDispatcher::GetNodeSelectionNameGivenHostnameOrIPAddress(
      request.hostnameOrIPAddress));
  if (name != nullptr) {
    QxwEventDispatcher::GetNodeSymbol(name.get(), request.parentSelectionName, 0, 1,
                                      request.numRootObjects);
  }
  return true;
}

// A symbol's path; nothing for a symbol or submap id of 0.
bool ServeSymbolParentPath(char* arguments) {
  auto [symbolId, submapId, numRootObjects] = skiff::channel::ParseNumbers<3>(arguments);
  if (symbolId != 0 && submapId != 0) {
    QxwEventDispatcher::RecreateSymbolParentPath(symbolId, submapId, numRootObjects);
  }
  return true;
}

bool ServeOtherSymbols(char* arguments) {
  auto [symbolId, objectId, numRootObjects] = skiff::channel::ParseNumbers<3>(arguments);
  QxwEventDispatcher::GetOtherSymbols(symbolId, objectId, numRootObjects);
  return true;
}

bool ServeLocationScopingInfo(char*) {
  QxwEventDispatcher::GetLocationScopingInfo();
  return true;
}

// A search: the query text comes last, whole.
bool ServeMatchingSymbols(char* arguments) {
  skiff::channel::MatchingSymbolsRequest request = skiff::channel::ParseMatchingSymbols(arguments);
  QxwEventDispatcher::GetMatchingSymbols(
      static_cast<QUERY_CATEGORY_TYPE>(request.queryCategoryType),
      static_cast<QUERY_MATCH_TYPE>(request.queryMatchType), request.queryString,
      request.numRootObjects);
  return true;
}

// The map state requests carry a count and, all but deletion, a state: 1
// acknowledges, manages or hides, any other number undoes. They are answered
// 1 whatever happened; failures are reported on standard error.
bool ServeAcknowledgeState(char* arguments) {
  auto [numObjs, state] = skiff::channel::ParseNumbers<2>(arguments);
  QxwEventDispatcher::SetAcknowledgeState(numObjs, state == 1);
  return true;
}

bool ServeManageState(char* arguments) {
  auto [numObjs, state] = skiff::channel::ParseNumbers<2>(arguments);
  QxwEventDispatcher::SetManageState(numObjs, state == 1);
  return true;
}

bool ServeSymbolVisibilityState(char* arguments) {
  auto [numSymbols, state] = skiff::channel::ParseNumbers<2>(arguments);
  QxwEventDispatcher::SetSymbolVisibilityState(numSymbols, state == 1);
  return true;
}

bool ServeInterfaceAndNodeVisibilityState(char* arguments) {
  auto [numInterfaceObjects, state] = skiff::channel::ParseNumbers<2>(arguments);
  QxwEventDispatcher::SetInterfaceAndNodeVisibilityState(numInterfaceObjects, state == 1);
  return true;
}

bool ServeDeleteAllSymbolsForObjects(char* arguments) {
  auto [numObjects] = skiff::channel::ParseNumbers<1>(arguments);
  QxwEventDispatcher::DeleteAllSymbolsForObjects(numObjects);
  return true;
}

// The serving operation of each request code. A code that has none here is
// answered "0".
struct Service {
  RequestCode code;
  ServeRequest serve;
};
constexpr Service kServices[] = {
    {skiff::channel::kGetSubmapAndSymbols, ServeSubmapAndSymbols},
    {skiff::channel::kGetSymbolRowData, ServeSymbolRowData},
    {skiff::channel::kGetNodeSymbol, ServeNodeSymbol},
    {skiff::channel::kGetNodeParentPath, ServeNodeParentPath},
    {skiff::channel::kGetSymbolParentPath, ServeSymbolParentPath},
    {skiff::channel::kGetOtherSymbols, ServeOtherSymbols},
    {skiff::channel::kGetMatchingSymbols, ServeMatchingSymbols},
    {skiff::channel::kGetLocationScopingInfo, ServeLocationScopingInfo},
    {skiff::channel::kSetAcknowledgeState, ServeAcknowledgeState},
    {skiff::channel::kSetManageState, ServeManageState},
    {skiff::channel::kSetSymbolVisibilityState, ServeSymbolVisibilityState},
    {skiff::channel::kSetInterfaceAndNodeVisibilityState, ServeInterfaceAndNodeVisibilityState},
    {skiff::channel::kDeleteAllSymbolsForObjects, ServeDeleteAllSymbolsForObjects},
};

bool Serve(char* message) {
  skiff::channel::Request request = skiff::channel::SplitRequest(message);
  for (const Service& service : kServices) {
    if (service.code == request.code) return service.serve(request.arguments);
  }
  return false;
}

void Answer(int socketDescriptor, bool result) {
  skiff::channel::Message answer;
  size_t length = skiff::channel::FormatAnswer(answer, result);
  if (!skiff::channel::SendAll(socketDescriptor, answer.data(), length)) {
    std::fprintf(stderr,
                 "QxwEventDispatcher::ServiceJavaRequestCB: send() failed (sock:%d error:%d)\n",
                 socketDescriptor, errno);
  }
}

// Records the listening socket's address, then publishes its port to client
// threads.
void PublishListeningAddress(int listener) {
  sockaddr_in bound{};
  socklen_t length = sizeof(bound);
  if (getsockname(listener, reinterpret_cast<sockaddr*>(&bound), &length) != 0) {
    std::fprintf(stderr,
                 "QxwEventDispatcher::EnableJavaCallbacks:  getsockname() failed (error: %d)\n",
                 errno);
    return;
  }
  QxwEventDispatcher::SetJavaCallbackSocketName(bound);
}

// Accepts connections until the library's own client connects: from
// 127.0.0.1, from the port it published. Any other connection is closed.
// The accepted socket, or -1.
int AcceptOwnClient(int listener) {
  for (;;) {
    sockaddr_in peer{};
    socklen_t length = sizeof(peer);
    int connection = accept4(listener, reinterpret_cast<sockaddr*>(&peer), &length, SOCK_CLOEXEC);
    if (connection < 0) {
      if (errno == EINTR || errno == ECONNABORTED) continue;
      std::fprintf(
          stderr, "QxwEventDispatcher::EnableJavaCallbacks:  accept() failed (error: %d)\n", errno);
      return -1;
    }
    if (peer.sin_family == AF_INET && peer.sin_addr.s_addr == htonl(INADDR_LOOPBACK) &&
        peer.sin_port == QxwInterface::GetClientPort()) {
      return connection;
    }
    char address[INET_ADDRSTRLEN] = "?";
    inet_ntop(AF_INET, &peer.sin_addr, address, sizeof(address));
    std::fprintf(stderr,
                 "QxwEventDispatcher::EnableJavaCallbacks: refused a connection from %s:%d\n",
                 address, ntohs(peer.sin_port));
    close(connection);
  }
}

// The accepted client connection, -1 while none.
int s_clientConnection = -1;

// Stops watching the client connection and closes it; nothing without one.
void CloseClientConnection() {
  if (s_clientInput != 0) QXwRemoveInput(s_clientInput);
  s_clientInput = 0;
  if (s_clientConnection >= 0) close(s_clientConnection);
  s_clientConnection = -1;
  s_received.Clear();
}

// The client closed the connection: stop watching it and close it.
void EndOfStream(int socketDescriptor) {
  CloseClientConnection();
  if (QxwEventDispatcher::m_doUseVerboseMode) {
    std::fprintf(stderr, "QxwEventDispatcher::ServiceJavaRequestCB: connection closed (sock:%d)\n",
                 socketDescriptor);
  }
}

}  // namespace

void QxwEventDispatcher::EnableJavaCallbacks(bool connectionEstablished) {
  SKIFF_TRACE("QxwEventDispatcher::EnableJavaCallbacks");
  int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (listener < 0) {
    std::fprintf(stderr, "QxwEventDispatcher::EnableJavaCallbacks: socket() failed (error:%d)\n",
                 errno);
    return;
  }
  // The loopback address, never the wildcard: no other host may reach the
  // server. The system chooses the port.
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0) {
    std::fprintf(stderr, "QxwEventDispatcher::EnableJavaCallbacks: bind() failed (error:%d)\n",
                 errno);
    close(listener);
    return;
  }
  PublishListeningAddress(listener);
  // Listen before reporting: Java may connect as soon as it has the results.
  if (listen(listener, 1) != 0) {
    std::fprintf(stderr, "QxwEventDispatcher::EnableJavaCallbacks:  listen() failed (error: %d)\n",
                 errno);
  }
  QxwInterface::SetConnectionResults(connectionEstablished,
                                     m_pMap != nullptr ? m_pMap->map_name : nullptr,
                                     m_pMap == nullptr || m_pMap->permissions == QXW_MAP_READ_ONLY);
  int connection = AcceptOwnClient(listener);
  // One connection per session: nothing may connect after the client.
  close(listener);
  if (connection < 0) return;
  const int noDelay = 1;
  setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, &noDelay, sizeof(noDelay));
  s_clientConnection = connection;
  s_clientInput = QXwAddInput(connection, QXW_INPUT_READABLE, ServiceJavaRequestCB, nullptr);
  if (s_clientInput == 0) {
    std::fputs("QxwEventDispatcher::EnableJavaCallbacks: QXwAddInput() failed\n", stderr);
    // Closed, so that the client's read ends instead of waiting forever.
    CloseClientConnection();
  }
}

void QxwEventDispatcher::DisableJavaCallbacks() {
  SKIFF_TRACE("QxwEventDispatcher::DisableJavaCallbacks");
  CloseClientConnection();
}

void QxwEventDispatcher::ServiceJavaRequestCB(int socketDescriptor, void* userData) {
  SKIFF_TRACE("QxwEventDispatcher::ServiceJavaRequestCB");
  ssize_t received = skiff::channel::ReceiveSome(socketDescriptor, s_received);
  if (received < 0) {
    std::fprintf(stderr,
                 "QxwEventDispatcher::ServiceJavaRequestCB: recv() failed (sock:%d error:%d)\n",
                 socketDescriptor, errno);
    return;
  }
  if (received == 0) {
    EndOfStream(socketDescriptor);
    return;
  }
  // Only whole messages are served; a partial one waits for the rest. A
  // message too long comes as an empty one, which is answered "0".
  while (char* message = s_received.Next()) {
    if (s_received.LastDropped()) {
      std::fprintf(stderr,
                   "QxwEventDispatcher::ServiceJavaRequestCB: request longer than %zu bytes "
                   "dropped (sock:%d)\n",
                   kMessageSize, socketDescriptor);
    }
    TakeMissingMapInfo();
    Answer(socketDescriptor, Serve(message));
  }
}
