// Exported native method of com.quenda.skiff.trellis.TrellisProtocol.
#include "com_quenda_skiff_trellis_TrellisProtocol.h"

#include "bridge/service.h"
#include "bridge/text.h"
#include "bridge/tracescope.h"

JNIEXPORT jint JNICALL Java_com_quenda_skiff_trellis_TrellisProtocol_getServiceByName(
    JNIEnv* pEnv, jclass, jstring tcpServiceName) {
  SKIFF_TRACE(__func__);
  skiff::jni::Utf8Chars name(pEnv, tcpServiceName);
  return skiff::GetServiceByName(name.get());
}
