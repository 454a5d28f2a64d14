#include "bridge/textcache.h"

#include <algorithm>

#include "bridge/text.h"

namespace skiff::jni {

JavaTexts::JavaTexts(JNIEnv* pEnv, size_t capacity)
    : env_(pEnv), capacity_(std::max<size_t>(capacity, 1)) {
  entries_.reserve(capacity_);
}

jstring JavaTexts::Get(const char* text) {
  if (text == nullptr) text = "";
  for (const Entry& entry : entries_) {
    if (entry.text == text) return entry.str.get();
  }
  LocalRef<jstring> str(env_, mb2jstring(env_, text));
  if (!str) return nullptr;
  if (entries_.size() < capacity_) {
    entries_.push_back({text, std::move(str)});
    return entries_.back().str.get();
  }
  Entry& replaced = entries_[next_];
  next_ = (next_ + 1) % capacity_;
  replaced.text = text;
  replaced.str = std::move(str);
  return replaced.str.get();
}

}  // namespace skiff::jni
