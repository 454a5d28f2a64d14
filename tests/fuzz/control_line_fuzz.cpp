// Fuzz target: the emulator's control-line syntax. A line either splits into
// words or is refused; its words, each quoted again, split back into the
// same words; the text after the first k words splits into the words after
// them; and every argument reader either reads a word or refuses it.
#include <string>
#include <string_view>
#include <vector>

#include "emulator/control_syntax.h"
#include "tests/fuzz/check.h"

using namespace qxwemu;

namespace {

// Runs `read`; a refusal is an answer too.
template <typename Read>
void Refusable(Read read) {
  try {
    read();
  } catch (const Refusal& refusal) {
    Check(!refusal.message.empty());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view line(reinterpret_cast<const char*>(data), size);
  Words words;
  try {
    words = SplitWords(line);
  } catch (const Refusal&) {
    return 0;
  }
  std::string quoted;
  for (const std::string& word : words) {
    quoted += '"';
    for (char c : word) quoted += c == '"' || c == '\\' ? std::string{'\\', c} : std::string{c};
    quoted += "\" ";
  }
  Check(SplitWords(quoted) == words);
  for (size_t k : {size_t{1}, size_t{2}, words.size()}) {
    if (k > words.size()) continue;
    Check(SplitWords(AfterWords(line, static_cast<int>(k))) ==
          Words(words.begin() + k, words.end()));
  }
  for (const std::string& word : words) {
    Refusable([&] { Check(ParseInteger(word, -5, 5, "n") + 5 <= 10); });
    Refusable([&] { ParseFlag(word); });
  }
  Refusable([&] { ParseIds(words, 1); });
  Refusable([&] { Check(ParseJsonArgument(AfterWords(line, 1)).is_object()); });
  if (!words.empty()) Refusable([&] { ExpectWords(words, 2, 3); });
  return 0;
}
