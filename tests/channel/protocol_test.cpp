// The request protocol's texts, as the client writes them and the server
// takes them apart, and the reassembly of messages up to their NUL.
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

std::string Text(const Message& message) { return std::string(message.data()); }

TEST(RequestFormat, EveryRequestIsWrittenInItsFormat) {
  struct Case {
    const char* what;
    std::function<size_t(Message&)> format;
    std::string expected;
  };
  const Case cases[] = {
      {"row data, ids of 2^31 and more travel negative",
       [](Message& m) {
         return FormatNumbers(m, kGetSymbolRowData, {0x80000000u, 0xFFFFFFFFu, 3});
       },
       "2 -2147483648 -1 3"},
      {"node symbol without parent: an empty field, never a null marker",
       [](Message& m) { return FormatNodeSymbol(m, "router1", nullptr, 0, false); },
       "3 router1\v\v0\v0"},
      {"node symbol recreating its path",
       [](Message& m) { return FormatNodeSymbol(m, "n", "Site A", 12, true); },
       "3 n\vSite A\v12\v1"},
      {"node parent path", [](Message& m) { return FormatNodeParentPath(m, "10.0.0.1", "", 2); },
       "4 10.0.0.1\v\v2"},
      {"search: the query comes last, spaces and all",
       [](Message& m) { return FormatMatchingSymbols(m, 0, 1, "IP Internet *", 2); },
       "7 0\v1\v2\vIP Internet *"},
  };
  for (const Case& c : cases) {
    Message message;
    size_t length = c.format(message);
    EXPECT_EQ(Text(message), c.expected) << c.what;
    EXPECT_EQ(length, c.expected.size() + 1) << c.what;
  }
}

TEST(RequestFormat, ARequestFitsUpToFiveHundredBytesWithItsNul) {
  // "3 " + name + "\v\v0\v0" + NUL = name + 8 bytes.
  Message message;
  const std::string fits(kMessageSize - 8, 'x');
  EXPECT_EQ(FormatNodeSymbol(message, fits.c_str(), "", 0, false), kMessageSize);
  EXPECT_EQ(std::strlen(message.data()), kMessageSize - 1);

  const std::string tooLong = fits + "x";
  EXPECT_EQ(FormatNodeSymbol(message, tooLong.c_str(), "", 0, false), kMessageSize + 1);
  EXPECT_EQ(FormatMatchingSymbols(message, 0, 0, std::string(600, 'q').c_str(), 0),
            std::string("7 0\v0\v0\v").size() + 600 + 1);
  // What was written stays inside the buffer and is terminated.
  EXPECT_EQ(std::strlen(message.data()), kMessageSize - 1);
}

TEST(RequestParse, WhatTheClientWritesTheServerReadsBack) {
  Message message;
  FormatNumbers(message, kGetSymbolRowData, {0x80000000u, 0xFFFFFFFFu, 3});
  Request request = SplitRequest(message.data());
  EXPECT_EQ(request.code, kGetSymbolRowData);
  auto numbers = ParseNumbers<3>(request.arguments);
  EXPECT_EQ(static_cast<uint32_t>(numbers[0]), 0x80000000u);
  EXPECT_EQ(static_cast<uint32_t>(numbers[1]), 0xFFFFFFFFu);
  EXPECT_EQ(numbers[2], 3);

  FormatNodeSymbol(message, "router1", nullptr, 0xFFFFFFFEu, true);
  NodeSymbolRequest node = ParseNodeSymbol(SplitRequest(message.data()).arguments);
  EXPECT_STREQ(node.selectionName, "router1");
  EXPECT_STREQ(node.parentSelectionName, "");
  EXPECT_EQ(static_cast<uint32_t>(node.customSubmapId), 0xFFFFFFFEu);
  EXPECT_EQ(node.doRecreateParentPath, 1);

  FormatNodeParentPath(message, "host.example", "Site A", 3);
  NodeParentPathRequest path = ParseNodeParentPath(SplitRequest(message.data()).arguments);
  EXPECT_STREQ(path.hostnameOrIPAddress, "host.example");
  EXPECT_STREQ(path.parentSelectionName, "Site A");
  EXPECT_EQ(path.numRootObjects, 3);

  FormatMatchingSymbols(message, 2, 1, "10.1.* and more", 4);
  MatchingSymbolsRequest search = ParseMatchingSymbols(SplitRequest(message.data()).arguments);
  EXPECT_EQ(search.queryCategoryType, 2);
  EXPECT_EQ(search.queryMatchType, 1);
  EXPECT_EQ(search.numRootObjects, 4);
  EXPECT_STREQ(search.queryString, "10.1.* and more");
}

TEST(RequestParse, MissingArgumentsCountAsEmptyOrZero) {
  char codeOnly[] = "8";
  Request request = SplitRequest(codeOnly);
  EXPECT_EQ(request.code, 8);
  EXPECT_STREQ(request.arguments, "");
  auto numbers = ParseNumbers<3>(request.arguments);
  EXPECT_EQ(numbers, (std::array<int32_t, 3>{0, 0, 0}));

  char oneNumber[] = "5 42";
  EXPECT_EQ(ParseNumbers<3>(SplitRequest(oneNumber).arguments), (std::array<int32_t, 3>{42, 0, 0}));

  // Fields are positional: an empty one keeps the others in their places.
  struct NodeCase {
    std::string text;
    const char* selectionName;
    const char* parentSelectionName;
    int32_t doRecreateParentPath;
  };
  for (const NodeCase& c :
       {NodeCase{"3 router1", "router1", "", 0}, NodeCase{"3 \vSite A\v\v1", "", "Site A", 1}}) {
    std::string text = c.text;
    NodeSymbolRequest node = ParseNodeSymbol(SplitRequest(text.data()).arguments);
    EXPECT_STREQ(node.selectionName, c.selectionName) << c.text;
    EXPECT_STREQ(node.parentSelectionName, c.parentSelectionName) << c.text;
    EXPECT_EQ(node.customSubmapId, 0) << c.text;
    EXPECT_EQ(node.doRecreateParentPath, c.doRecreateParentPath) << c.text;
  }

  char emptyFields[] = "4 \v\v";
  NodeParentPathRequest path = ParseNodeParentPath(SplitRequest(emptyFields).arguments);
  EXPECT_STREQ(path.hostnameOrIPAddress, "");
  EXPECT_STREQ(path.parentSelectionName, "");
  EXPECT_EQ(path.numRootObjects, 0);
}

TEST(RequestFormat, ATextThatWouldBreakTheFieldsCannotTravel) {
  EXPECT_TRUE(IsFieldText("Site A, building 2"));
  EXPECT_TRUE(IsFieldText(nullptr)) << "null travels as empty text";
  EXPECT_FALSE(IsFieldText("Site\vA"));
}

TEST(RequestParse, AnswersAreOneDigit) {
  Message message;
  EXPECT_EQ(FormatAnswer(message, true), 2u);
  EXPECT_EQ(Text(message), "1");
  EXPECT_EQ(ParseAnswer(message.data()), 1);
  FormatAnswer(message, false);
  EXPECT_EQ(ParseAnswer(message.data()), 0);
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
  const char nul = '\0';
  Receive(assembler, std::string("2 3") + nul + "9 4 1" + nul + "13");
  EXPECT_STREQ(assembler.Next(), "2 1 2 3");
  EXPECT_STREQ(assembler.Next(), "9 4 1");
  EXPECT_EQ(assembler.Next(), nullptr);
  Receive(assembler, std::string(" 5") + nul);
  EXPECT_STREQ(assembler.Next(), "13 5");
  EXPECT_EQ(assembler.Next(), nullptr);
  EXPECT_EQ(assembler.spaceLeft(), kMessageSize);
  EXPECT_FALSE(assembler.LastDropped());
}

TEST(MessageAssembler, AMessageLongerThanFiveHundredBytesIsDroppedWholeUpToItsNul) {
  MessageAssembler assembler;
  const char nul = '\0';
  Receive(assembler, std::string(kMessageSize - 1, 'x') + nul);
  EXPECT_EQ(std::strlen(assembler.Next()), kMessageSize - 1) << "500 bytes with the NUL fit";
  EXPECT_EQ(assembler.Next(), nullptr);

  // 500 bytes and no end, then a tail that would read as a request of its
  // own: the whole message comes out as one empty text, in its place.
  Receive(assembler, std::string(kMessageSize, 'A'));
  EXPECT_EQ(assembler.Next(), nullptr);
  Receive(assembler, std::string(kMessageSize, 'A'));
  EXPECT_EQ(assembler.Next(), nullptr);
  Receive(assembler, std::string("2 77 77 77") + nul + "9 1 1" + nul);
  EXPECT_STREQ(assembler.Next(), "");
  EXPECT_TRUE(assembler.LastDropped());
  EXPECT_STREQ(assembler.Next(), "9 1 1");
  EXPECT_FALSE(assembler.LastDropped());
  EXPECT_EQ(assembler.Next(), nullptr);
  EXPECT_EQ(assembler.spaceLeft(), kMessageSize);
}

}  // namespace
