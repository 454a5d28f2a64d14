// Exported native methods of com.quenda.skiff.trellis.server.QxwEventDispatcher.
#include "com_quenda_skiff_trellis_server_QxwEventDispatcher.h"

#include <mutex>

#include "bridge/exports.h"
#include "dispatcher/main.h"

namespace {

// Held by each connect: one start-up at a time, and no rebinding while one
// runs.
std::mutex s_connectLock;
// The result of the first successful start-up; once set, connect no longer
// starts the platform session. Guarded by s_connectLock.
int s_Initialized = 0;

}  // namespace

JNIEXPORT jboolean JNICALL Java_com_quenda_skiff_trellis_server_QxwEventDispatcher_connect(
    JNIEnv* pEnv, jobject object, jboolean doInvokeJavaCallbacksForScopingUpdates,
    jboolean doSetLocationIDFieldInCallbacks, jboolean doSyncLocationIDFieldInSubLocations,
    jboolean doSyncLocationIDFieldInNetworks) {
  SKIFF_EXPORTED_METHOD();
  std::lock_guard<std::mutex> lock(s_connectLock);
  if (s_Initialized != 0) {
    // The session runs: this object becomes the dispatcher object, and the
    // session keeps the settings it started with (its thread owns them).
    QxwEventDispatcher::Bind(pEnv, object);
    return JNI_TRUE;
  }
  // A session started here has no map name for location tracking: tracking
  // starts off.
  const skiff::jni::JavaPeer* previous = QxwEventDispatcher::Peer();
  QxwEventDispatcher::Open(pEnv, object, nullptr, doInvokeJavaCallbacksForScopingUpdates,
                           doSetLocationIDFieldInCallbacks, doSyncLocationIDFieldInSubLocations,
                           doSyncLocationIDFieldInNetworks);
  {
    QxwEventDispatcher::DispatcherThreadScope serving;
    s_Initialized = QxwEventDispatcher::Connect();
  }
  // A connect whose session could not be opened does not take over.
  if (s_Initialized == 0) QxwEventDispatcher::Restore(previous);
  return s_Initialized != 0 ? JNI_TRUE : JNI_FALSE;
}

JNIEXPORT void JNICALL
Java_com_quenda_skiff_trellis_server_QxwEventDispatcher_listenForEvents(JNIEnv*, jobject) {
  SKIFF_EXPORTED_METHOD();
  QxwEventDispatcher::DispatcherThreadScope serving;
  QxwEventDispatcher::Listen();
}
