// The syntax of the control protocol: command words, arguments and replies
// (see control_syntax.h).
#include "emulator/control_syntax.h"

#include <algorithm>

namespace qxwemu {

namespace {

// Reads the word that starts at or after `*i`: blanks separate words; a word
// in double quotes may hold blanks, and \" and \\ stand for " and \ inside
// it. False when no word is left.
bool NextWord(std::string_view line, size_t* i, std::string* word) {
  while (*i < line.size() && (line[*i] == ' ' || line[*i] == '\t')) ++*i;
  if (*i >= line.size()) return false;
  word->clear();
  if (line[*i] != '"') {
    while (*i < line.size() && line[*i] != ' ' && line[*i] != '\t') *word += line[(*i)++];
    return true;
  }
  ++*i;
  while (*i < line.size()) {
    char c = line[(*i)++];
    if (c == '"') return true;
    if (c == '\\' && *i < line.size()) c = line[(*i)++];
    *word += c;
  }
  throw Refusal{"unterminated quoted word"};
}

}  // namespace

std::vector<std::string> SplitWords(std::string_view line) {
  std::vector<std::string> words;
  std::string word;
  size_t i = 0;
  while (NextWord(line, &i, &word)) words.push_back(word);
  return words;
}

std::string_view AfterWords(std::string_view line, int n) {
  size_t i = 0;
  std::string word;
  for (int k = 0; k < n && NextWord(line, &i, &word); ++k) {
  }
  return line.substr(i);
}

int64_t ParseInteger(const std::string& word, int64_t min, int64_t max, const char* what) {
  if (word.empty()) throw Refusal{std::string(what) + " is missing"};
  size_t start = word[0] == '-' ? 1 : 0;
  if (start == word.size() || word.size() - start > 12 ||
      !std::all_of(word.begin() + start, word.end(), [](char c) { return c >= '0' && c <= '9'; })) {
    throw Refusal{std::string(what) + " must be an integer, not \"" + word + "\""};
  }
  int64_t n = std::stoll(word);
  if (n < min || n > max) {
    throw Refusal{std::string(what) + " must be from " + std::to_string(min) + " to " +
                  std::to_string(max)};
  }
  return n;
}

uint32_t ParseId(const std::string& word) {
  return static_cast<uint32_t>(ParseInteger(word, 1, 4294967295LL, "an id"));
}

std::vector<uint32_t> ParseIds(const std::vector<std::string>& words, size_t from) {
  if (words.size() <= from) throw Refusal{"at least one id is needed"};
  std::vector<uint32_t> ids;
  for (size_t i = from; i < words.size(); ++i) ids.push_back(ParseId(words[i]));
  return ids;
}

bool ParseFlag(const std::string& word) {
  if (word == "1") return true;
  if (word == "0") return false;
  throw Refusal{"the flag must be 0 or 1, not \"" + word + "\""};
}

void ExpectWords(const std::vector<std::string>& words, size_t min, size_t max) {
  if (words.size() < min || words.size() > max) {
    throw Refusal{"wrong number of arguments for " + words[0]};
  }
}

Json Ok() { return Json{{"ok", true}}; }

Json ParseJsonArgument(std::string_view text) {
  Json j = Json::parse(text.begin(), text.end(), nullptr, false);
  if (j.is_discarded()) throw Refusal{"the argument is not valid JSON"};
  if (!j.is_object()) throw Refusal{"the argument must be a JSON object"};
  return j;
}

Json WithId(Json element, uint32_t next) {
  if (!element.contains("id")) element["id"] = next;
  return element;
}

Json Created(uint32_t id) {
  Json reply = Ok();
  reply["id"] = id;
  return reply;
}

Json Refused(const std::string& message) { return Json{{"ok", false}, {"error", message}}; }

}  // namespace qxwemu
