// Test-only natives of TestNative: never linked into the product library.
#include <arpa/inet.h>
#include <malloc.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "bridge/text.h"
#include "channel/qxwinterface.h"
#include "channel/socketio.h"
#include "com_quenda_skiff_trellis_server_TestNative.h"
#include "dispatcher/main.h"
#include "emulator/qxwemu.h"
#include "tables/idsets.h"
#include "tables/keyedtable.h"
#include "tables/scopingcache.h"

namespace {

int s_realStderr = -1;
int s_captureFile = -1;
rlimit s_savedLimit{};

}  // namespace

JNIEXPORT void JNICALL Java_com_quenda_skiff_trellis_server_TestNative_beginStderrCapture(JNIEnv*,
                                                                                          jclass) {
  std::fflush(stderr);
  char path[] = "/tmp/skiff-stderr-XXXXXX";
  s_captureFile = mkstemp(path);
  unlink(path);
  s_realStderr = dup(2);
  dup2(s_captureFile, 2);
}

JNIEXPORT jbyteArray JNICALL
Java_com_quenda_skiff_trellis_server_TestNative_endStderrCapture(JNIEnv* pEnv, jclass) {
  std::fflush(stderr);
  dup2(s_realStderr, 2);
  close(s_realStderr);
  std::string captured;
  lseek(s_captureFile, 0, SEEK_SET);
  char buffer[4096];
  for (ssize_t n; (n = read(s_captureFile, buffer, sizeof(buffer))) > 0;) {
    captured.append(buffer, static_cast<size_t>(n));
  }
  close(s_captureFile);
  std::fwrite(captured.data(), 1, captured.size(), stderr);
  std::fflush(stderr);
  jbyteArray bytes = pEnv->NewByteArray(static_cast<jsize>(captured.size()));
  if (bytes != nullptr) {
    pEnv->SetByteArrayRegion(bytes, 0, static_cast<jsize>(captured.size()),
                             reinterpret_cast<const jbyte*>(captured.data()));
  }
  return bytes;
}

JNIEXPORT jint JNICALL Java_com_quenda_skiff_trellis_server_TestNative_callbackPort(JNIEnv*,
                                                                                    jclass) {
  return ntohs(QxwEventDispatcher::GetJavaCallbackSocketPort());
}

JNIEXPORT jint JNICALL Java_com_quenda_skiff_trellis_server_TestNative_rootSubmapId(JNIEnv*,
                                                                                    jclass) {
  return static_cast<jint>(QxwEventDispatcher::GetRootSubmapId());
}

JNIEXPORT void JNICALL Java_com_quenda_skiff_trellis_server_TestNative_printError(
    JNIEnv* pEnv, jclass, jboolean client, jstring context, jstring errorText) {
  skiff::jni::Utf8Chars contextChars(pEnv, context);
  skiff::jni::Utf8Chars text(pEnv, errorText);
  if (contextChars.get() == nullptr) {
    client ? QxwInterface::PrintError(text.get()) : QxwEventDispatcher::PrintError(text.get());
  } else if (client) {
    QxwInterface::PrintError(contextChars.get(), text.get());
  } else {
    QxwEventDispatcher::PrintError(contextChars.get(), text.get());
  }
}

JNIEXPORT jint JNICALL Java_com_quenda_skiff_trellis_server_TestNative_request(JNIEnv* pEnv, jclass,
                                                                               jstring text) {
  skiff::jni::Utf8Chars request(pEnv, text);
  const int sock = s_ThreadCallbackSocketDescriptor;
  if (sock == 0 || request.get() == nullptr) return -1;
  if (!skiff::channel::SendAll(sock, request.get(), std::strlen(request.get()) + 1)) return -1;
  std::string answer;
  for (char c; recv(sock, &c, 1, 0) == 1 && c != '\0';) answer += c;
  return answer.empty() ? -1 : std::atoi(answer.c_str());
}

JNIEXPORT jobject JNICALL Java_com_quenda_skiff_trellis_server_TestNative_objectFieldValues(
    JNIEnv* pEnv, jclass, jint objectId) {
  return QxwEventDispatcher::GetObjectFieldValues(pEnv, objectId).release();
}

JNIEXPORT jintArray JNICALL Java_com_quenda_skiff_trellis_server_TestNative_rootSubmapIds(
    JNIEnv* pEnv, jclass, jint numRootObjects) {
  std::unique_ptr<SubmapHashtable> roots =
      QxwEventDispatcher::GetRootSubmapsHashtable(pEnv, numRootObjects);
  std::vector<jint> ids;
  skiff::ForEachEntry(*roots,
                      [&](_HashItem& item) { ids.push_back(static_cast<jint>(item.key())); });
  std::sort(ids.begin(), ids.end());
  jintArray array = pEnv->NewIntArray(static_cast<jsize>(ids.size()));
  if (array != nullptr) {
    pEnv->SetIntArrayRegion(array, 0, static_cast<jsize>(ids.size()), ids.data());
  }
  return array;
}

JNIEXPORT jstring JNICALL
Java_com_quenda_skiff_trellis_server_TestNative_emulator(JNIEnv* pEnv, jclass, jstring command) {
  skiff::jni::Utf8Chars line(pEnv, command);
  if (line.get() == nullptr) return nullptr;
  return skiff::jni::NewUtf8String(pEnv, qxwemu::Control(line.get()).c_str()).release();
}

JNIEXPORT jint JNICALL Java_com_quenda_skiff_trellis_server_TestNative_childSubmapId(
    JNIEnv* pEnv, jclass, jstring selectionName) {
  skiff::jni::Utf8Chars name(pEnv, selectionName);
  if (name.get() == nullptr) return 0;
  return static_cast<jint>(ScopingCache::GetChildSubmapId(QxwEventDispatcher::m_pMap, name.get()));
}

JNIEXPORT jboolean JNICALL
Java_com_quenda_skiff_trellis_server_TestNative_limitDescriptors(JNIEnv*, jclass) {
  if (getrlimit(RLIMIT_NOFILE, &s_savedLimit) != 0) return JNI_FALSE;
  // The lowest free descriptor: with the limit there, no new one can be made.
  int lowestFree = dup(0);
  if (lowestFree < 0) return JNI_FALSE;
  close(lowestFree);
  rlimit limit = s_savedLimit;
  limit.rlim_cur = static_cast<rlim_t>(lowestFree);
  return setrlimit(RLIMIT_NOFILE, &limit) == 0 ? JNI_TRUE : JNI_FALSE;
}

JNIEXPORT void JNICALL Java_com_quenda_skiff_trellis_server_TestNative_restoreDescriptors(JNIEnv*,
                                                                                          jclass) {
  setrlimit(RLIMIT_NOFILE, &s_savedLimit);
}

JNIEXPORT jlong JNICALL Java_com_quenda_skiff_trellis_server_TestNative_nativeHeapInUse(JNIEnv*,
                                                                                        jclass) {
  return static_cast<jlong>(mallinfo2().uordblks);
}
