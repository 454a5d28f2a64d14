// Exported native methods of com.quenda.skiff.trellis.server.QxwEventDispatcher.
#include "com_quenda_skiff_trellis_server_QxwEventDispatcher.h"

#include "bridge/exports.h"
#include "dispatcher/main.h"

namespace {

// The result of the first successful start-up; once set, connect no longer
// starts the platform session.
int s_Initialized = 0;

}  // namespace

JNIEXPORT jboolean JNICALL Java_com_quenda_skiff_trellis_server_QxwEventDispatcher_connect(
    JNIEnv* pEnv, jobject object, jboolean doInvokeJavaCallbacksForScopingUpdates,
    jboolean doSetLocationIDFieldInCallbacks, jboolean doSyncLocationIDFieldInSubLocations,
    jboolean doSyncLocationIDFieldInNetworks) {
  SKIFF_EXPORTED_METHOD();
  // A session started here has no map name for location tracking: tracking
  // starts off.
  QxwEventDispatcher::Open(pEnv, object, nullptr, doInvokeJavaCallbacksForScopingUpdates,
                           doSetLocationIDFieldInCallbacks, doSyncLocationIDFieldInSubLocations,
                           doSyncLocationIDFieldInNetworks);
  if (s_Initialized == 0) s_Initialized = QxwEventDispatcher::Connect();
  return s_Initialized != 0 ? JNI_TRUE : JNI_FALSE;
}

JNIEXPORT void JNICALL
Java_com_quenda_skiff_trellis_server_QxwEventDispatcher_listenForEvents(JNIEnv*, jobject) {
  SKIFF_EXPORTED_METHOD();
  QxwEventDispatcher::Listen();
}
