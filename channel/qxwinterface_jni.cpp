// Exported native methods of com.quenda.skiff.trellis.server.QxwInterface.
// Each turns its Java call into one client operation; string arguments
// cross as modified UTF-8, except the search pattern, which crosses as
// platform text.
#include "com_quenda_skiff_trellis_server_QxwInterface.h"

#include <cstdio>

#include "bridge/arrays.h"
#include "bridge/exports.h"
#include "bridge/text.h"
#include "channel/qxwinterface.h"
#include "dispatcher/main.h"
#include "scoping/nsp.h"

using skiff::jni::Utf8Chars;

JNIEXPORT void JNICALL Java_com_quenda_skiff_trellis_server_QxwInterface_open(
    JNIEnv* pEnv, jobject object, jboolean doEnableVerboseJNI, jboolean doEnableVerboseQXW,
    jboolean doEnableVerboseNSP) {
  SKIFF_TRACE(__func__);
  QxwInterface::SetVerbose(doEnableVerboseQXW);
  QxwEventDispatcher::SetVerbose(doEnableVerboseQXW);
  NSP::SetVerbose(doEnableVerboseNSP);
  s_doUseVerboseJNI = doEnableVerboseJNI;
  skiff::jni::TraceExportedMethod(__func__);
  QxwInterface::Open(pEnv, object);
}

JNIEXPORT void JNICALL Java_com_quenda_skiff_trellis_server_QxwInterface_close(JNIEnv*, jobject) {
  SKIFF_EXPORTED_METHOD();
  QxwInterface::Close();
}

JNIEXPORT jboolean JNICALL Java_com_quenda_skiff_trellis_server_QxwInterface_getSubmapAndSymbols(
    JNIEnv*, jobject, jint submapId) {
  SKIFF_EXPORTED_METHOD();
  return QxwInterface::GetSubmapAndSymbols(submapId) ? JNI_TRUE : JNI_FALSE;
}

JNIEXPORT jboolean JNICALL Java_com_quenda_skiff_trellis_server_QxwInterface_getSymbolRowData(
    JNIEnv*, jobject, jint symbolId, jint objectId, jint propertySetIndex) {
  SKIFF_EXPORTED_METHOD();
  return QxwInterface::GetSymbolRowData(symbolId, objectId, propertySetIndex) ? JNI_TRUE
                                                                              : JNI_FALSE;
}

JNIEXPORT void JNICALL Java_com_quenda_skiff_trellis_server_QxwInterface_getNodeSymbol(
    JNIEnv* pEnv, jobject, jint customSubmapId, jstring selectionName,
    jstring parentSelectionName) {
  SKIFF_EXPORTED_METHOD();
  Utf8Chars selection(pEnv, selectionName);
  Utf8Chars parent(pEnv, parentSelectionName);
  QxwInterface::GetNodeSymbol(selection.get(), parent.get(), customSubmapId, false);
}

JNIEXPORT void JNICALL Java_com_quenda_skiff_trellis_server_QxwInterface_getNodeParentPathInternal(
    JNIEnv* pEnv, jobject, jstring hostnameOrIPAddress, jstring parentSelectionName,
    jint numRootObjects) {
  SKIFF_EXPORTED_METHOD();
  Utf8Chars host(pEnv, hostnameOrIPAddress);
  Utf8Chars parent(pEnv, parentSelectionName);
  QxwInterface::GetNodeParentPath(host.get(), parent.get(), numRootObjects);
}

JNIEXPORT void JNICALL
Java_com_quenda_skiff_trellis_server_QxwInterface_getSymbolParentPathInternal(JNIEnv*, jobject,
                                                                              jint symbolId,
                                                                              jint submapId,
                                                                              jint numRootObjects) {
  SKIFF_EXPORTED_METHOD();
  QxwInterface::GetSymbolParentPath(symbolId, submapId, numRootObjects);
}

JNIEXPORT void JNICALL Java_com_quenda_skiff_trellis_server_QxwInterface_getOtherSymbolsInternal(
    JNIEnv*, jobject, jint symbolId, jint objectId, jint numRootObjects) {
  SKIFF_EXPORTED_METHOD();
  QxwInterface::GetOtherSymbols(symbolId, objectId, numRootObjects);
}

JNIEXPORT void JNICALL Java_com_quenda_skiff_trellis_server_QxwInterface_getMatchingSymbolsInternal(
    JNIEnv* pEnv, jobject, jint queryCategoryType, jint queryMatchType, jstring queryString,
    jint numRootObjects) {
  SKIFF_EXPORTED_METHOD();
  // The pattern crosses in the platform's character set, with a NUL added.
  skiff::jni::PlatformText pattern = skiff::jni::PlatformTextOf(pEnv, queryString);
  if (pattern.outOfMemory) {
    std::fputs("getMatchingSybmolsInternal: unable to malloc, not enough memory\n", stderr);
    return;
  }
  if (pattern.HoldsNul()) {
    // It would arrive cut short at its first NUL and find something else.
    std::fputs("QxwInterface::GetMatchingSymbols: the query text holds a NUL, request not sent\n",
               stderr);
    return;
  }
  QxwInterface::GetMatchingSymbols(queryCategoryType, queryMatchType, pattern.text.get(),
                                   numRootObjects);
}

JNIEXPORT void JNICALL
Java_com_quenda_skiff_trellis_server_QxwInterface_getLocationScopingInfoInternal(JNIEnv*, jobject) {
  SKIFF_EXPORTED_METHOD();
  QxwInterface::GetLocationScopingInfo();
}

// The four state requests take the flag first from Java and pass the count
// first to the client operation.

JNIEXPORT void JNICALL Java_com_quenda_skiff_trellis_server_QxwInterface_setAcknowledgeState(
    JNIEnv*, jobject, jboolean doAcknowledge, jint numObjs) {
  SKIFF_EXPORTED_METHOD();
  QxwInterface::SetAcknowledgeState(numObjs, doAcknowledge);
}

JNIEXPORT void JNICALL Java_com_quenda_skiff_trellis_server_QxwInterface_setManageState(
    JNIEnv*, jobject, jboolean doManage, jint numObjs) {
  SKIFF_EXPORTED_METHOD();
  QxwInterface::SetManageState(numObjs, doManage);
}

JNIEXPORT void JNICALL
Java_com_quenda_skiff_trellis_server_QxwInterface_setSymbolVisibilityStateInternal(
    JNIEnv*, jobject, jboolean doSetHidden, jint numSymbols) {
  SKIFF_EXPORTED_METHOD();
  QxwInterface::SetSymbolVisibilityState(numSymbols, doSetHidden);
}

JNIEXPORT void JNICALL
Java_com_quenda_skiff_trellis_server_QxwInterface_setInterfaceAndNodeVisibilityStateInternal(
    JNIEnv*, jobject, jboolean doSetHidden, jint numInterfaceObjects) {
  SKIFF_EXPORTED_METHOD();
  QxwInterface::SetInterfaceAndNodeVisibilityState(numInterfaceObjects, doSetHidden);
}

JNIEXPORT void JNICALL
Java_com_quenda_skiff_trellis_server_QxwInterface_deleteAllSymbolsForObjectsInternal(
    JNIEnv*, jobject, jint numObjects) {
  SKIFF_TRACE(__func__);
  // This method's name line has no line end.
  skiff::jni::TraceExportedMethod(__func__, "");
  QxwInterface::DeleteAllSymbolsForObjects(numObjects);
}
