// The platform's surprising behaviours: read from the environment when a
// session opens, and set by the control commands list-order, cascade and
// lists.
#include "emulator/surprises.h"

#include <cstdlib>

#include "emulator/control_commands.h"

namespace qxwemu {

namespace {

// list-order's words after the command: creation, or permuted SEED.
void SetOrder(const std::vector<std::string>& words, Surprises* s) {
  if (words.size() == 1 && words[0] == "creation") {
    s->order = ListOrder::kCreation;
    s->seed = 0;
    return;
  }
  if (words.size() == 2 && words[0] == "permuted") {
    s->order = ListOrder::kPermuted;
    s->seed = static_cast<uint32_t>(ParseInteger(words[1], 0, 4294967295LL, "the seed"));
    return;
  }
  throw Refusal{"the list order is creation or permuted SEED"};
}

bool CascadeFlag(const std::string& word) {
  if (word == "on" || word == "1") return true;
  if (word == "off" || word == "0") return false;
  throw Refusal{"cascading is on or off, not \"" + word + "\""};
}

// lists' words: usual, empty or null; whole or partial; what is not named
// takes its default.
void SetLists(const std::vector<std::string>& words, Surprises* s) {
  if (words.empty()) throw Refusal{"usage: lists usual|empty|null whole|partial"};
  bool nothingNamed = false, partialNamed = false;
  s->nothing = NothingAs::kUsual;
  s->partial = false;
  for (const std::string& word : words) {
    const bool isNothing = word == "usual" || word == "empty" || word == "null";
    const bool isPartial = word == "whole" || word == "partial";
    if (!isNothing && !isPartial) {
      throw Refusal{"\"" + word + "\" is none of usual, empty, null, whole, partial"};
    }
    bool& named = isNothing ? nothingNamed : partialNamed;
    if (named) throw Refusal{"\"" + word + "\" contradicts or repeats an earlier word"};
    named = true;
    if (isNothing) {
      s->nothing = word == "empty"  ? NothingAs::kEmpty
                   : word == "null" ? NothingAs::kNull
                                    : NothingAs::kUsual;
    } else {
      s->partial = word == "partial";
    }
  }
}

// The words of `text` cut at `separator`.
std::vector<std::string> Cut(const std::string& text, char separator) {
  std::vector<std::string> words;
  for (size_t start = 0;;) {
    size_t end = text.find(separator, start);
    words.push_back(text.substr(start, end - start));
    if (end == std::string::npos) return words;
    start = end + 1;
  }
}

// Applies `set` to the value of the variable `name` when it is set and not
// empty; a refusal names the variable.
template <class Set>
void FromVariable(const char* name, Set set) {
  const char* value = std::getenv(name);
  if (value == nullptr || *value == '\0') return;
  try {
    set(std::string(value));
  } catch (const Refusal& r) {
    throw Refusal{std::string(name) + "=" + value + ": " + r.message};
  }
}

}  // namespace

Surprises SurprisesFromEnvironment() {
  Surprises s;
  FromVariable("QXW_LIST_ORDER", [&](const std::string& v) { SetOrder(Cut(v, ':'), &s); });
  FromVariable("QXW_CASCADE", [&](const std::string& v) { s.cascade = CascadeFlag(v); });
  FromVariable("QXW_LISTS", [&](const std::string& v) { SetLists(Cut(v, ','), &s); });
  return s;
}

const Surprises& CurrentSurprises() {
  static const Surprises defaults;
  const Session& s = Emu().session;
  return s.open ? s.surprises : defaults;
}

bool NoneForNothing() {
  if (CurrentSurprises().nothing != NothingAs::kNull) return false;
  SetError(QXW_ERR_NOT_FOUND, "nothing to list");
  return true;
}

bool EmptyForNothing() { return CurrentSurprises().nothing == NothingAs::kEmpty; }

bool PartialIdLists() { return CurrentSurprises().partial; }

// list-order creation | list-order permuted SEED
Json CmdListOrder(const Words& w, std::string_view) {
  Surprises& s = OpenSession().surprises;
  Surprises next = s;
  SetOrder({w.begin() + 1, w.end()}, &next);
  s = next;
  return Ok();
}

// cascade on|off
Json CmdCascade(const Words& w, std::string_view) {
  ExpectWords(w, 2, 2);
  Session& session = OpenSession();
  session.surprises.cascade = CascadeFlag(w[1]);
  return Ok();
}

// lists usual|empty|null whole|partial (either or both)
Json CmdLists(const Words& w, std::string_view) {
  Surprises& s = OpenSession().surprises;
  Surprises next = s;
  SetLists({w.begin() + 1, w.end()}, &next);
  s = next;
  return Ok();
}

}  // namespace qxwemu
