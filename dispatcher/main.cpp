#include "dispatcher/main.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

#include "bridge/text.h"
#include "bridge/tracescope.h"
#include "channel/qxwinterface.h"
#include "dispatcher/fieldinfocache.h"
#include "platform/qxwdb.h"
#include "scoping/nsp.h"
#include "tables/scopingcache.h"

using skiff::jni::JavaMethod;

QXwMapInfo* QxwEventDispatcher::m_pMap = nullptr;
char* QxwEventDispatcher::m_mapNameForLocationTracking = nullptr;
int QxwEventDispatcher::m_thisQxwSessionEnablesLocationTracking = 0;
int QxwEventDispatcher::m_doInvokeJavaCallbacksForScopingUpdates = 0;
int QxwEventDispatcher::m_doSetLocationIDFieldInCallbacks = 0;
int QxwEventDispatcher::m_doSyncLocationIDFieldInSubLocations = 0;
int QxwEventDispatcher::m_doSyncLocationIDFieldInNetworks = 0;
int QxwEventDispatcher::m_doUseVerboseMode = 0;
bool QxwEventDispatcher::m_sessionEnded = false;
sockaddr_in QxwEventDispatcher::m_JavaCallbackSocketName{};

#define SKIFF_DEFINE_JAVA_METHOD(name, signature, kind) \
  const JavaMethod QxwEventDispatcher::m_##name{#name, signature, JavaMethod::kind, kSlot_##name};
SKIFF_DISPATCHER_JAVA_METHODS(SKIFF_DEFINE_JAVA_METHOD)
#undef SKIFF_DEFINE_JAVA_METHOD

#define SKIFF_DEFINE_FIELD_ID(member, name, fieldName) QXwFieldId QxwEventDispatcher::member = 0;
SKIFF_DISPATCHER_FIELDS(SKIFF_DEFINE_FIELD_ID)
#undef SKIFF_DEFINE_FIELD_ID

namespace {

// The local references one event or request holds at once at most: a
// handful (every one is deleted as soon as the call that needed it returns).
constexpr jint kLocalReferencesPerEvent = 32;

// The dispatcher thread while it serves requests; none otherwise.
std::atomic<std::thread::id> s_dispatcherThread{};

// The root submap id of the open map, for client threads.
std::atomic<QXwSubmapId> s_rootSubmapId{0};

// The port of m_JavaCallbackSocketName (network byte order), for client
// threads.
std::atomic<in_port_t> s_javaCallbackSocketPort{0};

// Every Java dispatcher object ever bound, and the one in use.
skiff::jni::PeerRegistry& Peers() {
  static skiff::jni::PeerRegistry peers("QxwEventDispatcher::Open",
                                        {
#define SKIFF_LIST_JAVA_METHOD(name, signature, kind) &QxwEventDispatcher::m_##name,
                                            SKIFF_DISPATCHER_JAVA_METHODS(SKIFF_LIST_JAVA_METHOD)
#undef SKIFF_LIST_JAVA_METHOD
                                        });
  return peers;
}

}  // namespace

bool QxwEventDispatcher::Open(JNIEnv* pEnv, jobject object, const char* mapNameForLocationTracking,
                              bool doInvokeJavaCallbacksForScopingUpdates,
                              bool doSetLocationIDFieldInCallbacks,
                              bool doSyncLocationIDFieldInSubLocations,
                              bool doSyncLocationIDFieldInNetworks) {
  SKIFF_TRACE("QxwEventDispatcher::Open");
  Bind(pEnv, object);
  std::free(m_mapNameForLocationTracking);
  m_mapNameForLocationTracking =
      mapNameForLocationTracking != nullptr ? strdup(mapNameForLocationTracking) : nullptr;
  m_doInvokeJavaCallbacksForScopingUpdates = doInvokeJavaCallbacksForScopingUpdates;
  m_doSetLocationIDFieldInCallbacks = doSetLocationIDFieldInCallbacks;
  m_doSyncLocationIDFieldInSubLocations = doSyncLocationIDFieldInSubLocations;
  m_doSyncLocationIDFieldInNetworks = doSyncLocationIDFieldInNetworks;

  return true;
}

const skiff::jni::JavaPeer* QxwEventDispatcher::Peer() { return Peers().Current(); }

bool QxwEventDispatcher::Bind(JNIEnv* pEnv, jobject object) {
  SKIFF_TRACE("QxwEventDispatcher::Bind");
  const skiff::jni::JavaPeer* peer = Peers().Bind(pEnv, object);
  if (peer == nullptr) return false;
  Peers().Publish(peer);
  return true;
}

void QxwEventDispatcher::Restore(const skiff::jni::JavaPeer* peer) { Peers().Publish(peer); }

bool QxwEventDispatcher::Connect() {
  SKIFF_TRACE("QxwEventDispatcher::Connect");
  const bool initialized = QXwInit() == 0;
  if (initialized) {
    SetMap(QXwGetMapInfo());
    OpenFieldInfoCache();
    CacheFieldIds();
    m_thisQxwSessionEnablesLocationTracking =
        ShouldEnableLocationTracking(m_pMap, m_mapNameForLocationTracking);
    NSP::CacheNSPFieldIds();
    ScopingCache::OpenScopeCache();
    AddQXwCallbacks();
  }
  // Error 2: the platform has no map information, yet the session is usable.
  const bool usable = initialized || QXwError() == QXW_ERR_NO_MAP_INFO;
  if (usable) {
    EnableJavaCallbacks(true);
    SynchronizeLocationTrackingIfNeeded();
  } else {
    QxwInterface::SetConnectionResults(false, nullptr, true);
  }
  return usable;
}

void QxwEventDispatcher::Listen() {
  SKIFF_TRACE("QxwEventDispatcher::Listen");
  JNIEnv* pEnv = skiff::jni::AttachedEnv();
  for (;;) {
    // Each event and request gets a frame of its own: this thread never
    // returns from its native call, which would free what one leaves.
    skiff::jni::LocalFrame frame(pEnv, kLocalReferencesPerEvent);
    if (QXwProcessEvent() < 0) break;
  }
  if (!m_sessionEnded) {
    const char* text = QXwErrorMsg(QXwError());
    std::fprintf(stderr,
                 "QxwEventDispatcher::Listen: QXwProcessEvent failed: %s; no more events or "
                 "requests are served\n",
                 text != nullptr ? text : "");
  }
  DisableJavaCallbacks();
}

QxwEventDispatcher::DispatcherThreadScope::DispatcherThreadScope() {
  s_dispatcherThread.store(std::this_thread::get_id(), std::memory_order_release);
}

QxwEventDispatcher::DispatcherThreadScope::~DispatcherThreadScope() {
  s_dispatcherThread.store(std::thread::id(), std::memory_order_release);
}

bool QxwEventDispatcher::OnDispatcherThread() {
  return s_dispatcherThread.load(std::memory_order_acquire) == std::this_thread::get_id();
}

void QxwEventDispatcher::CacheFieldIds() {
  SKIFF_TRACE("QxwEventDispatcher::CacheFieldIds");
  const skiff::FieldIds ids = skiff::ResolveFieldIds();
#define SKIFF_STORE_FIELD_ID(member, name, fieldName) member = ids.name;
  SKIFF_DISPATCHER_FIELDS(SKIFF_STORE_FIELD_ID)
#undef SKIFF_STORE_FIELD_ID
}

skiff::FieldIds QxwEventDispatcher::SessionFieldIds() {
  skiff::FieldIds ids;
#define SKIFF_LOAD_FIELD_ID(member, name, fieldName) ids.name = member;
  SKIFF_DISPATCHER_FIELDS(SKIFF_LOAD_FIELD_ID)
#undef SKIFF_LOAD_FIELD_ID
  return ids;
}

bool QxwEventDispatcher::InitializeField(QXwFieldId* pFieldId, const char* fieldName) {
  SKIFF_TRACE("QxwEventDispatcher::InitializeField");
  *pFieldId = QXwDbFieldNameToFieldId(fieldName);
  if (*pFieldId == 0) {
    std::fprintf(stderr, "Could not obtain field id for field: %s\n", fieldName);
    return false;
  }
  return true;
}

bool QxwEventDispatcher::ShouldEnableLocationTracking(const QXwMapInfo* pMap,
                                                      const char* mapNameForLocationTracking) {
  SKIFF_TRACE("QxwEventDispatcher::ShouldEnableLocationTracking");
  return pMap != nullptr && mapNameForLocationTracking != nullptr &&
         pMap->permissions == QXW_MAP_READ_WRITE && pMap->map_name != nullptr &&
         std::strcmp(pMap->map_name, mapNameForLocationTracking) == 0;
}

void QxwEventDispatcher::SetVerbose(bool flag) {
  SKIFF_TRACE("QxwEventDispatcher::SetVerbose");
  m_doUseVerboseMode = flag;
  ScopingCache::SetVerbose(flag);
}

void QxwEventDispatcher::PrintError(const char* errorString) {
  SKIFF_TRACE("QxwEventDispatcher::PrintError");
  skiff::jni::PrintErrorInJava(Peer(), m_printError, nullptr, errorString);
}

void QxwEventDispatcher::PrintError(const char* context, const char* errorString) {
  SKIFF_TRACE("QxwEventDispatcher::PrintError");
  skiff::jni::PrintErrorInJava(Peer(), m_printError, context, errorString);
}

in_port_t QxwEventDispatcher::GetJavaCallbackSocketPort() {
  SKIFF_TRACE("QxwEventDispatcher::GetJavaCallbackSocketPort");
  return s_javaCallbackSocketPort.load(std::memory_order_acquire);
}

void QxwEventDispatcher::SetJavaCallbackSocketName(const sockaddr_in& name) {
  SKIFF_TRACE("QxwEventDispatcher::SetJavaCallbackSocketName");
  m_JavaCallbackSocketName = name;
  s_javaCallbackSocketPort.store(name.sin_port, std::memory_order_release);
}

QXwSubmapId QxwEventDispatcher::GetRootSubmapId() {
  SKIFF_TRACE("QxwEventDispatcher::GetRootSubmapId");
  return s_rootSubmapId.load(std::memory_order_acquire);
}

void QxwEventDispatcher::SetMap(QXwMapInfo* pMap) {
  SKIFF_TRACE("QxwEventDispatcher::SetMap");
  m_pMap = pMap;
  PublishRootSubmapId(pMap != nullptr ? pMap->root_submap_id : 0);
}

void QxwEventDispatcher::PublishRootSubmapId(QXwSubmapId rootSubmapId) {
  s_rootSubmapId.store(rootSubmapId, std::memory_order_release);
}
