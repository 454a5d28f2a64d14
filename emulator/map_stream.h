// Streaming a map file: the JSON event handler that cuts the text into
// top-level sections and the elements of the three element arrays, and hands
// each to a handler as a small JSON value. Shared by the parts of the map
// file loader.
#ifndef SKIFF_EMULATOR_MAP_STREAM_H_
#define SKIFF_EMULATOR_MAP_STREAM_H_

#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include "emulator/loader.h"

namespace qxwemu {

// Whether `key` is one of the top-level arrays whose elements are streamed
// one at a time: "objects", "submaps" or "symbols".
bool IsElementArray(const std::string& key);

// Streams a map file: top-level sections are built as small JSON values and
// the elements of the three big arrays one at a time, so a map of a million
// objects never exists as one JSON tree. The lower-case methods are the
// event interface of Json::sax_parse; they throw MapError when the file is
// not a JSON object or repeats a key, and return false (with parseError()
// set) on invalid JSON.
class MapSax {
 public:
  using number_integer_t = Json::number_integer_t;
  using number_unsigned_t = Json::number_unsigned_t;
  using number_float_t = Json::number_float_t;
  using string_t = Json::string_t;
  using binary_t = Json::binary_t;

  // Receives what the stream completes, in the order of the file; may throw
  // MapError, which ends the parse.
  struct Handler {
    virtual ~Handler() = default;
    // A top-level key other than the element arrays, with its whole value.
    virtual void Section(const std::string& key, Json& value) = 0;
    // One element of the array `key`, at `position` (1-based) in it.
    virtual void Element(const std::string& key, Json& element, size_t position) = 0;
  };

  // `handler` must outlive the parse.
  explicit MapSax(Handler& handler) : handler_(handler) {}

  bool null() { return Value(nullptr); }
  bool boolean(bool v) { return Value(v); }
  bool number_integer(number_integer_t v) { return Value(v); }
  bool number_unsigned(number_unsigned_t v) { return Value(v); }
  bool number_float(number_float_t v, const string_t&) { return Value(v); }
  bool string(string_t& v) { return Value(std::move(v)); }
  bool binary(binary_t&) { return Value(nullptr); }
  bool start_object(std::size_t);
  bool end_object();
  bool start_array(std::size_t);
  bool end_array();
  bool key(string_t& k);
  // Keeps the parser's message without its "[json.exception...] " prefix.
  bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception& ex);

  // The message of the JSON syntax error that stopped the parse.
  const std::string& parseError() const { return parseError_; }

 private:
  // The name of what is being read, for messages: the top-level key, or
  // "object at position N" inside an element array.
  std::string Current() const;
  // Takes a scalar: a whole section or element, or a part of one.
  bool Value(Json v);
  // Starts an object or array: a whole section or element, or a part of one.
  bool Open(Json container);
  // Ends the innermost object or array; the outermost completes.
  bool Close();
  // Puts `v` in the innermost container being built; returns where it went.
  Json* Add(Json v);
  // Hands the finished section or element to the handler.
  void Complete();

  Handler& handler_;
  int level_ = 0;  // 0 outside, 1 in the top object, 2 in an element array
  bool building_ = false;
  std::string key_;
  std::string pendingKey_;
  size_t position_ = 0;
  Json root_;
  std::vector<Json*> stack_;
  std::set<std::string> topKeys_;
  std::string parseError_;
};

}  // namespace qxwemu

#endif  // SKIFF_EMULATOR_MAP_STREAM_H_
