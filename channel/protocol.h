// The request protocol between client threads and the dispatcher thread:
// the request codes, the text of every request, the splitting of a received
// request into its code and arguments, and messages read up to their NUL.
//
// A message is a text and its NUL, at most kMessageSize bytes. A request is
// its code in decimal, a space and its arguments: numbers separated by
// spaces, or fields separated by vertical tabs, positional (two adjacent
// tabs hold an empty field; a field missing at the end is empty text or 0).
// Ids travel as signed 32-bit decimal, so an id of 2^31 or more travels as a
// negative number and arrives with the same 32 bits. The answer is "1" or
// "0". Nothing here touches Java or the network.
#ifndef SKIFF_CHANNEL_PROTOCOL_H_
#define SKIFF_CHANNEL_PROTOCOL_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>

namespace skiff::channel {

constexpr size_t kMessageSize = 500;
using Message = std::array<char, kMessageSize>;

enum RequestCode : int {
  kGetSubmapAndSymbols = 1,
  kGetSymbolRowData = 2,
  kGetNodeSymbol = 3,
  kGetNodeParentPath = 4,
  kGetSymbolParentPath = 5,
  kGetOtherSymbols = 6,
  kGetMatchingSymbols = 7,
  kGetLocationScopingInfo = 8,
  kSetAcknowledgeState = 9,
  kSetManageState = 10,
  kSetSymbolVisibilityState = 11,
  kSetInterfaceAndNodeVisibilityState = 12,
  kDeleteAllSymbolsForObjects = 13,
};
constexpr int kLastRequestCode = kDeleteAllSymbolsForObjects;

// Formatting, on the client side. Each writes the request into `message` and
// returns the bytes it needs, NUL included. A result above kMessageSize means
// that the request does not fit: `message` then holds a cut text that must
// not be sent. A null text is written as empty text.

// True when `text` (null counts as empty) can travel as a field: it holds no
// vertical tab, which would shift the fields after it.
bool IsFieldText(const char* text);

// The code, then " %d" for each number, each written as a signed 32-bit
// number: requests 1, 2, 5, 6 and 8 to 13 (8 has no number, hence no space).
size_t FormatNumbers(Message& message, RequestCode code, std::initializer_list<int64_t> numbers);
// Request 3: "3 selectionName\vparentSelectionName\vcustomSubmapId\vdoRecreate".
size_t FormatNodeSymbol(Message& message, const char* selectionName,
                        const char* parentSelectionName, uint32_t customSubmapId,
                        bool doRecreateParentPath);
// Request 4: "4 hostnameOrIPAddress\vparentSelectionName\vnumRootObjects".
size_t FormatNodeParentPath(Message& message, const char* hostnameOrIPAddress,
                            const char* parentSelectionName, int numRootObjects);
// Request 7: "7 category\vmatchType\vnumRootObjects\vqueryString"; the query
// comes last, so it may hold spaces.
size_t FormatMatchingSymbols(Message& message, int queryCategoryType, int queryMatchType,
                             const char* queryString, int numRootObjects);

// Parsing, on the server side.

// A received request: its code (the decimal number at the start) and its
// argument text, which starts after the first space and is empty when the
// message has none.
struct Request {
  int code;
  char* arguments;
};
Request SplitRequest(char* message);

// The first `count` numbers of a space-separated argument text, read as
// "%d" reads them; a missing number counts as 0.
void ParseNumbers(const char* arguments, int32_t* numbers, size_t count);
template <size_t N>
std::array<int32_t, N> ParseNumbers(const char* arguments) {
  std::array<int32_t, N> numbers{};
  ParseNumbers(arguments, numbers.data(), N);
  return numbers;
}

// The first `count` fields of a tab-separated argument text, split in place
// at each tab, by position: two adjacent tabs hold an empty field, and a
// missing field counts as empty text. The last field runs to the end of the
// text.
void SplitFields(char* arguments, const char** fields, size_t count);
template <size_t N>
std::array<const char*, N> SplitFields(char* arguments) {
  std::array<const char*, N> fields{};
  SplitFields(arguments, fields.data(), N);
  return fields;
}

// A field's number (decimal, as a signed 32-bit value); 0 when it has none.
int32_t FieldNumber(const char* field);

// The arguments of the three requests that carry text; the texts point into
// the message.
struct NodeSymbolRequest {
  const char* selectionName;
  const char* parentSelectionName;
  int32_t customSubmapId;
  int32_t doRecreateParentPath;
};
NodeSymbolRequest ParseNodeSymbol(char* arguments);

struct NodeParentPathRequest {
  const char* hostnameOrIPAddress;
  const char* parentSelectionName;
  int32_t numRootObjects;
};
NodeParentPathRequest ParseNodeParentPath(char* arguments);

struct MatchingSymbolsRequest {
  int32_t queryCategoryType;
  int32_t queryMatchType;
  int32_t numRootObjects;
  const char* queryString;
};
MatchingSymbolsRequest ParseMatchingSymbols(char* arguments);

// The answer to a request: "1" or "0" with its NUL.
size_t FormatAnswer(Message& message, bool result);
// The number at the start of an answer.
int ParseAnswer(const char* answer);

// Collects received bytes into messages that end at their NUL: a message
// split across reads is completed by later reads, and several messages in
// one read come out one at a time. Holds at most kMessageSize bytes: a
// longer message is dropped whole, up to and including its NUL, and comes
// out as one empty message in its place, so that nothing of it is served and
// answers keep their order.
class MessageAssembler {
 public:
  // Where the next read may write, and how many bytes it may write.
  char* space() { return buffer_.data() + held_; }
  size_t spaceLeft() const { return kMessageSize - held_; }
  // Accounts for `count` bytes written at space().
  void Received(size_t count) { held_ += count; }

  // The next complete message, NUL-terminated and valid until the next call;
  // null when none is complete (what is held of the next one then moves to
  // the front of the buffer).
  char* Next();
  // True when the message Next returned last stands for a dropped one.
  bool LastDropped() const { return lastDropped_; }
  // Forgets everything held.
  void Clear() {
    held_ = handedOut_ = 0;
    dropping_ = lastDropped_ = false;
  }

 private:
  Message buffer_{};
  size_t held_ = 0;        // bytes in the buffer
  size_t handedOut_ = 0;   // bytes of messages already returned by Next
  bool dropping_ = false;  // the bytes held belong to a message too long
  bool lastDropped_ = false;
};

}  // namespace skiff::channel

#endif  // SKIFF_CHANNEL_PROTOCOL_H_
