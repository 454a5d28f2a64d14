// Reading the keys of one map file element: each key as a value of its type
// and range, the element's name in messages, and the refusal of any key
// nobody asked for. Shared by the parts of the map file loader.
#ifndef SKIFF_EMULATOR_MAP_KEYS_H_
#define SKIFF_EMULATOR_MAP_KEYS_H_

#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "emulator/loader.h"

namespace qxwemu {

constexpr int64_t kMaxId = std::numeric_limits<uint32_t>::max();
constexpr int64_t kMinInt = std::numeric_limits<int32_t>::min();
constexpr int64_t kMaxInt = std::numeric_limits<int32_t>::max();

// Returns `s` between double quotes, as messages name keys and fields; `s`
// is not escaped.
std::string Quote(const std::string& s);

// Reads the keys of one JSON object element and refuses keys nobody read.
// Every reading method records its key as read and throws MapError, naming
// `entity()`, when the value has the wrong type or range; an absent key
// gives the method's default.
class Reader {
 public:
  // Throws MapError unless `element` is a JSON object. `element` must
  // outlive the reader.
  Reader(const Json& element, std::string entity);

  // The name of the element in messages, such as "object 7".
  const std::string& entity() const { return entity_; }
  // Names the element `entity` in the messages from now on.
  void Rename(std::string entity) { entity_ = std::move(entity); }

  // The value of `key` (a string literal), or null when absent; never throws.
  const Json* Get(const char* key) {
    read_.push_back(key);
    auto it = element_.find(key);
    return it == element_.end() ? nullptr : &*it;
  }
  // Whether the element has `key`; does not count as reading it.
  bool Has(const char* key) const { return element_.contains(key); }

  // An integer from `min` to `max`; `absent` when the key is missing.
  int64_t Int(const char* key, int64_t min, int64_t max, int64_t absent = 0);
  // An id, from 0 to 4294967295 (0 when absent).
  uint32_t Id(const char* key) { return static_cast<uint32_t>(Int(key, 0, kMaxId)); }
  // A signed 32-bit integer (0 when absent).
  int Int32(const char* key) { return static_cast<int>(Int(key, kMinInt, kMaxInt)); }
  // An unsigned 32-bit integer (0 when absent).
  uint32_t Uint32(const char* key) { return static_cast<uint32_t>(Int(key, 0, kMaxId)); }
  // true or false; `absent` when the key is missing.
  bool Bool(const char* key, bool absent = false);
  // A string; empty when the key is missing.
  std::string Str(const char* key);
  // An array of strings; empty when the key is missing.
  std::vector<std::string> Strings(const char* key);

  // Refuses `key` unless `allowed`, saying `why` ("applies to ... only").
  void Forbid(const char* key, bool allowed, const std::string& why);

  // Throws MapError naming the first key of the element nobody read.
  void Done() const;

 private:
  const Json& element_;
  std::string entity_;
  std::vector<const char*> read_;  // the keys asked for (string literals)
};

// The name of an element that has no id yet: "kind at position N".
std::string Positional(const char* kind, size_t position);

// Reads the "id" of an element, from 1 to 4294967295, and names the element
// "kind ID" from then on; throws MapError when the id is missing or out of
// range.
uint32_t ReadId(Reader& r, const char* kind);

}  // namespace qxwemu

#endif  // SKIFF_EMULATOR_MAP_KEYS_H_
