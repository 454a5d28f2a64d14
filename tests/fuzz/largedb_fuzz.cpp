// Fuzz target: the large-database file matcher, on a file of any bytes,
// against the rule its header states: pieces of at most the key's length,
// a piece ending early after a line feed, and one piece equal to the key.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "dispatcher/largedb.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const std::string key = skiff::kLargeDbKey;
  bool expected = false;
  for (size_t at = 0; at < text.size();) {
    size_t end = std::min(text.size(), at + key.size());
    size_t feed = text.find('\n', at);
    if (feed < end) end = feed + 1;
    expected = expected || text.compare(at, end - at, key) == 0;
    at = end;
  }
  std::FILE* file = fmemopen(const_cast<char*>(text.data()), text.size(), "r");
  if (file == nullptr) return 0;  // no stream over nothing
  const bool found = skiff::LargeDbKeyFound(file);
  std::fclose(file);
  if (found != expected) std::abort();
  return 0;
}
