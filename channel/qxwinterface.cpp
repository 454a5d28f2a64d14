#include "channel/qxwinterface.h"

#include <netdb.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <mutex>

#include "bridge/text.h"
#include "bridge/tracescope.h"
#include "channel/protocol.h"
#include "channel/socketio.h"
#include "dispatcher/main.h"
#include "platform/qxcommon.h"

using skiff::channel::FormatMatchingSymbols;
using skiff::channel::FormatNodeParentPath;
using skiff::channel::FormatNodeSymbol;
using skiff::channel::FormatNumbers;
using skiff::channel::kMessageSize;
using skiff::channel::Message;
using skiff::jni::JavaMethod;

int s_ThreadCallbackSocketDescriptor = 0;

JavaVM* QxwInterface::m_pJVM = nullptr;
jobject QxwInterface::m_object = nullptr;
jclass QxwInterface::m_class = nullptr;
JavaMethod QxwInterface::m_printError{"printError", "(Ljava/lang/String;)V", JavaMethod::Static};
JavaMethod QxwInterface::m_setConnectionResults{"setConnectionResults", "(ZLjava/lang/String;Z)V",
                                                JavaMethod::Instance};
int QxwInterface::m_doUseVerboseMode = 0;

namespace {

// Held while a request is sent and its answer read, and while the connection
// is made or closed.
std::mutex s_requestLock;
// The client socket's port (network byte order), published before it
// connects.
std::atomic<in_port_t> s_clientPort{0};

// The IPv4 address of the loopback host, in network byte order.
in_addr_t getLoopbackAddr() {
  hostent* host = gethostbyname_new("localhost");
  if (host != nullptr && host->h_addrtype == AF_INET && host->h_addr_list[0] != nullptr) {
    return reinterpret_cast<in_addr*>(host->h_addr_list[0])->s_addr;
  }
  return htonl(INADDR_LOOPBACK);
}

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
    if (const char* text = answer.Next()) return skiff::channel::ParseAnswer(text);
    if (answer.Overflowed()) {
      errno = EMSGSIZE;
      return -1;
    }
  }
}

// Sends one request of `length` bytes and reads its answer; called under
// the request lock. The answer's number; 0 when the request was not sent or
// no answer was read.
int Exchange(const char* operation, const Message& request, size_t length) {
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

// A request whose arguments are numbers: formatted, sent and answered under
// the request lock. The answer's number.
int RequestNumbers(const char* operation, skiff::channel::RequestCode code,
                   std::initializer_list<int64_t> numbers) {
  std::lock_guard<std::mutex> lock(s_requestLock);
  Message request;
  size_t length = FormatNumbers(request, code, numbers);
  return Exchange(operation, request, length);
}

}  // namespace

bool QxwInterface::Open(JNIEnv* pEnv, jobject object) {
  SKIFF_TRACE("QxwInterface::Open");
  pEnv->GetJavaVM(&m_pJVM);
  // Earlier references are kept: another thread may still be using them.
  m_object = pEnv->NewGlobalRef(object);
  skiff::jni::LocalRef<jclass> cls(pEnv, pEnv->GetObjectClass(object));
  m_class = static_cast<jclass>(pEnv->NewGlobalRef(cls.get()));
  skiff::jni::Resolve(pEnv, m_class, m_printError, "QxwInterface::Open");
  skiff::jni::Resolve(pEnv, m_class, m_setConnectionResults, "QxwInterface::Open");
  return true;
}

void QxwInterface::Close() {
  SKIFF_TRACE("QxwInterface::Close");
  std::lock_guard<std::mutex> lock(s_requestLock);
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
  JNIEnv* pEnv = skiff::jni::AttachedEnv(m_pJVM);
  if (pEnv == nullptr) {
    std::fputs("QxwInterface::SetConnectionResults: no Java client object is open\n", stderr);
    return;
  }
  skiff::jni::LocalRef<jstring> name(pEnv, mb2jstring(pEnv, mapName));
  skiff::jni::CallVoid(pEnv, m_object, m_setConnectionResults,
                       static_cast<jboolean>(connectionEstablished), name.get(),
                       static_cast<jboolean>(isReadOnly));
}

void QxwInterface::PrintError(const char* errorString) {
  SKIFF_TRACE("QxwInterface::PrintError");
  skiff::jni::PrintErrorInJava(m_pJVM, m_class, m_printError, nullptr, errorString);
}

void QxwInterface::PrintError(const char* context, const char* errorString) {
  SKIFF_TRACE("QxwInterface::PrintError");
  skiff::jni::PrintErrorInJava(m_pJVM, m_class, m_printError, context, errorString);
}

bool QxwInterface::GetSubmapAndSymbols(QXwSubmapId submapId) {
  SKIFF_TRACE("QxwInterface::GetSubmapAndSymbols");
  std::lock_guard<std::mutex> lock(s_requestLock);
  // The first submap request makes the one connection.
  if (s_ThreadCallbackSocketDescriptor == 0 && !Connect()) return false;
  if (submapId == 0) submapId = QxwEventDispatcher::GetRootSubmapId();
  Message request;
  size_t length = FormatNumbers(request, skiff::channel::kGetSubmapAndSymbols, {submapId});
  return Exchange("GetSubmapAndSymbols", request, length) != 0;
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
  std::lock_guard<std::mutex> lock(s_requestLock);
  Message request;
  size_t length = FormatNodeSymbol(request, selectionName, parentSelectionName, customSubmapId,
                                   doRecreateParentPath);
  Exchange("GetNodeSymbol", request, length);
}

void QxwInterface::GetNodeParentPath(const char* hostnameOrIPAddress,
                                     const char* parentSelectionName, int numRootObjects) {
  SKIFF_TRACE("QxwInterface::GetNodeParentPath");
  std::lock_guard<std::mutex> lock(s_requestLock);
  Message request;
  size_t length =
      FormatNodeParentPath(request, hostnameOrIPAddress, parentSelectionName, numRootObjects);
  Exchange("GetNodeParentPath", request, length);
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
  std::lock_guard<std::mutex> lock(s_requestLock);
  Message request;
  size_t length = FormatMatchingSymbols(request, queryCategoryType, queryMatchType, queryString,
                                        numRootObjects);
  Exchange("GetMatchingSymbols", request, length);
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
