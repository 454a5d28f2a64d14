#include "dispatcher/interfacestrings.h"

#include <string_view>

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

namespace {

bool IsBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// Token `tokenIndex` of `text` (runs of blanks separate tokens); empty when
// the text has fewer tokens.
std::string_view Token(std::string_view text, int tokenIndex) {
  size_t at = 0;
  for (int t = 0;; ++t) {
    while (at < text.size() && IsBlank(text[at])) ++at;
    if (at == text.size()) return {};
    size_t end = at;
    while (end < text.size() && !IsBlank(text[end])) ++end;
    if (t == tokenIndex) return text.substr(at, end - at);
    at = end;
  }
}

}  // namespace

std::string ConcatenateIndexedTokens(int tokenIndex,
                                     const std::vector<std::string>& interfaceStrings) {
  std::string joined;
  for (size_t i = 0; i < interfaceStrings.size(); ++i) {
    if (i > 0) joined += '\n';
    joined += Token(interfaceStrings[i], tokenIndex);
  }
  return joined;
}

}  // namespace skiff
