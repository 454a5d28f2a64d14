// Building a map from the sections and elements of a map file as they stream
// by: the map header, the field table, the entities, and the checks that can
// only run once the whole file has been read. Shared by the parts of the map
// file loader.
#ifndef SKIFF_EMULATOR_MAP_BUILDER_H_
#define SKIFF_EMULATOR_MAP_BUILDER_H_

#include <memory>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "emulator/loader.h"
#include "emulator/map_stream.h"

namespace qxwemu {

// Collects a map from the stream. Field definitions must be known before an
// object can be read; when a file defines fields after its objects, the
// first pass only learns the field table and a second pass reads the rest.
// Every method throws MapError on a violation.
class MapBuilder : public MapSax::Handler {
 public:
  // `knownFields`, when not null, is the field table a first pass learned;
  // the field sections of the file are then skipped.
  explicit MapBuilder(const std::vector<FieldDef>* knownFields);

  // Parses one object element and adds it; fails when its id is taken or its
  // selection name is another object's.
  void AddObject(const Json& element, size_t position);

  // Takes the "map" header or a field section; refuses any other key.
  void Section(const std::string& key, Json& value) override;
  // Takes one object, submap or symbol element.
  void Element(const std::string& key, Json& element, size_t position) override;

  // Checks every reference and links the symbols; throws MapError. Returns
  // the map, which the builder no longer holds.
  std::unique_ptr<Map> Finish();

  // Whether the file defined fields after its first object, so that the
  // pass must be run again with FieldTable() known from the start.
  bool needsSecondPass() const { return needsSecondPass_; }
  // The field table the sections seen so far define.
  std::vector<FieldDef> FieldTable();

 private:
  // Fixes the field table, once, before the first object is read.
  void FreezeFields();

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

}  // namespace qxwemu

#endif  // SKIFF_EMULATOR_MAP_BUILDER_H_
