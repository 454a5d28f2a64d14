// Row data of a symbol: computed by the Java side, on the dispatcher thread.
#include <cstdio>

#include "bridge/tracescope.h"
#include "dispatcher/main.h"
#include "dispatcher/verbose.h"

skiff::jni::LocalRef<jstring> QxwEventDispatcher::GetSymbolRowData(QXwSymbolId symbolId,
                                                                   QXwObjectId objectId,
                                                                   int propertySetIndex) {
  SKIFF_TRACE("QxwEventDispatcher::GetSymbolRowData");
  skiff::DispatcherVerbose("QxwEventDispatcher::GetSymbolRowData\n");
  JNIEnv* pEnv = skiff::jni::AttachedEnv();
  return skiff::jni::CallObject<jstring>(pEnv, Peer(), m_getSymbolRowData,
                                         static_cast<jint>(symbolId), static_cast<jint>(objectId),
                                         static_cast<jint>(propertySetIndex));
}
