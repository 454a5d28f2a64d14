#include "emulator/loader.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <limits>
#include <optional>
#include <set>
#include <unordered_map>
#include <unordered_set>

namespace qxwemu {

namespace {

constexpr int64_t kMaxId = std::numeric_limits<uint32_t>::max();
constexpr int64_t kMinInt = std::numeric_limits<int32_t>::min();
constexpr int64_t kMaxInt = std::numeric_limits<int32_t>::max();

const char* const kSelectionName = "Selection Name";

std::string Quote(const std::string& s) { return "\"" + s + "\""; }

// Reads the keys of one JSON object element and refuses keys nobody read.
class Reader {
 public:
  Reader(const Json& element, std::string entity) : element_(element), entity_(std::move(entity)) {
    if (!element_.is_object()) throw MapError(entity_, "must be a JSON object");
  }

  const std::string& entity() const { return entity_; }
  void Rename(std::string entity) { entity_ = std::move(entity); }

  const Json* Get(const char* key) {
    read_.push_back(key);
    auto it = element_.find(key);
    return it == element_.end() ? nullptr : &*it;
  }
  bool Has(const char* key) const { return element_.contains(key); }

  int64_t Int(const char* key, int64_t min, int64_t max, int64_t absent = 0) {
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
  uint32_t Id(const char* key) { return static_cast<uint32_t>(Int(key, 0, kMaxId)); }
  int Int32(const char* key) { return static_cast<int>(Int(key, kMinInt, kMaxInt)); }
  uint32_t Uint32(const char* key) { return static_cast<uint32_t>(Int(key, 0, kMaxId)); }

  bool Bool(const char* key, bool absent = false) {
    const Json* v = Get(key);
    if (v == nullptr) return absent;
    if (!v->is_boolean()) throw MapError(entity_, Quote(key) + " must be true or false");
    return v->get<bool>();
  }

  std::string Str(const char* key) {
    const Json* v = Get(key);
    if (v == nullptr) return {};
    if (!v->is_string()) throw MapError(entity_, Quote(key) + " must be a string");
    return v->get<std::string>();
  }

  std::vector<std::string> Strings(const char* key) {
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

  // Refuses `key` unless `allowed`.
  void Forbid(const char* key, bool allowed, const std::string& why) {
    if (!allowed && Has(key)) throw MapError(entity_, "key " + Quote(key) + " " + why);
  }

  void Done() const {
    for (const auto& [key, value] : element_.items()) {
      bool read = std::any_of(read_.begin(), read_.end(), [&](const char* k) { return key == k; });
      if (!read) throw MapError(entity_, "unknown key " + Quote(key));
    }
  }

 private:
  const Json& element_;
  std::string entity_;
  std::vector<const char*> read_;  // the keys asked for (string literals)
};

// Fails when predecessors loop, naming the first symbol of the loop that the
// walks, begun from each of `symbols` in turn, reach. A walk stops at a symbol
// an earlier walk has cleared, so each symbol is walked once and the check is
// linear in the map's size.
void CheckPredecessorLoops(Map& map, const std::vector<const Symbol*>& symbols) {
  enum : char { kOnWalk = 1, kCleared = 2 };
  std::unordered_map<QXwSymbolId, char> state;
  std::vector<QXwSymbolId> walk;
  for (const Symbol* start : symbols) {
    walk.clear();
    const Symbol* at = start;
    while (at != nullptr && at->pred != 0 && state.emplace(at->id, kOnWalk).second) {
      walk.push_back(at->id);
      at = map.FindSymbol(at->pred);
    }
    if (at != nullptr && at->pred != 0 && state[at->id] == kOnWalk) {
      throw MapError("symbol " + std::to_string(at->id),
                     "pred " + std::to_string(at->pred) +
                         " makes a loop: " + PredecessorLoop(map, at->id, at->pred));
    }
    for (QXwSymbolId id : walk) state[id] = kCleared;
  }
}

std::string Positional(const char* kind, size_t position) {
  return std::string(kind) + " at position " + std::to_string(position);
}

// Reads the "id" of an element and names the element by it from then on.
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

Scalar ParseScalar(const FieldDef& field, const Json& v, const std::string& entity) {
  Scalar s;
  const std::string where = "field " + Quote(field.name);
  switch (field.type) {
    case QXW_FIELD_INTEGER: {
      if (!v.is_number_integer()) throw MapError(entity, where + " must be an integer");
      bool tooBig = v.is_number_unsigned() && v.get<uint64_t>() > static_cast<uint64_t>(kMaxId);
      int64_t n = tooBig ? 0 : v.get<int64_t>();
      if (tooBig || n < kMinInt || n > kMaxId) {
        throw MapError(entity, where + " must be an integer from -2147483648 to 4294967295");
      }
      s.num = n;
      return s;
    }
    case QXW_FIELD_BOOLEAN:
      if (!v.is_boolean()) throw MapError(entity, where + " must be true or false");
      s.num = v.get<bool>() ? 1 : 0;
      return s;
    case QXW_FIELD_STRING:
      if (!v.is_string()) throw MapError(entity, where + " must be a string");
      s.text = v.get<std::string>();
      return s;
    case QXW_FIELD_ENUMERATION: {
      if (v.is_string()) {
        const std::string name = v.get<std::string>();
        auto it = std::find(field.enumNames.begin(), field.enumNames.end(), name);
        if (it == field.enumNames.end()) {
          throw MapError(entity, where + " has no constant " + Quote(name));
        }
        s.num = it - field.enumNames.begin();
        return s;
      }
      if (v.is_number_integer() && v.get<int64_t>() >= 0 &&
          v.get<int64_t>() < static_cast<int64_t>(field.enumNames.size())) {
        s.num = v.get<int64_t>();
        return s;
      }
      throw MapError(entity, where + " must be one of its constants' names or indexes (0 to " +
                                 std::to_string(static_cast<int64_t>(field.enumNames.size()) - 1) +
                                 ")");
    }
  }
  throw MapError(entity, where + " has an unknown type");
}

const char* TypeName(int type) {
  switch (type) {
    case QXW_FIELD_INTEGER:
      return "integer";
    case QXW_FIELD_BOOLEAN:
      return "boolean";
    case QXW_FIELD_STRING:
      return "string";
    case QXW_FIELD_ENUMERATION:
      return "enumeration";
  }
  return "unknown";
}

FieldDef ParseFieldDef(const Json& element, size_t position) {
  Reader r(element, Positional("field", position));
  FieldDef f;
  f.name = r.Str("name");
  if (f.name.empty()) throw MapError(r.entity(), "\"name\" must be a non-empty string");
  r.Rename("field " + Quote(f.name));
  f.id = r.Id("id");
  const std::string type = r.Str("type");
  if (type == "integer") {
    f.type = QXW_FIELD_INTEGER;
  } else if (type == "boolean") {
    f.type = QXW_FIELD_BOOLEAN;
  } else if (type == "string") {
    f.type = QXW_FIELD_STRING;
  } else if (type == "enumeration") {
    f.type = QXW_FIELD_ENUMERATION;
  } else {
    throw MapError(r.entity(),
                   "\"type\" must be \"integer\", \"boolean\", \"string\" or \"enumeration\"");
  }
  r.Forbid("enum", f.type == QXW_FIELD_ENUMERATION, "applies to enumeration fields only");
  f.enumNames = r.Strings("enum");
  f.list = r.Bool("list");
  f.capability = r.Bool("capability");
  if (f.capability && (f.type != QXW_FIELD_BOOLEAN || f.list)) {
    throw MapError(r.entity(), "a capability field must be a boolean that is not a list");
  }
  r.Done();
  return f;
}

// Builds the final field table from the standard fields (when wanted) and
// the map's own definitions; ids are given in order of definition, each
// absent one taking the lowest id nobody claims.
std::vector<FieldDef> BuildFieldTable(bool standard, const Json* defs) {
  std::vector<FieldDef> table;
  if (standard) table = StandardFields();
  for (FieldDef& f : table) f.id = 0;
  if (defs != nullptr) {
    if (!defs->is_array()) throw MapError("fields", "must be an array");
    std::set<std::string> seen;
    size_t position = 0;
    for (const Json& element : *defs) {
      FieldDef f = ParseFieldDef(element, ++position);
      if (!seen.insert(f.name).second) throw MapError("field " + Quote(f.name), "defined twice");
      auto same = std::find_if(table.begin(), table.end(),
                               [&](const FieldDef& t) { return t.name == f.name; });
      if (same != table.end()) {
        *same = std::move(f);
      } else {
        table.push_back(std::move(f));
      }
    }
  }
  std::set<QXwFieldId> claimed;
  for (const FieldDef& f : table) {
    if (f.id != 0 && !claimed.insert(f.id).second) {
      throw MapError("field " + Quote(f.name), "id " + std::to_string(f.id) + " is already used");
    }
  }
  QXwFieldId next = 1;
  for (FieldDef& f : table) {
    if (f.id != 0) continue;
    while (claimed.count(next) != 0) ++next;
    f.id = next;
    claimed.insert(next);
  }
  return table;
}

// Streams a map file: top-level sections are built as small JSON values and
// the elements of the three big arrays one at a time, so a map of a million
// objects never exists as one JSON tree.
class MapSax {
 public:
  using number_integer_t = Json::number_integer_t;
  using number_unsigned_t = Json::number_unsigned_t;
  using number_float_t = Json::number_float_t;
  using string_t = Json::string_t;
  using binary_t = Json::binary_t;

  struct Handler {
    virtual ~Handler() = default;
    virtual void Section(const std::string& key, Json& value) = 0;
    virtual void Element(const std::string& key, Json& element, size_t position) = 0;
  };

  explicit MapSax(Handler& handler) : handler_(handler) {}

  bool null() { return Value(nullptr); }
  bool boolean(bool v) { return Value(v); }
  bool number_integer(number_integer_t v) { return Value(v); }
  bool number_unsigned(number_unsigned_t v) { return Value(v); }
  bool number_float(number_float_t v, const string_t&) { return Value(v); }
  bool string(string_t& v) { return Value(std::move(v)); }
  bool binary(binary_t&) { return Value(nullptr); }

  bool start_object(std::size_t) {
    if (!building_ && level_ == 0) {
      level_ = 1;
      return true;
    }
    return Open(Json::object());
  }
  bool end_object() {
    if (!building_ && level_ == 1) {
      level_ = 0;
      return true;
    }
    return Close();
  }
  bool start_array(std::size_t) {
    if (!building_ && level_ == 0) throw MapError("map file", "must be a JSON object");
    if (!building_ && level_ == 1 && IsElementArray(key_)) {
      level_ = 2;
      position_ = 0;
      return true;
    }
    return Open(Json::array());
  }
  bool end_array() {
    if (!building_ && level_ == 2) {
      level_ = 1;
      return true;
    }
    return Close();
  }
  bool key(string_t& k) {
    if (!building_ && level_ == 1) {
      if (!topKeys_.insert(k).second) throw MapError(Quote(k), "appears twice");
      key_ = k;
      return true;
    }
    Json* top = stack_.back();
    if (top->contains(k)) throw MapError(Current(), "key " + Quote(k) + " appears twice");
    pendingKey_ = std::move(k);
    return true;
  }
  bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception& ex) {
    std::string what = ex.what();
    auto close = what.find("] ");
    parseError_ = close == std::string::npos ? what : what.substr(close + 2);
    return false;
  }

  const std::string& parseError() const { return parseError_; }

 private:
  static bool IsElementArray(const std::string& key) {
    return key == "objects" || key == "submaps" || key == "symbols";
  }

  std::string Current() const {
    if (level_ != 2) return Quote(key_);
    // "objects" names its elements "object", and so on.
    return key_.substr(0, key_.size() - 1) + " at position " + std::to_string(position_);
  }

  bool Value(Json v) {
    if (!building_) {
      if (level_ == 0) throw MapError("map file", "must be a JSON object");
      if (level_ == 2) ++position_;
      root_ = std::move(v);
      Complete();
      return true;
    }
    Add(std::move(v));
    return true;
  }

  bool Open(Json container) {
    if (!building_) {
      if (level_ == 2) ++position_;
      building_ = true;
      root_ = std::move(container);
      stack_.push_back(&root_);
      return true;
    }
    stack_.push_back(Add(std::move(container)));
    return true;
  }

  bool Close() {
    stack_.pop_back();
    if (stack_.empty()) {
      building_ = false;
      Complete();
    }
    return true;
  }

  Json* Add(Json v) {
    Json* top = stack_.back();
    if (top->is_array()) {
      top->push_back(std::move(v));
      return &top->back();
    }
    Json& slot = (*top)[pendingKey_];
    slot = std::move(v);
    return &slot;
  }

  void Complete() {
    if (level_ == 2) {
      handler_.Element(key_, root_, position_);
    } else {
      handler_.Section(key_, root_);
    }
    root_ = Json();
  }

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

// Collects a map from the stream. Field definitions must be known before an
// object can be read; when a file defines fields after its objects, the
// first pass only learns the field table and a second pass reads the rest.
class MapBuilder : public MapSax::Handler {
 public:
  explicit MapBuilder(const std::vector<FieldDef>* knownFields) {
    map_ = std::make_unique<Map>();
    if (knownFields != nullptr) {
      map_->SetFields(*knownFields);
      fieldsFinal_ = true;
      fieldsFromEarlierPass_ = true;
    }
  }

  void AddObject(const Json& element, size_t position) {
    Object object = ParseObject(element, *map_, position);
    if (map_->FindObject(object.id) != nullptr)
      throw MapError(IdName("object", object.id), "id is used twice");
    for (const FieldValue& v : object.fields) CheckSelectionNameFree(*map_, object, v);
    map_->AddObject(std::move(object));
  }

  void Section(const std::string& key, Json& value) override {
    if (key == "map") {
      Reader r(value, "map");
      map_->name = r.Str("name");
      map_->permissions = static_cast<int>(r.Int("permissions", 0, kMaxInt));
      if (map_->permissions != QXW_MAP_READ_ONLY && map_->permissions != QXW_MAP_READ_WRITE) {
        throw MapError("map", "\"permissions\" must be 1 (read-only) or 2 (read-write)");
      }
      map_->rootSubmap = r.Id("rootSubmap");
      map_->creationTime = static_cast<time_t>(r.Int("creationTime", 0, kMaxInt));
      map_->lastClosedTime = static_cast<time_t>(r.Int("lastClosedTime", 0, kMaxInt));
      r.Done();
      sawMap_ = true;
    } else if (key == "standardFields" || key == "fields") {
      if (fieldsFromEarlierPass_) return;
      if (!fieldsFinal_) fieldSectionsSeen_ = true;
      if (key == "standardFields") {
        if (!value.is_boolean()) throw MapError("standardFields", "must be true or false");
        standard_ = value.get<bool>();
      } else {
        fieldDefs_ = std::move(value);
      }
      if (fieldsFinal_) needsSecondPass_ = true;
    } else {
      throw MapError(Quote(key), IsArrayKey(key) ? "must be an array" : "is not a map file key");
    }
  }

  void Element(const std::string& key, Json& element, size_t position) override {
    if (key == "objects") {
      FreezeFields();
      if (needsSecondPass_) return;
      // Until the file has said what its fields are, an object may use a
      // field defined further on: its violation waits for the end.
      try {
        AddObject(element, position);
      } catch (const MapError& e) {
        if (fieldSectionsSeen_ || fieldsFromEarlierPass_) throw;
        if (!deferred_) deferred_ = e;
      }
    } else if (key == "submaps") {
      Submap submap = ParseSubmap(element, position);
      if (map_->FindSubmap(submap.id) != nullptr)
        throw MapError(IdName("submap", submap.id), "id is used twice");
      map_->AddSubmap(std::move(submap));
    } else {
      // A symbol is linked to its submap and object at once when both are
      // known; otherwise it waits, with every symbol after it, for the end
      // of the file. References to other symbols are checked at the end.
      Symbol symbol = ParseSymbol(element, *map_, position);
      if (map_->FindSymbol(symbol.id) != nullptr || pendingIds_.count(symbol.id) != 0) {
        throw MapError(IdName("symbol", symbol.id), "id is used twice");
      }
      if (pendingSymbols_.empty() && map_->FindSubmap(symbol.submap) != nullptr &&
          map_->FindObject(symbol.object) != nullptr) {
        map_->AddSymbol(std::move(symbol));
      } else {
        pendingIds_.insert(symbol.id);
        pendingSymbols_.push_back(std::move(symbol));
      }
    }
  }

  // Checks every reference and links the symbols; throws MapError.
  std::unique_ptr<Map> Finish() {
    FreezeFields();
    if (deferred_) throw *deferred_;
    if (!sawMap_) throw MapError("map", "the \"map\" section is missing");
    Map& map = *map_;
    for (Object* o : std::vector<Object*>(map.ObjectsInOrder())) CheckObjectRefs(map, *o);
    for (const Submap* s : map.SubmapsInOrder()) CheckSubmapRefs(map, *s);
    if (map.FindSubmap(map.rootSubmap) == nullptr) {
      throw MapError("map", "rootSubmap " + std::to_string(map.rootSubmap) + " does not exist");
    }
    for (Symbol& s : pendingSymbols_) {
      if (map.FindSubmap(s.submap) == nullptr) {
        throw MapError(IdName("symbol", s.id),
                       "submap " + std::to_string(s.submap) + " does not exist");
      }
      if (map.FindObject(s.object) == nullptr) {
        throw MapError(IdName("symbol", s.id),
                       "object " + std::to_string(s.object) + " does not exist");
      }
    }
    for (Symbol& s : pendingSymbols_) map.AddSymbol(std::move(s));
    const std::vector<const Symbol*> symbols = map.SymbolsInOrder();
    for (const Symbol* s : symbols) CheckSymbolRefs(map, *s);
    CheckPredecessorLoops(map, symbols);
    return std::move(map_);
  }

  bool needsSecondPass() const { return needsSecondPass_; }
  std::vector<FieldDef> FieldTable() {
    return BuildFieldTable(standard_, fieldDefs_.is_null() ? nullptr : &fieldDefs_);
  }

 private:
  static bool IsArrayKey(const std::string& key) {
    return key == "objects" || key == "submaps" || key == "symbols";
  }
  static std::string IdName(const char* kind, uint32_t id) {
    return std::string(kind) + " " + std::to_string(id);
  }

  void FreezeFields() {
    if (fieldsFinal_) return;
    map_->SetFields(FieldTable());
    fieldsFinal_ = true;
  }

  std::unique_ptr<Map> map_;
  bool standard_ = true;
  Json fieldDefs_;
  bool fieldsFinal_ = false;
  bool fieldsFromEarlierPass_ = false;
  bool needsSecondPass_ = false;
  bool fieldSectionsSeen_ = false;  // before the first object
  std::optional<MapError> deferred_;
  bool sawMap_ = false;
  std::unordered_set<QXwSymbolId> pendingIds_;
  std::vector<Symbol> pendingSymbols_;
};

// Reads a file in chunks, as the characters of an input iterator, so that a
// map file of any size costs one buffer of memory.
class ChunkReader {
 public:
  explicit ChunkReader(FILE* file) : file_(file), buffer_(1 << 20) {}

  void Rewind() {
    std::rewind(file_);
    pos_ = len_ = 0;
  }
  // False at the end of the file.
  bool Available() {
    if (pos_ < len_) return true;
    len_ = std::fread(buffer_.data(), 1, buffer_.size(), file_);
    pos_ = 0;
    return len_ > 0;
  }
  char Current() const { return buffer_[pos_]; }
  void Advance() { ++pos_; }

 private:
  FILE* file_;
  std::vector<char> buffer_;
  size_t pos_ = 0;
  size_t len_ = 0;
};

class ChunkIterator {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = char;

  ChunkIterator() = default;  // the end
  explicit ChunkIterator(ChunkReader* reader) : reader_(reader) {}

  char operator*() const { return reader_->Current(); }
  ChunkIterator& operator++() {
    reader_->Advance();
    return *this;
  }
  bool operator==(const ChunkIterator& other) const { return AtEnd() == other.AtEnd(); }
  bool operator!=(const ChunkIterator& other) const { return !(*this == other); }

 private:
  bool AtEnd() const { return reader_ == nullptr || !reader_->Available(); }
  ChunkReader* reader_ = nullptr;
};

template <class Iterator>
std::unique_ptr<Map> RunPass(Iterator begin, Iterator end, const std::vector<FieldDef>* knownFields,
                             std::vector<FieldDef>* fieldsForSecondPass) {
  MapBuilder builder(knownFields);
  MapSax sax(builder);
  bool ok = Json::sax_parse(begin, end, &sax, nlohmann::detail::input_format_t::json, true);
  if (!ok) throw MapError("invalid JSON", sax.parseError());
  if (builder.needsSecondPass()) {
    *fieldsForSecondPass = builder.FieldTable();
    return nullptr;
  }
  return builder.Finish();
}

}  // namespace

std::vector<FieldDef> StandardFields() {
  std::vector<FieldDef> f;
  auto add = [&](const char* name, int type, bool capability = false, bool list = false) {
    FieldDef d;
    d.name = name;
    d.type = type;
    d.capability = capability;
    d.list = list;
    f.push_back(std::move(d));
  };
  for (const char* name :
       {"Selection Name", "IP Address", "SNMP ifPhysAddr", "IP Subnet Mask", "SNMP sysObjectID",
        "SNMP sysLocation", "SNMP sysDescr", "SNMP sysContact", "IP Hostname"}) {
    add(name, QXW_FIELD_STRING);
  }
  add("vendor", QXW_FIELD_ENUMERATION);
  f.back().enumNames = {"Unset", "Acme", "Globex", "Initech", "Umbrella", "Hooli"};
  add("SNMPAgent", QXW_FIELD_ENUMERATION);
  f.back().enumNames = {"Unset", "Generic", "Acme Agent", "Globex Agent", "Proxy"};
  add("isSNMPProxied", QXW_FIELD_BOOLEAN);
  add("isNormalized", QXW_FIELD_BOOLEAN);
  for (const char* name : {"isSNMPSupported", "isInterface", "isLocation", "isNetwork", "isSegment",
                           "isRouter", "isNode"}) {
    add(name, QXW_FIELD_BOOLEAN, true);
  }
  add("TopM Interface List", QXW_FIELD_STRING, false, true);
  for (const char* name : {"TopM Node ID", "TopM Segment ID", "TopM Network ID", "Location ID"}) {
    add(name, QXW_FIELD_INTEGER);
  }
  QXwFieldId id = 0;
  for (FieldDef& d : f) d.id = ++id;
  return f;
}

FieldValue ParseFieldValue(const FieldDef& field, const Json& value, const std::string& entity) {
  FieldValue v;
  v.field = field.id;
  if (field.list) {
    if (!value.is_array()) {
      throw MapError(entity, "field " + Quote(field.name) + " is a list and takes an array");
    }
    for (const Json& element : value) v.list.push_back(ParseScalar(field, element, entity));
  } else {
    if (value.is_array()) {
      throw MapError(entity, "field " + Quote(field.name) + " is not a list field");
    }
    v.scalar = ParseScalar(field, value, entity);
  }
  return v;
}

Object ParseObject(const Json& element, const Map& map, size_t position) {
  Reader r(element, Positional("object", position));
  Object o;
  o.id = ReadId(r, "object");
  o.childSubmap = r.Id("childSubmap");
  o.status = r.Uint32("status");
  o.compoundStatus = r.Uint32("compoundStatus");
  o.acknowledged = r.Bool("acknowledged", false);
  o.managed = r.Bool("managed", true);
  if (const Json* fields = r.Get("fields")) {
    if (!fields->is_object()) throw MapError(r.entity(), "\"fields\" must be a JSON object");
    o.fields.reserve(fields->size());
    for (const auto& [name, value] : fields->items()) {
      const FieldDef* def = map.FieldByName(name);
      if (def == nullptr) throw MapError(r.entity(), "unknown field " + Quote(name));
      o.fields.push_back(ParseFieldValue(*def, value, r.entity()));
    }
  }
  r.Done();
  return o;
}

Submap ParseSubmap(const Json& element, size_t position) {
  Reader r(element, Positional("submap", position));
  Submap s;
  s.id = ReadId(r, "submap");
  s.name = r.Str("name");
  s.app = r.Str("app");
  s.policy = r.Int32("policy");
  s.type = r.Int32("type");
  s.parentObject = r.Id("parentObject");
  s.layoutStyle = r.Int32("layoutStyle");
  s.layoutOn = r.Bool("layoutOn");
  s.background = r.Str("background");
  r.Done();
  return s;
}

Symbol ParseSymbol(const Json& element, Map& map, size_t position) {
  Reader r(element, Positional("symbol", position));
  Symbol s;
  s.id = ReadId(r, "symbol");
  s.submap = r.Id("submap");
  s.object = r.Id("object");
  if (s.submap == 0) throw MapError(r.entity(), "\"submap\" is missing");
  if (s.object == 0) throw MapError(r.entity(), "\"object\" is missing");
  s.label = r.Str("label");
  s.type = map.InternType(r.Str("type"));
  s.variety = static_cast<int>(r.Int("variety", kMinInt, kMaxInt));
  if (s.variety != QXW_SYMBOL_ICON && s.variety != QXW_SYMBOL_CONNECTION) {
    throw MapError(r.entity(), "\"variety\" must be 1 (icon) or 2 (connection)");
  }
  s.plane = static_cast<QXwPlaneType>(r.Int("plane", kMinInt, kMaxInt));
  if (s.plane != QXW_PLANE_APPLICATION && s.plane != QXW_PLANE_USER) {
    throw MapError(r.entity(), "\"plane\" must be 2 (application) or 4 (user)");
  }
  s.hidden = r.Bool("hidden");
  s.status = r.Uint32("status");
  s.statusSource = r.Int32("statusSource");
  s.apps = map.InternApps(r.Strings("apps"));
  s.behavior = r.Int32("behavior");
  s.normalized = r.Bool("normalized");
  const bool icon = s.variety == QXW_SYMBOL_ICON;
  for (const char* key : {"placement", "x", "y", "width", "height", "pred"}) {
    r.Forbid(key, icon, "applies to icon symbols only");
  }
  for (const char* key : {"endpoint1", "endpoint2", "metaConnection"}) {
    r.Forbid(key, !icon, "applies to connection symbols only");
  }
  if (icon) {
    s.placement = r.Int32("placement");
    s.x = r.Int32("x");
    s.y = r.Int32("y");
    s.width = r.Int32("width");
    s.height = r.Int32("height");
    s.pred = r.Id("pred");
  } else {
    s.endpoint1 = r.Id("endpoint1");
    s.endpoint2 = r.Id("endpoint2");
    s.metaConnection = r.Bool("metaConnection");
    if (s.endpoint1 == 0 || s.endpoint2 == 0) {
      throw MapError(r.entity(), "a connection needs \"endpoint1\" and \"endpoint2\"");
    }
  }
  r.Done();
  return s;
}

void CheckSelectionNameFree(const Map& map, const Object& object, const FieldValue& value) {
  const FieldDef* def = map.FieldById(value.field);
  if (def == nullptr || def->name != kSelectionName || def->list) return;
  if (const std::vector<Object*>* owners = map.Lookup(*def, value.scalar)) {
    for (const Object* owner : *owners) {
      if (owner->id != object.id) {
        throw MapError("object " + std::to_string(object.id),
                       "selection name " + Quote(value.scalar.text) +
                           " is already used by object " + std::to_string(owner->id));
      }
    }
  }
}

void CheckObjectRefs(Map& map, const Object& o) {
  if (o.childSubmap == 0) return;
  const std::string entity = "object " + std::to_string(o.id);
  const Submap* child = map.FindSubmap(o.childSubmap);
  if (child == nullptr) {
    throw MapError(entity, "childSubmap " + std::to_string(o.childSubmap) + " does not exist");
  }
  if (child->parentObject != o.id) {
    throw MapError(entity, "childSubmap " + std::to_string(o.childSubmap) + " has parentObject " +
                               std::to_string(child->parentObject));
  }
}

void CheckSubmapRefs(Map& map, const Submap& s) {
  if (s.parentObject == 0) return;
  const std::string entity = "submap " + std::to_string(s.id);
  const Object* parent = map.FindObject(s.parentObject);
  if (parent == nullptr) {
    throw MapError(entity, "parentObject " + std::to_string(s.parentObject) + " does not exist");
  }
  if (parent->childSubmap != s.id) {
    throw MapError(entity, "parentObject " + std::to_string(s.parentObject) + " has childSubmap " +
                               std::to_string(parent->childSubmap));
  }
}

void CheckSymbolRefs(Map& map, const Symbol& s) {
  const std::string entity = "symbol " + std::to_string(s.id);
  if (map.FindSubmap(s.submap) == nullptr) {
    throw MapError(entity, "submap " + std::to_string(s.submap) + " does not exist");
  }
  if (map.FindObject(s.object) == nullptr) {
    throw MapError(entity, "object " + std::to_string(s.object) + " does not exist");
  }
  if (s.variety == QXW_SYMBOL_ICON && s.pred != 0) {
    const Symbol* pred = map.FindSymbol(s.pred);
    if (pred == nullptr)
      throw MapError(entity, "pred " + std::to_string(s.pred) + " does not exist");
    if (pred->submap != s.submap) {
      throw MapError(entity, "pred " + std::to_string(s.pred) + " lies on another submap");
    }
    // Only an icon has a place in a submap's sequence to follow.
    if (pred->variety != QXW_SYMBOL_ICON) {
      throw MapError(entity, "pred " + std::to_string(s.pred) + " is a connection");
    }
  }
  if (s.variety == QXW_SYMBOL_CONNECTION) {
    for (QXwSymbolId endpoint : {s.endpoint1, s.endpoint2}) {
      const std::string name = "endpoint " + std::to_string(endpoint);
      if (endpoint == s.id) throw MapError(entity, name + " is the connection itself");
      const Symbol* end = map.FindSymbol(endpoint);
      if (end == nullptr) throw MapError(entity, name + " does not exist");
      if (end->submap != s.submap) throw MapError(entity, name + " lies on another submap");
    }
  }
}

std::string PredecessorLoop(Map& map, QXwSymbolId id, QXwSymbolId pred) {
  // Find the loop first, and write it out only when there is one.
  bool loops = false;
  QXwSymbolId at = pred;
  for (size_t steps = 0; at != 0 && steps <= map.SymbolCount() && !loops; ++steps) {
    loops = at == id;
    const Symbol* s = map.FindSymbol(at);
    at = s == nullptr ? 0 : s->pred;
  }
  if (!loops) return {};
  std::string chain = std::to_string(id);
  for (at = pred;; at = map.FindSymbol(at)->pred) {
    chain += " after " + std::to_string(at);
    if (at == id) return chain;
  }
}

std::unique_ptr<Map> LoadMap(std::string_view text, const std::string& origin, std::string* error) {
  try {
    std::vector<FieldDef> fields;
    std::unique_ptr<Map> map = RunPass(text.begin(), text.end(), nullptr, &fields);
    if (map == nullptr) map = RunPass(text.begin(), text.end(), &fields, &fields);
    return map;
  } catch (const std::exception& e) {
    *error = origin + ": " + e.what();
  }
  return nullptr;
}

std::unique_ptr<Map> LoadMapFile(const std::string& path, std::string* error) {
  FILE* file = std::fopen(path.c_str(), "rb");
  struct stat st {};
  if (file == nullptr || fstat(fileno(file), &st) != 0 || !S_ISREG(st.st_mode)) {
    if (file != nullptr) std::fclose(file);
    *error = path + ": cannot be read";
    return nullptr;
  }
  std::unique_ptr<Map> map;
  try {
    ChunkReader reader(file);
    std::vector<FieldDef> fields;
    map = RunPass(ChunkIterator(&reader), ChunkIterator(), nullptr, &fields);
    if (map == nullptr) {
      reader.Rewind();
      map = RunPass(ChunkIterator(&reader), ChunkIterator(), &fields, &fields);
    }
  } catch (const std::exception& e) {
    *error = path + ": " + e.what();
  }
  std::fclose(file);
  return map;
}

std::unique_ptr<Map> LoadDefaultMap(std::string* error) {
  return LoadMap(DefaultMapText(), "default.json", error);
}

Json DumpValue(const FieldDef& field, const FieldValue& value) {
  auto scalar = [&](const Scalar& s) -> Json {
    switch (field.type) {
      case QXW_FIELD_INTEGER:
        return s.num;
      case QXW_FIELD_BOOLEAN:
        return s.num == 1;
      case QXW_FIELD_ENUMERATION:
        if (s.num >= 0 && static_cast<size_t>(s.num) < field.enumNames.size()) {
          return field.enumNames[s.num];
        }
        return s.num;
      default:
        return s.text;
    }
  };
  if (!field.list) return scalar(value.scalar);
  Json list = Json::array();
  for (const Scalar& s : value.list) list.push_back(scalar(s));
  return list;
}

Json DumpMap(const Map& map) {
  Json out;
  out["map"] = {{"name", map.name},
                {"permissions", map.permissions},
                {"rootSubmap", map.rootSubmap},
                {"creationTime", static_cast<int64_t>(map.creationTime)},
                {"lastClosedTime", static_cast<int64_t>(map.lastClosedTime)}};
  out["standardFields"] = false;
  Json fields = Json::array();
  for (const FieldDef& f : map.Fields()) {
    Json d = {{"id", f.id}, {"name", f.name}, {"type", TypeName(f.type)}};
    if (f.type == QXW_FIELD_ENUMERATION) d["enum"] = f.enumNames;
    if (f.list) d["list"] = true;
    if (f.capability) d["capability"] = true;
    fields.push_back(std::move(d));
  }
  out["fields"] = std::move(fields);
  Json objects = Json::array();
  for (const Object* o : map.ObjectsInOrder()) {
    Json values = Json::object();
    for (const FieldValue& v : o->fields) {
      if (const FieldDef* def = map.FieldById(v.field)) values[def->name] = DumpValue(*def, v);
    }
    objects.push_back({{"id", o->id},
                       {"childSubmap", o->childSubmap},
                       {"status", o->status},
                       {"compoundStatus", o->compoundStatus},
                       {"acknowledged", o->acknowledged},
                       {"managed", o->managed},
                       {"fields", std::move(values)}});
  }
  out["objects"] = std::move(objects);
  Json submaps = Json::array();
  for (const Submap* s : map.SubmapsInOrder()) {
    submaps.push_back({{"id", s->id},
                       {"name", s->name},
                       {"app", s->app},
                       {"policy", s->policy},
                       {"type", s->type},
                       {"parentObject", s->parentObject},
                       {"layoutStyle", s->layoutStyle},
                       {"layoutOn", s->layoutOn},
                       {"background", s->background}});
  }
  out["submaps"] = std::move(submaps);
  Json symbols = Json::array();
  for (const Symbol* s : map.SymbolsInOrder()) {
    Json j = {{"id", s->id},
              {"submap", s->submap},
              {"object", s->object},
              {"label", s->label},
              {"type", *s->type},
              {"variety", s->variety},
              {"plane", s->plane},
              {"hidden", s->hidden},
              {"status", s->status},
              {"statusSource", s->statusSource},
              {"apps", *s->apps},
              {"behavior", s->behavior},
              {"normalized", s->normalized}};
    if (s->variety == QXW_SYMBOL_ICON) {
      j["placement"] = s->placement;
      j["x"] = s->x;
      j["y"] = s->y;
      j["width"] = s->width;
      j["height"] = s->height;
      j["pred"] = s->pred;
    } else {
      j["endpoint1"] = s->endpoint1;
      j["endpoint2"] = s->endpoint2;
      j["metaConnection"] = s->metaConnection;
    }
    symbols.push_back(std::move(j));
  }
  out["symbols"] = std::move(symbols);
  return out;
}

}  // namespace qxwemu
