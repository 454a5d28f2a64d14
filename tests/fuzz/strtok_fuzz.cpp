// Fuzz target: the platform's tokenizer, against a plain split: every
// separator ends a field, so n separators make n + 1 fields, empty ones
// included. The first byte says how many of the next bytes are separators;
// the rest is the text.
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "platform/qxcommon.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const size_t count = std::min<size_t>(data[0] % 4, size - 1);
  const std::string separators =
      std::string(reinterpret_cast<const char*>(data + 1), count).c_str();
  std::string text = std::string(reinterpret_cast<const char*>(data + 1 + count), size - 1 - count);
  text = text.c_str();

  std::vector<std::string> expected(1);
  for (char c : text) {
    if (separators.find(c) != std::string::npos) {
      expected.emplace_back();
    } else {
      expected.back() += c;
    }
  }
  std::vector<std::string> fields;
  for (char* field = _QXstrtok(text.data(), separators.c_str(), 0); field != nullptr;
       field = _QXstrtok(nullptr, separators.c_str(), 0)) {
    fields.emplace_back(field);
  }
  if (fields != expected || _QXstrtok(nullptr, separators.c_str(), 0) != nullptr) std::abort();
  return 0;
}
