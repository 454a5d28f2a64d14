#include "channel/qxwinterface.h"

#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <functional>
#include <mutex>

#include "bridge/text.h"
#include "bridge/tracescope.h"
#include "channel/fifolock.h"
#include "channel/protocol.h"
#include "channel/socketio.h"
#include "dispatcher/main.h"

using skiff::channel::FormatMatchingSymbols;
using skiff::channel::FormatNodeParentPath;
using skiff::channel::FormatNodeSymbol;
using skiff::channel::FormatNumbers;
using skiff::channel::kMessageSize;
using skiff::channel::Message;
using skiff::jni::JavaMethod;

int s_ThreadCallbackSocketDescriptor = 0;

const JavaMethod QxwInterface::m_printError{"printError", "(Ljava/lang/String;)V",
                                            JavaMethod::Static, 0};
const JavaMethod QxwInterface::m_setConnectionResults{
    "setConnectionResults", "(ZLjava/lang/String;Z)V", JavaMethod::Instance, 1};
int QxwInterface::m_doUseVerboseMode = 0;

namespace {

// Every Java client object ever opened, and the one in use.
skiff::jni::PeerRegistry& Peers() {
  static skiff::jni::PeerRegistry peers(
      "QxwInterface::Open", {&QxwInterface::m_printError, &QxwInterface::m_setConnectionResults});
  return peers;
}

// Held while a request is sent and its answer read, and while the connection
// is made or closed; taken in the order the threads ask.
skiff::channel::FifoLock s_requestLock;
// The client socket's port (network byte order), published before it
// connects.
std::atomic<in_port_t> s_clientPort{0};

// The IPv4 address of the request server, in network byte order: always
// 127.0.0.1, where it listens, whatever the local host name resolves to (on
// many hosts "localhost" or the host's own name is 127.0.1.1, where nothing
// listens).
in_addr_t getLoopbackAddr() { return htonl(INADDR_LOOPBACK); }

// Reads one answer up to its NUL; -1 with errno set when that fails (an end
// of stream counts as a reset connection).
int ReadAnswer(int sock) {
  skiff::channel::MessageAssembler answer;
  for (;;) {
    ssize_t received = skiff::channel::ReceiveSome(sock, answer);
    if (received < 0) return -1;
    if (received == 0) {
      errno = ECONNRESET;
      return -1;
    }
    const char* text = answer.Next();
    if (text == nullptr) continue;
    if (answer.LastDropped()) {
      errno = EMSGSIZE;
      return -1;
    }
    return skiff::channel::ParseAnswer(text);
  }
}

// Sends one request of `length` bytes and reads its answer; called under
// the request lock. The answer's number; 0 when the request was not sent or
// no answer was read.
int Exchange(const char* operation, const Message& request, size_t length) {
  if (length == 0) return 0;  // not to be sent, and already said why
  if (length > kMessageSize) {
    std::fprintf(stderr,
                 "QxwInterface::%s: request of %zu bytes is longer than %zu bytes, not sent\n",
                 operation, length, kMessageSize);
    return 0;
  }
  const int sock = s_ThreadCallbackSocketDescriptor;
  if (sock == 0) {
    std::fprintf(stderr, "QxwInterface::%s: not connected, request not sent\n", operation);
    return 0;
  }
  if (!skiff::channel::SendAll(sock, request.data(), length)) {
    std::fprintf(stderr, "QxwInterface::%s: send() failed (sock:%d error:%d)\n", operation, sock,
                 errno);
  }
  int answer = ReadAnswer(sock);
  if (answer < 0) {
    std::fprintf(stderr, "QxwInterface::%s: recv() failed (sock:%d error:%d)\n", operation, sock,
                 errno);
    return 0;
  }
  return answer;
}

// Formats a request into the message; returns the bytes it needs, or 0 for
// a request not to be sent (having said why).
using FormatRequest = std::function<size_t(Message&)>;

// Sends the request that `format` writes and reads its answer, under the
// request lock. The answer's number; 0 when the request was refused, not
// sent or not answered. Refused on the dispatcher thread, which serves
// requests and so could never see its own answered.
int Request(const char* operation, const FormatRequest& format) {
  if (QxwEventDispatcher::OnDispatcherThread()) {
    std::fprintf(stderr,
                 "QxwInterface::%s: called on the dispatcher thread (from a callback), "
                 "request not sent\n",
                 operation);
    return 0;
  }
  std::lock_guard<skiff::channel::FifoLock> lock(s_requestLock);
  Message request;
  size_t length = format(request);
  return Exchange(operation, request, length);
}

// A request whose arguments are numbers.
int RequestNumbers(const char* operation, skiff::channel::RequestCode code,
                   std::initializer_list<int64_t> numbers) {
  return Request(operation,
                 [&](Message& request) { return FormatNumbers(request, code, numbers); });
}

// True when every text can travel as a field; else says why the request is
// not sent.
bool FieldTexts(const char* operation, std::initializer_list<const char*> texts) {
  for (const char* text : texts) {
    if (!skiff::channel::IsFieldText(text)) {
      std::fprintf(stderr,
                   "QxwInterface::%s: a text argument holds a vertical tab, request not sent\n",
                   operation);
      return false;
    }
  }
  return true;
}

}  // namespace

bool QxwInterface::Open(JNIEnv* pEnv, jobject object) {
  SKIFF_TRACE("QxwInterface::Open");
  // Earlier bindings stay valid: another thread may still be using them.
  const skiff::jni::JavaPeer* peer = Peers().Bind(pEnv, object);
  if (peer != nullptr) Peers().Publish(peer);
  return true;
}

const skiff::jni::JavaPeer* QxwInterface::Peer() { return Peers().Current(); }

void QxwInterface::Close() {
  SKIFF_TRACE("QxwInterface::Close");
  std::lock_guard<skiff::channel::FifoLock> lock(s_requestLock);
  if (s_ThreadCallbackSocketDescriptor != 0) close(s_ThreadCallbackSocketDescriptor);
  s_ThreadCallbackSocketDescriptor = 0;
}

bool QxwInterface::Connect() {
  SKIFF_TRACE("QxwInterface::Connect");
  int sock = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (sock < 0) {
    std::fprintf(stderr, "QxwInterface::Connect: socket() failed (error:%d)\n", errno);
    return false;
  }
  sockaddr_in local{};
  local.sin_family = AF_INET;
  local.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t localLength = sizeof(local);
  if (bind(sock, reinterpret_cast<sockaddr*>(&local), sizeof(local)) != 0 ||
      getsockname(sock, reinterpret_cast<sockaddr*>(&local), &localLength) != 0) {
    std::fprintf(stderr, "QxwInterface::Connect: bind() failed (error:%d)\n", errno);
    close(sock);
    return false;
  }
  s_clientPort.store(local.sin_port, std::memory_order_release);

  sockaddr_in server{};
  server.sin_family = AF_INET;
  server.sin_port = QxwEventDispatcher::GetJavaCallbackSocketPort();
  server.sin_addr.s_addr = getLoopbackAddr();
  if (connect(sock, reinterpret_cast<sockaddr*>(&server), sizeof(server)) != 0) {
    std::fprintf(stderr, "QxwInterface::Connect: connect() failed (error: %d)\n", errno);
    close(sock);
    return false;
  }
  const int noDelay = 1;
  setsockopt(sock, IPPROTO_TCP, TCP_NODELAY, &noDelay, sizeof(noDelay));
  s_ThreadCallbackSocketDescriptor = sock;
  return true;
}

in_port_t QxwInterface::GetClientPort() {
  SKIFF_TRACE("QxwInterface::GetClientPort");
  return s_clientPort.load(std::memory_order_acquire);
}

void QxwInterface::SetVerbose(bool flag) {
  SKIFF_TRACE("QxwInterface::SetVerbose");
  m_doUseVerboseMode = flag;
}

void QxwInterface::SetConnectionResults(bool connectionEstablished, const char* mapName,
                                        bool isReadOnly) {
  SKIFF_TRACE("QxwInterface::SetConnectionResults");
  JNIEnv* pEnv = skiff::jni::AttachedEnv();
  if (pEnv == nullptr || Peer() == nullptr) {
    std::fputs("QxwInterface::SetConnectionResults: no Java client object is open\n", stderr);
    return;
  }
  skiff::jni::LocalRef<jstring> name(pEnv, mb2jstring(pEnv, mapName));
  skiff::jni::CallVoid(pEnv, Peer(), m_setConnectionResults,
                       static_cast<jboolean>(connectionEstablished), name.get(),
                       static_cast<jboolean>(isReadOnly));
}

void QxwInterface::PrintError(const char* errorString) {
  SKIFF_TRACE("QxwInterface::PrintError");
  skiff::jni::PrintErrorInJava(Peer(), m_printError, nullptr, errorString);
}

void QxwInterface::PrintError(const char* context, const char* errorString) {
  SKIFF_TRACE("QxwInterface::PrintError");
  skiff::jni::PrintErrorInJava(Peer(), m_printError, context, errorString);
}

bool QxwInterface::GetSubmapAndSymbols(QXwSubmapId submapId) {
  SKIFF_TRACE("QxwInterface::GetSubmapAndSymbols");
  return Request("GetSubmapAndSymbols", [submapId](Message& request) mutable -> size_t {
           // The first submap request makes the one connection (under the
           // request lock, as Request calls this).
           if (s_ThreadCallbackSocketDescriptor == 0 && !Connect()) return 0;
           if (submapId == 0) submapId = QxwEventDispatcher::GetRootSubmapId();
           return FormatNumbers(request, skiff::channel::kGetSubmapAndSymbols, {submapId});
         }) != 0;
}

bool QxwInterface::GetSymbolRowData(QXwSymbolId symbolId, QXwObjectId objectId,
                                    int propertySetIndex) {
  SKIFF_TRACE("QxwInterface::GetSymbolRowData");
  return RequestNumbers("GetSymbolRowData", skiff::channel::kGetSymbolRowData,
                        {symbolId, objectId, propertySetIndex}) != 0;
}

void QxwInterface::GetNodeSymbol(const char* selectionName, const char* parentSelectionName,
                                 QXwSubmapId customSubmapId, bool doRecreateParentPath) {
  SKIFF_TRACE("QxwInterface::GetNodeSymbol");
  if (!FieldTexts("GetNodeSymbol", {selectionName, parentSelectionName})) return;
  Request("GetNodeSymbol", [&](Message& request) {
    return FormatNodeSymbol(request, selectionName, parentSelectionName, customSubmapId,
                            doRecreateParentPath);
  });
}

void QxwInterface::GetNodeParentPath(const char* hostnameOrIPAddress,
                                     const char* parentSelectionName, int numRootObjects) {
  SKIFF_TRACE("QxwInterface::GetNodeParentPath");
  if (!FieldTexts("GetNodeParentPath", {hostnameOrIPAddress, parentSelectionName})) return;
  Request("GetNodeParentPath", [&](Message& request) {
    return FormatNodeParentPath(request, hostnameOrIPAddress, parentSelectionName, numRootObjects);
  });
}

void QxwInterface::GetSymbolParentPath(QXwSymbolId symbolId, QXwSubmapId submapSymbolLivesOn,
                                       int numRootObjects) {
  SKIFF_TRACE("QxwInterface::GetSymbolParentPath");
  RequestNumbers("GetSymbolParentPath", skiff::channel::kGetSymbolParentPath,
                 {symbolId, submapSymbolLivesOn, numRootObjects});
}

void QxwInterface::GetOtherSymbols(QXwSymbolId symbolId, QXwObjectId objectId, int numRootObjects) {
  SKIFF_TRACE("QxwInterface::GetOtherSymbols");
  RequestNumbers("GetOtherSymbols", skiff::channel::kGetOtherSymbols,
                 {symbolId, objectId, numRootObjects});
}

void QxwInterface::GetMatchingSymbols(int queryCategoryType, int queryMatchType,
                                      const char* queryString, int numRootObjects) {
  SKIFF_TRACE("QxwInterface::GetMatchingSymbols");
  if (!FieldTexts("GetMatchingSymbols", {queryString})) return;
  Request("GetMatchingSymbols", [&](Message& request) {
    return FormatMatchingSymbols(request, queryCategoryType, queryMatchType, queryString,
                                 numRootObjects);
  });
}

void QxwInterface::GetLocationScopingInfo() {
  SKIFF_TRACE("QxwInterface::GetLocationScopingInfo");
  RequestNumbers("GetLocationScopingInfo", skiff::channel::kGetLocationScopingInfo, {});
}

void QxwInterface::SetAcknowledgeState(int numObjs, bool doAcknowledge) {
  SKIFF_TRACE("QxwInterface::SetAcknowledgeState");
  RequestNumbers("SetAcknowledgeState", skiff::channel::kSetAcknowledgeState,
                 {numObjs, doAcknowledge});
}

void QxwInterface::SetManageState(int numObjs, bool doManage) {
  SKIFF_TRACE("QxwInterface::SetManageState");
  if (m_doUseVerboseMode) {
    std::fprintf(stderr, "In QxwInterface::SetManageState: numObjs=%d\n", numObjs);
  }
  RequestNumbers("SetManageState", skiff::channel::kSetManageState, {numObjs, doManage});
}

void QxwInterface::SetSymbolVisibilityState(int numSymbols, bool doSetHidden) {
  SKIFF_TRACE("QxwInterface::SetSymbolVisibilityState");
  if (m_doUseVerboseMode) {
    std::fprintf(stderr,
                 "In QxwInterface::SetSymbolVisibilityState: numSymbols=%d doSetHidden=%d\n",
                 numSymbols, doSetHidden);
  }
  RequestNumbers("SetSymbolVisibilityState", skiff::channel::kSetSymbolVisibilityState,
                 {numSymbols, doSetHidden});
}

void QxwInterface::SetInterfaceAndNodeVisibilityState(int numInterfaceObjects, bool doSetHidden) {
  SKIFF_TRACE("QxwInterface::SetInterfaceAndNodeVisibilityState");
  if (m_doUseVerboseMode) {
    std::fprintf(stderr,
                 "In QxwInterface::SetInterfaceAndNodeVisibilityState: numInterfaceObjects=%d "
                 "doSetHidden=%d\n",
                 numInterfaceObjects, doSetHidden);
  }
  RequestNumbers("SetInterfaceAndNodeVisibilityState",
                 skiff::channel::kSetInterfaceAndNodeVisibilityState,
                 {numInterfaceObjects, doSetHidden});
}

void QxwInterface::DeleteAllSymbolsForObjects(int numObjects) {
  SKIFF_TRACE("QxwInterface::DeleteAllSymbolsForObjects");
  if (m_doUseVerboseMode) {
    std::fprintf(stderr, "In QxwInterface::DeleteAllSymbolsForObjects: numObjects=%d\n",
                 numObjects);
  }
  RequestNumbers("DeleteAllSymbolsForObjects", skiff::channel::kDeleteAllSymbolsForObjects,
                 {numObjects});
}
