// Streaming a map file into sections and elements (see map_stream.h).
#include "emulator/map_stream.h"

#include <utility>

#include "emulator/map_keys.h"

namespace qxwemu {

bool IsElementArray(const std::string& key) {
  return key == "objects" || key == "submaps" || key == "symbols";
}

bool MapSax::start_object(std::size_t) {
  if (!building_ && level_ == 0) {
    level_ = 1;
    return true;
  }
  return Open(Json::object());
}

bool MapSax::end_object() {
  if (!building_ && level_ == 1) {
    level_ = 0;
    return true;
  }
  return Close();
}

bool MapSax::start_array(std::size_t) {
  if (!building_ && level_ == 0) throw MapError("map file", "must be a JSON object");
  if (!building_ && level_ == 1 && IsElementArray(key_)) {
    level_ = 2;
    position_ = 0;
    return true;
  }
  return Open(Json::array());
}

bool MapSax::end_array() {
  if (!building_ && level_ == 2) {
    level_ = 1;
    return true;
  }
  return Close();
}

bool MapSax::key(string_t& k) {
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

bool MapSax::parse_error(std::size_t, const std::string&, const nlohmann::detail::exception& ex) {
  std::string what = ex.what();
  auto close = what.find("] ");
  parseError_ = close == std::string::npos ? what : what.substr(close + 2);
  return false;
}

std::string MapSax::Current() const {
  if (level_ != 2) return Quote(key_);
  // "objects" names its elements "object", and so on.
  return key_.substr(0, key_.size() - 1) + " at position " + std::to_string(position_);
}

bool MapSax::Value(Json v) {
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

bool MapSax::Open(Json container) {
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

bool MapSax::Close() {
  stack_.pop_back();
  if (stack_.empty()) {
    building_ = false;
    Complete();
  }
  return true;
}

Json* MapSax::Add(Json v) {
  Json* top = stack_.back();
  if (top->is_array()) {
    top->push_back(std::move(v));
    return &top->back();
  }
  Json& slot = (*top)[pendingKey_];
  slot = std::move(v);
  return &slot;
}

void MapSax::Complete() {
  if (level_ == 2) {
    handler_.Element(key_, root_, position_);
  } else {
    handler_.Section(key_, root_);
  }
  root_ = Json();
}

}  // namespace qxwemu
