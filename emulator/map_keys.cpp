// Reading the keys of one map file element (see map_keys.h).
#include "emulator/map_keys.h"

#include <algorithm>

namespace qxwemu {

std::string Quote(const std::string& s) { return "\"" + s + "\""; }

Reader::Reader(const Json& element, std::string entity)
    : element_(element), entity_(std::move(entity)) {
  if (!element_.is_object()) throw MapError(entity_, "must be a JSON object");
}

int64_t Reader::Int(const char* key, int64_t min, int64_t max, int64_t absent) {
  const Json* v = Get(key);
  if (v == nullptr) return absent;
  if (!v->is_number_integer()) throw MapError(entity_, Quote(key) + " must be an integer");
  int64_t n;
  if (v->is_number_unsigned()) {
    uint64_t u = v->get<uint64_t>();
    n = u > static_cast<uint64_t>(std::numeric_limits<int64_t>::max())
            ? std::numeric_limits<int64_t>::max()
            : static_cast<int64_t>(u);
  } else {
    n = v->get<int64_t>();
  }
  if (n < min || n > max) {
    throw MapError(entity_, Quote(key) + " must be an integer from " + std::to_string(min) +
                                " to " + std::to_string(max));
  }
  return n;
}

bool Reader::Bool(const char* key, bool absent) {
  const Json* v = Get(key);
  if (v == nullptr) return absent;
  if (!v->is_boolean()) throw MapError(entity_, Quote(key) + " must be true or false");
  return v->get<bool>();
}

std::string Reader::Str(const char* key) {
  const Json* v = Get(key);
  if (v == nullptr) return {};
  if (!v->is_string()) throw MapError(entity_, Quote(key) + " must be a string");
  return v->get<std::string>();
}

std::vector<std::string> Reader::Strings(const char* key) {
  const Json* v = Get(key);
  std::vector<std::string> out;
  if (v == nullptr) return out;
  if (!v->is_array()) throw MapError(entity_, Quote(key) + " must be an array of strings");
  for (const Json& s : *v) {
    if (!s.is_string()) throw MapError(entity_, Quote(key) + " must be an array of strings");
    out.push_back(s.get<std::string>());
  }
  return out;
}

void Reader::Forbid(const char* key, bool allowed, const std::string& why) {
  if (!allowed && Has(key)) throw MapError(entity_, "key " + Quote(key) + " " + why);
}

void Reader::Done() const {
  for (const auto& item : element_.items()) {
    // Named, not a structured binding: a lambda may capture only a variable.
    const std::string& key = item.key();
    bool read = std::any_of(read_.begin(), read_.end(), [&](const char* k) { return key == k; });
    if (!read) throw MapError(entity_, "unknown key " + Quote(key));
  }
}

std::string Positional(const char* kind, size_t position) {
  return std::string(kind) + " at position " + std::to_string(position);
}

uint32_t ReadId(Reader& r, const char* kind) {
  const Json* v = r.Get("id");
  if (v == nullptr || !v->is_number_integer() || v->get<int64_t>() < 1 ||
      (v->is_number_unsigned() && v->get<uint64_t>() > static_cast<uint64_t>(kMaxId)) ||
      (!v->is_number_unsigned() && v->get<int64_t>() > kMaxId)) {
    throw MapError(r.entity(), "\"id\" must be an integer from 1 to 4294967295");
  }
  auto id = static_cast<uint32_t>(v->get<uint64_t>());
  r.Rename(std::string(kind) + " " + std::to_string(id));
  return id;
}

}  // namespace qxwemu
