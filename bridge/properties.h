// java.util.Properties as native code fills it: made empty, then one
// key and value at a time.
#ifndef SKIFF_BRIDGE_PROPERTIES_H_
#define SKIFF_BRIDGE_PROPERTIES_H_

#include <jni.h>

#include "bridge/javacall.h"

namespace skiff::jni {

// A new empty java.util.Properties; null when Java fails.
LocalRef<jobject> NewProperties(JNIEnv* pEnv);

// Puts the key and value into `properties` (Hashtable's put); nothing when
// any of them is null.
void PutProperty(JNIEnv* pEnv, jobject properties, jstring key, jstring value);

}  // namespace skiff::jni

#endif  // SKIFF_BRIDGE_PROPERTIES_H_
