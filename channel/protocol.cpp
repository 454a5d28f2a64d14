#include "channel/protocol.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace skiff::channel {

namespace {

// Formats into the message; returns the bytes needed, NUL included.
__attribute__((format(printf, 2, 3))) size_t Format(Message& message, const char* format, ...) {
  va_list args;
  va_start(args, format);
  int length = std::vsnprintf(message.data(), message.size(), format, args);
  va_end(args);
  return length < 0 ? kMessageSize + 1 : static_cast<size_t>(length) + 1;
}

const char* TextOrEmpty(const char* text) { return text != nullptr ? text : ""; }

// An id or count as it travels: its low 32 bits as a signed number.
int32_t OnWire(int64_t number) {
  return static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint64_t>(number)));
}

// Reads one "%d" number at *text; false when there is none.
bool ReadNumber(const char** text, int32_t* number) {
  char* end = nullptr;
  long long value = std::strtoll(*text, &end, 10);
  if (end == *text) return false;
  *number = OnWire(value);
  *text = end;
  return true;
}

}  // namespace

size_t FormatNumbers(Message& message, RequestCode code, std::initializer_list<int64_t> numbers) {
  std::string text = std::to_string(code);
  for (int64_t number : numbers) text += " " + std::to_string(OnWire(number));
  return Format(message, "%s", text.c_str());
}

size_t FormatNodeSymbol(Message& message, const char* selectionName,
                        const char* parentSelectionName, uint32_t customSubmapId,
                        bool doRecreateParentPath) {
  return Format(message, "%d %s\v%s\v%d\v%d", kGetNodeSymbol, TextOrEmpty(selectionName),
                TextOrEmpty(parentSelectionName), OnWire(customSubmapId),
                doRecreateParentPath ? 1 : 0);
}

size_t FormatNodeParentPath(Message& message, const char* hostnameOrIPAddress,
                            const char* parentSelectionName, int numRootObjects) {
  return Format(message, "%d %s\v%s\v%d", kGetNodeParentPath, TextOrEmpty(hostnameOrIPAddress),
                TextOrEmpty(parentSelectionName), numRootObjects);
}

size_t FormatMatchingSymbols(Message& message, int queryCategoryType, int queryMatchType,
                             const char* queryString, int numRootObjects) {
  return Format(message, "%d %d\v%d\v%d\v%s", kGetMatchingSymbols, queryCategoryType,
                queryMatchType, numRootObjects, TextOrEmpty(queryString));
}

Request SplitRequest(char* message) {
  char* space = std::strchr(message, ' ');
  char* arguments = space != nullptr ? space + 1 : message + std::strlen(message);
  return Request{std::atoi(message), arguments};
}

void ParseNumbers(const char* arguments, int32_t* numbers, size_t count) {
  size_t read = 0;
  while (read < count && ReadNumber(&arguments, &numbers[read])) ++read;
  for (; read < count; ++read) numbers[read] = 0;
}

void SplitFields(char* arguments, const char** fields, size_t count) {
  // By hand rather than with the platform's tokenizer, which may merge
  // adjacent separators and so move every field after an empty one.
  char* field = arguments;
  for (size_t i = 0; i < count; ++i) {
    fields[i] = field != nullptr ? field : "";
    if (field == nullptr || i + 1 == count) continue;
    char* tab = std::strchr(field, '\v');
    if (tab != nullptr) *tab = '\0';
    field = tab != nullptr ? tab + 1 : nullptr;
  }
}

bool IsFieldText(const char* text) { return text == nullptr || std::strchr(text, '\v') == nullptr; }

int32_t FieldNumber(const char* field) {
  int32_t number = 0;
  return ReadNumber(&field, &number) ? number : 0;
}

NodeSymbolRequest ParseNodeSymbol(char* arguments) {
  auto [selectionName, parentSelectionName, customSubmapId, doRecreateParentPath] =
      SplitFields<4>(arguments);
  return NodeSymbolRequest{selectionName, parentSelectionName, FieldNumber(customSubmapId),
                           FieldNumber(doRecreateParentPath)};
}

NodeParentPathRequest ParseNodeParentPath(char* arguments) {
  auto [hostnameOrIPAddress, parentSelectionName, numRootObjects] = SplitFields<3>(arguments);
  return NodeParentPathRequest{hostnameOrIPAddress, parentSelectionName,
                               FieldNumber(numRootObjects)};
}

MatchingSymbolsRequest ParseMatchingSymbols(char* arguments) {
  auto [queryCategoryType, queryMatchType, numRootObjects, queryString] = SplitFields<4>(arguments);
  return MatchingSymbolsRequest{FieldNumber(queryCategoryType), FieldNumber(queryMatchType),
                                FieldNumber(numRootObjects), queryString};
}

size_t FormatAnswer(Message& message, bool result) { return Format(message, "%d", result); }

int ParseAnswer(const char* answer) { return std::atoi(answer); }

char* MessageAssembler::Next() {
  lastDropped_ = false;
  char* start = buffer_.data() + handedOut_;
  void* nul = std::memchr(start, '\0', held_ - handedOut_);
  if (nul != nullptr) {
    handedOut_ = static_cast<size_t>(static_cast<char*>(nul) - buffer_.data()) + 1;
    if (!dropping_) return start;
    // The end of a message too long: it comes out as the empty text of its
    // NUL.
    dropping_ = false;
    lastDropped_ = true;
    return static_cast<char*>(nul);
  }
  if (dropping_) {
    held_ = handedOut_ = 0;
    return nullptr;
  }
  // No complete message: keep the start of the next one at the front.
  std::memmove(buffer_.data(), start, held_ - handedOut_);
  held_ -= handedOut_;
  handedOut_ = 0;
  if (held_ == kMessageSize) {
    // Full and no end: too long. The rest of it is dropped as it comes.
    dropping_ = true;
    held_ = 0;
  }
  return nullptr;
}

}  // namespace skiff::channel
