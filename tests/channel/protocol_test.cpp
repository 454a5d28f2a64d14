// The request protocol's texts, as the client writes them and the server
// takes them apart, and the reassembly of messages up to their NUL. The round
// trip on any input is the protocol fuzz target's; here one plain case per
// format, the fields that go missing, the size limit and the assembler.
#include "channel/protocol.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>

// The platform's tokenizer may merge adjacent separators, as strtok does; the
// request fields are positional all the same. This test runs against such a
// tokenizer: it replaces the platform's for this program.
extern "C" char* _QXstrtok(char* text, const char* separators, int) {
  static char* next = nullptr;
  return strtok_r(text, separators, &next);
}

namespace {

using namespace skiff::channel;
using namespace std::string_literals;

std::string Text(const char* text) { return text; }
std::string Text(int32_t number) { return std::to_string(number); }

// A received request as the server reads it: its code, then each argument
// its code's parser gives, after a '|'.
std::string Parsed(std::string text) {
  Request r = SplitRequest(text.data());
  std::string out = Text(r.code);
  auto put = [&](auto... parts) { return ((out += "|" + Text(parts)), ...); };
  if (r.code == kGetNodeSymbol) {
    auto [name, parent, submap, recreate] = ParseNodeSymbol(r.arguments);
    return put(name, parent, submap, recreate);
  }
  if (r.code == kGetNodeParentPath) {
    auto [host, parent, roots] = ParseNodeParentPath(r.arguments);
    return put(host, parent, roots);
  }
  if (r.code == kGetMatchingSymbols) {
    auto [category, match, roots, query] = ParseMatchingSymbols(r.arguments);
    return put(category, match, roots, query);
  }
  auto [a, b, c] = ParseNumbers<3>(r.arguments);
  return put(a, b, c);
}

TEST(Request, EachFormatIsWrittenAndReadBack) {
  struct Case {
    std::function<size_t(Message&)> format;
    std::string text, parsed;
  } cases[] = {
      // Ids of 2^31 and more travel negative, with the same 32 bits.
      {[](Message& m) {
         return FormatNumbers(m, kGetSymbolRowData, {0x80000000u, 0xFFFFFFFFu, 3});
       },
       "2 -2147483648 -1 3", "2|-2147483648|-1|3"},
      // No parent: an empty field, never a null marker.
      {[](Message& m) { return FormatNodeSymbol(m, "router1", nullptr, 0xFFFFFFFEu, true); },
       "3 router1\v\v-2\v1", "3|router1||-2|1"},
      {[](Message& m) { return FormatNodeParentPath(m, "10.0.0.1", "Site A", 2); },
       "4 10.0.0.1\vSite A\v2", "4|10.0.0.1|Site A|2"},
      // The query comes last, spaces and all.
      {[](Message& m) { return FormatMatchingSymbols(m, 0, 1, "IP Internet *", 2); },
       "7 0\v1\v2\vIP Internet *", "7|0|1|2|IP Internet *"},
      {[](Message& m) { return FormatAnswer(m, true); }, "1", "1|0|0|0"},
      {[](Message& m) { return FormatAnswer(m, false); }, "0", "0|0|0|0"},
  };
  for (const Case& c : cases) {
    Message message;
    EXPECT_EQ(c.format(message), c.text.size() + 1) << c.text;
    EXPECT_EQ(std::string(message.data()), c.text);
    EXPECT_EQ(Parsed(message.data()), c.parsed);
  }
  EXPECT_EQ(ParseAnswer("1"), 1);
  EXPECT_EQ(ParseAnswer("0"), 0);
  EXPECT_TRUE(IsFieldText("Site A, building 2"));
  EXPECT_TRUE(IsFieldText(nullptr)) << "null travels as empty text";
  EXPECT_FALSE(IsFieldText("Site\vA"));
}

TEST(Request, MissingArgumentsCountAsEmptyOrZeroAndFieldsKeepTheirPlaces) {
  const std::pair<std::string, std::string> cases[] = {
      {"8", "8|0|0|0"},
      {"5 42", "5|42|0|0"},
      {"3 router1", "3|router1||0|0"},
      {"3 \vSite A\v\v1", "3||Site A|0|1"},
      {"4 \v\v", "4|||0"},
  };
  for (const auto& [text, parsed] : cases) EXPECT_EQ(Parsed(text), parsed);
}

TEST(Request, ARequestFitsUpToFiveHundredBytesWithItsNul) {
  // "3 " + name + "\v\v0\v0" + NUL = name + 8 bytes.
  Message message;
  const std::string fits(kMessageSize - 8, 'x');
  EXPECT_EQ(FormatNodeSymbol(message, fits.c_str(), "", 0, false), kMessageSize);
  EXPECT_EQ(std::strlen(message.data()), kMessageSize - 1);
  EXPECT_EQ(FormatNodeSymbol(message, (fits + "x").c_str(), "", 0, false), kMessageSize + 1);
  EXPECT_EQ(FormatMatchingSymbols(message, 0, 0, std::string(600, 'q').c_str(), 0),
            std::string("7 0\v0\v0\v").size() + 600 + 1);
  // What was written stays inside the buffer and is terminated.
  EXPECT_EQ(std::strlen(message.data()), kMessageSize - 1);
}

// Feeds `bytes` to the assembler as one read.
void Receive(MessageAssembler& assembler, const std::string& bytes) {
  ASSERT_LE(bytes.size(), assembler.spaceLeft());
  std::memcpy(assembler.space(), bytes.data(), bytes.size());
  assembler.Received(bytes.size());
}

TEST(MessageAssembler, MessagesComeOutWholeWhateverTheReads) {
  MessageAssembler assembler;
  Receive(assembler, "2 1 ");
  EXPECT_EQ(assembler.Next(), nullptr) << "half a message is never served";
  Receive(assembler,
          "2 3\0"
          "9 4 1\0"
          "13"s);
  EXPECT_STREQ(assembler.Next(), "2 1 2 3");
  EXPECT_STREQ(assembler.Next(), "9 4 1");
  EXPECT_EQ(assembler.Next(), nullptr);
  Receive(assembler, " 5\0"s);
  EXPECT_STREQ(assembler.Next(), "13 5");
  EXPECT_EQ(assembler.Next(), nullptr);
  EXPECT_EQ(assembler.spaceLeft(), kMessageSize);
  EXPECT_FALSE(assembler.LastDropped());
}

TEST(MessageAssembler, AMessageLongerThanFiveHundredBytesIsDroppedWholeUpToItsNul) {
  MessageAssembler assembler;
  Receive(assembler, std::string(kMessageSize - 1, 'x') + '\0');
  EXPECT_EQ(std::strlen(assembler.Next()), kMessageSize - 1) << "500 bytes with the NUL fit";
  EXPECT_EQ(assembler.Next(), nullptr);

  // 500 bytes and no end, then a tail that would read as a request of its
  // own: the whole message comes out as one empty text, in its place.
  for (int i = 0; i < 2; ++i) {
    Receive(assembler, std::string(kMessageSize, 'A'));
    EXPECT_EQ(assembler.Next(), nullptr);
  }
  Receive(assembler,
          "2 77 77 77\0"
          "9 1 1\0"s);
  EXPECT_STREQ(assembler.Next(), "");
  EXPECT_TRUE(assembler.LastDropped());
  EXPECT_STREQ(assembler.Next(), "9 1 1");
  EXPECT_FALSE(assembler.LastDropped());
  EXPECT_EQ(assembler.Next(), nullptr);
  EXPECT_EQ(assembler.spaceLeft(), kMessageSize);
}

}  // namespace
