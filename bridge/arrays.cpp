#include "bridge/arrays.h"

#include <cstring>

#include "bridge/javacall.h"
#include "bridge/text.h"

namespace skiff::jni {

jsize ArrayLength(JNIEnv* pEnv, jarray array) {
  return array != nullptr ? pEnv->GetArrayLength(array) : -1;
}

std::optional<std::vector<uint32_t>> IdsOfIntArray(JNIEnv* pEnv, jintArray array, int count) {
  if (array == nullptr || count < 0 || ArrayLength(pEnv, array) != count) return std::nullopt;
  std::vector<jint> elements(static_cast<size_t>(count));
  if (count > 0) {
    pEnv->GetIntArrayRegion(array, 0, count, elements.data());
    if (Threw(pEnv, "JNI function", "GetIntArrayRegion")) return std::nullopt;
  }
  return std::vector<uint32_t>(elements.begin(), elements.end());
}

LocalRef<jintArray> IntArrayOfIds(JNIEnv* pEnv, const std::vector<uint32_t>& ids) {
  const jsize count = static_cast<jsize>(ids.size());
  LocalRef<jintArray> array(pEnv, pEnv->NewIntArray(count));
  if (Threw(pEnv, "JNI function", "NewIntArray") || !array) return {};
  std::vector<jint> values(ids.begin(), ids.end());
  if (count > 0) pEnv->SetIntArrayRegion(array.get(), 0, count, values.data());
  return array;
}

void ForEachString(JNIEnv* pEnv, jobjectArray array,
                   const std::function<void(const char* text)>& visit) {
  const jsize length = ArrayLength(pEnv, array);
  for (jsize i = 0; i < length; ++i) {
    LocalRef<jstring> element(pEnv, static_cast<jstring>(pEnv->GetObjectArrayElement(array, i)));
    if (Threw(pEnv, "JNI function", "GetObjectArrayElement")) {
      visit(nullptr);
      continue;
    }
    Utf8Chars chars(pEnv, element.get());
    visit(chars.get());
  }
}

bool PlatformText::HoldsNul() const {
  return text != nullptr && std::memchr(text.get(), '\0', length) != nullptr;
}

PlatformText PlatformTextOf(JNIEnv* pEnv, jstring str) {
  PlatformText result;
  LocalRef<jbyteArray> bytes(pEnv, jstring2mb(pEnv, str));
  const jsize length = bytes ? pEnv->GetArrayLength(bytes.get()) : 0;
  result.text.reset(static_cast<char*>(std::malloc(4 * static_cast<size_t>(length) + 4)));
  if (result.text == nullptr) {
    result.outOfMemory = true;
    return result;
  }
  if (length > 0) {
    pEnv->GetByteArrayRegion(bytes.get(), 0, length, reinterpret_cast<jbyte*>(result.text.get()));
  }
  result.length = static_cast<size_t>(length);
  result.text.get()[length] = '\0';
  return result;
}

}  // namespace skiff::jni
