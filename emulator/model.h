// The emulated map: fields, objects, submaps and symbols, with the indexes
// that keep every platform query proportional to its answer.
//
// Order is creation order everywhere: the symbols of a submap, the symbols of
// an object, the objects of a query and the fields of an object.
#ifndef SKIFF_EMULATOR_MODEL_H_
#define SKIFF_EMULATOR_MODEL_H_

#include <cstdint>
#include <ctime>
#include <memory>
#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "platform/qxwrecords.h"

namespace qxwemu {

struct FieldDef {
  QXwFieldId id = 0;
  std::string name;
  int type = QXW_FIELD_STRING;
  bool list = false;
  bool capability = false;
  std::vector<std::string> enumNames;

  unsigned int flags() const {
    unsigned int flags = 0;
    if (list) flags |= QXW_FIELD_FLAG_LIST;
    if (capability) flags |= QXW_FIELD_FLAG_CAPABILITY;
    return flags;
  }
};

// One value of a field: `num` holds an integer (as written, -2^31 to 2^32-1),
// a boolean (0 or 1) or an enumeration index; `text` holds a string.
struct Scalar {
  int64_t num = 0;
  std::string text;

  bool operator==(const Scalar& o) const { return num == o.num && text == o.text; }
};

struct FieldValue {
  QXwFieldId field = 0;
  Scalar scalar;             // non-list fields
  std::vector<Scalar> list;  // list fields
};

struct Symbol;

struct Object {
  QXwObjectId id = 0;
  uint64_t seq = 0;
  QXwSubmapId childSubmap = 0;
  QXwStatusType status = 0;
  QXwStatusType compoundStatus = 0;
  bool acknowledged = false;
  bool managed = true;
  std::vector<FieldValue> fields;
  std::vector<Symbol*> symbols;

  const FieldValue* Find(QXwFieldId field) const;
};

struct Submap {
  QXwSubmapId id = 0;
  uint64_t seq = 0;
  std::string name;
  std::string app;
  int policy = 0;
  int type = 0;
  QXwObjectId parentObject = 0;
  int layoutStyle = 0;
  bool layoutOn = false;
  std::string background;
  std::vector<Symbol*> symbols;
};

using AppList = std::vector<std::string>;

struct Symbol {
  QXwSymbolId id = 0;
  uint64_t seq = 0;
  QXwSubmapId submap = 0;
  QXwObjectId object = 0;
  std::string label;
  const std::string* type = nullptr;  // interned
  int variety = QXW_SYMBOL_ICON;
  QXwPlaneType plane = QXW_PLANE_APPLICATION;
  bool hidden = false;
  QXwStatusType status = 0;
  int statusSource = 0;
  const AppList* apps = nullptr;  // interned
  int behavior = 0;
  bool normalized = false;
  // icon symbols
  int placement = 0;
  int x = 0, y = 0, width = 0, height = 0;
  QXwSymbolId pred = 0;
  // connection symbols
  QXwSymbolId endpoint1 = 0, endpoint2 = 0;
  bool metaConnection = false;
};

class Map {
 public:
  Map();
  ~Map();

  std::string name;
  int permissions = QXW_MAP_READ_WRITE;
  QXwSubmapId rootSubmap = 0;
  time_t creationTime = 0;
  time_t lastClosedTime = 0;

  // Fields, in definition order. SetFields replaces the whole table and may
  // only be called while the map holds no object.
  void SetFields(std::vector<FieldDef> fields);
  const std::vector<FieldDef>& Fields() const { return fields_; }
  const FieldDef* FieldById(QXwFieldId id) const;
  const FieldDef* FieldByName(const std::string& name) const;

  Object* FindObject(QXwObjectId id);
  Submap* FindSubmap(QXwSubmapId id);
  Symbol* FindSymbol(QXwSymbolId id);
  const std::vector<Object*>& ObjectsInOrder() const { return objectOrder_; }
  std::vector<const Submap*> SubmapsInOrder() const;
  std::vector<const Symbol*> SymbolsInOrder() const;
  size_t ObjectCount() const { return objects_.size(); }
  size_t SymbolCount() const { return symbols_.size(); }

  QXwObjectId NextObjectId() const { return maxObjectId_ + 1; }
  QXwSubmapId NextSubmapId() const { return maxSubmapId_ + 1; }
  QXwSymbolId NextSymbolId() const { return maxSymbolId_ + 1; }

  // Interned texts shared by many symbols.
  const std::string* InternType(const std::string& type);
  const AppList* InternApps(AppList apps);

  // Adders take a complete entity whose id is free (checked by the caller)
  // and link it to the indexes; references are not checked here.
  Object& AddObject(Object object);
  Submap& AddSubmap(Submap submap);
  // Links the symbol to its submap and object, which must exist.
  Symbol& AddSymbol(Symbol symbol);

  // Sets one field value on an object (replacing an earlier value of the
  // same field in its place), keeping the indexes right.
  void SetField(Object& object, FieldValue value);

  // The symbols that removing `ids` removes: the named ones that exist, in
  // order and once each, then the connections attached to any of them.
  std::vector<const Symbol*> SymbolsToRemove(const std::vector<QXwSymbolId>& ids);

  // Everything one removal takes, each kind in order and once each.
  struct Removal {
    std::vector<const Symbol*> symbols;
    std::vector<const Submap*> submaps;
    std::vector<const Object*> objects;
  };
  // Removing submaps takes the symbols on them (in submap order, then the
  // connections attached to any of them). Ids that do not exist are ignored.
  Removal SubmapsRemoval(const std::vector<QXwSubmapId>& ids);
  // Removing objects takes their child submaps, and the symbols of the
  // objects, then those on the child submaps, then the connections attached
  // to any of them. The objects of the symbols on a child submap stay. Ids
  // that do not exist are ignored.
  Removal ObjectsRemoval(const std::vector<QXwObjectId>& ids);
  // Everything a deletion takes where deletions cascade, as on a real
  // platform: the named symbols, submaps and objects; the connections
  // attached to every symbol that goes; the symbols of every object that goes
  // and on every submap that goes; the child submap of every object that
  // goes; and every object whose last symbol goes; until nothing more
  // follows. Each kind comes in the order the deletion reaches it. Ids that
  // do not exist are ignored.
  Removal CascadeRemoval(const std::vector<QXwSymbolId>& symbols,
                         const std::vector<QXwSubmapId>& submaps,
                         const std::vector<QXwObjectId>& objects);
  // Applies a removal (symbols from SymbolsToRemove, or one made by
  // SubmapsRemoval, ObjectsRemoval or CascadeRemoval) with no change to the
  // map since; its pointers are invalid afterwards. A surviving parent
  // object's childSubmap becomes 0, and so does rootSubmap when its submap
  // goes.
  void Remove(const Removal& removal);

  // The objects whose non-list `field` has the value `key` (its num for
  // integers, booleans and enumerations, its text for strings), in creation
  // order. Integers compare by their 32 bits, as the platform's int_val does.
  const std::vector<Object*>* Lookup(const FieldDef& field, const Scalar& key) const;
  // Calls visit(text, objects) for every distinct text of a string field
  // (not a list) and the objects that carry it, in no particular order.
  template <class Visit>
  void ForEachText(const FieldDef& field, Visit visit) const {
    auto index = index_.find(field.id);
    if (index == index_.end()) return;
    for (const auto& [text, objects] : index->second.byText) {
      if (!objects.empty()) visit(text, objects);
    }
  }

 private:
  struct FieldIndex {
    std::unordered_map<uint32_t, std::vector<Object*>> byNum;
    std::unordered_map<std::string, std::vector<Object*>> byText;
  };
  std::vector<Object*>* Bucket(const FieldDef& field, const Scalar& value, bool create);
  void IndexValue(Object& object, const FieldValue& value);
  void UnindexValue(const Object& object, const FieldValue& value);
  // Adds the submaps to `removal` and the ids of their symbols to
  // `symbolIds`.
  void CollectSubmaps(const std::vector<QXwSubmapId>& ids, Removal* removal,
                      std::vector<QXwSymbolId>* symbolIds);
  // The predecessor `symbol` keeps when the `dead` symbols go: the nearest
  // one before it that stays, or 0 when none does (never the symbol itself).
  // The walk takes at most one step more than there are dead symbols, so
  // predecessors that loop cannot hold it.
  QXwSymbolId LivePredecessor(const Symbol& symbol, const std::unordered_set<const Symbol*>& dead);
  void UnlinkSymbols(const std::unordered_set<const Symbol*>& dead);

  std::vector<FieldDef> fields_;
  std::unordered_map<QXwFieldId, size_t> fieldById_;
  std::unordered_map<std::string, size_t> fieldByName_;
  std::unordered_map<QXwFieldId, FieldIndex> index_;

  std::unordered_map<QXwObjectId, Object> objects_;
  std::unordered_map<QXwSubmapId, Submap> submaps_;
  std::unordered_map<QXwSymbolId, Symbol> symbols_;
  std::vector<Object*> objectOrder_;
  // endpoint symbol id -> the connections attached to it
  std::unordered_map<QXwSymbolId, std::vector<QXwSymbolId>> attached_;
  uint64_t nextSeq_ = 1;
  QXwObjectId maxObjectId_ = 0;
  QXwSubmapId maxSubmapId_ = 0;
  QXwSymbolId maxSymbolId_ = 0;

  std::unordered_set<std::string> typePool_;
  std::set<AppList> appPool_;
};

// The text form of a value as the collection service and the control
// protocol read it: decimal integers, TRUE/FALSE, enumeration names.
std::string RenderScalar(const FieldDef& field, const Scalar& value);

}  // namespace qxwemu

#endif  // SKIFF_EMULATOR_MODEL_H_
