// The syntax of the control protocol: a command line cut into words, its
// arguments read as integers, ids, flags or JSON, and the JSON replies. Pure
// logic, shared by the command handlers and the dispatch.
#ifndef SKIFF_EMULATOR_CONTROL_SYNTAX_H_
#define SKIFF_EMULATOR_CONTROL_SYNTAX_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "emulator/loader.h"

namespace qxwemu {

// A refused command: the message becomes the reply's "error".
struct Refusal {
  std::string message;
};

// The words of a command line; the first is the command's name.
using Words = std::vector<std::string>;

// Cuts `line` into words: blanks separate words; a word in double quotes may
// hold blanks, and \" and \\ stand for " and \ inside it. Throws Refusal on
// an unterminated quoted word.
std::vector<std::string> SplitWords(std::string_view line);

// The text after the first `n` words (a JSON argument).
std::string_view AfterWords(std::string_view line, int n);

// `word` as a decimal integer from `min` to `max`; throws Refusal, naming
// the argument `what`, when it is missing, not an integer or out of range.
int64_t ParseInteger(const std::string& word, int64_t min, int64_t max, const char* what);
// `word` as an id, from 1 to 4294967295; throws Refusal otherwise.
uint32_t ParseId(const std::string& word);
// The ids from `words[from]` on; throws Refusal when there is none or one is
// not an id.
std::vector<uint32_t> ParseIds(const std::vector<std::string>& words, size_t from);
// "1" or "0" as true or false; throws Refusal on anything else.
bool ParseFlag(const std::string& word);

// Throws Refusal unless the command has from `min` to `max` words, its own
// name included.
void ExpectWords(const std::vector<std::string>& words, size_t min, size_t max);

// `text` as a JSON object; throws Refusal when it is not valid JSON or not
// an object.
Json ParseJsonArgument(std::string_view text);

// Gives an element without an "id" the id `next`; returns the element.
Json WithId(Json element, uint32_t next);

// The reply of a command that succeeded: {"ok": true}.
Json Ok();
// The reply of a command that made the entity `id`.
Json Created(uint32_t id);
// The reply of a refused command, with `message` as its "error".
Json Refused(const std::string& message);

}  // namespace qxwemu

#endif  // SKIFF_EMULATOR_CONTROL_SYNTAX_H_
