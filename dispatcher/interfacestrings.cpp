#include "dispatcher/interfacestrings.h"

#include <sstream>

namespace skiff {

std::vector<std::string> GetInterfaceStrings(const QXwListFieldValue* list) {
  std::vector<std::string> strings;
  if (list == nullptr) return strings;
  for (int i = 0; i < list->count; ++i) {
    const char* s = list->list[i].string_val;
    strings.emplace_back(s != nullptr ? s : "");
  }
  return strings;
}

std::string ConcatenateIndexedTokens(int tokenIndex,
                                     const std::vector<std::string>& interfaceStrings) {
  std::string joined;
  for (size_t i = 0; i < interfaceStrings.size(); ++i) {
    if (i > 0) joined += '\n';
    std::istringstream tokens(interfaceStrings[i]);
    std::string token;
    for (int t = 0; t <= tokenIndex && tokens >> token; ++t) {
      if (t == tokenIndex) joined += token;
    }
  }
  return joined;
}

}  // namespace skiff
