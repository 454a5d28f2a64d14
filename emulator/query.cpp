#include "emulator/query.h"

#include <regex.h>

#include <algorithm>
#include <cstring>

#include "emulator/emulator.h"

namespace qxwemu {

namespace {

// A binding's value in the model's terms.
struct Wanted {
  const FieldDef* field;
  Scalar key;
};

bool Equal(const FieldDef& field, const Scalar& have, const Scalar& want) {
  if (field.type == QXW_FIELD_STRING) return have.text == want.text;
  return static_cast<uint32_t>(have.num) == static_cast<uint32_t>(want.num);
}

bool Matches(const Object& o, const Wanted& w) {
  const FieldValue* v = o.Find(w.field->id);
  if (v == nullptr) return false;
  if (!w.field->list) return Equal(*w.field, v->scalar, w.key);
  for (const Scalar& element : v->list) {
    if (Equal(*w.field, element, w.key)) return true;
  }
  return false;
}

// Keeps the objects of `candidates` that match every wanted value.
void Filter(const std::vector<Object*>& candidates, const std::vector<Wanted>& wanted,
            std::vector<QXwObjectId>* out) {
  for (const Object* o : candidates) {
    bool all = true;
    for (const Wanted& w : wanted) {
      if (!Matches(*o, w)) {
        all = false;
        break;
      }
    }
    if (all) out->push_back(o->id);
  }
}

// The wanted value (not of a list field) with the smallest index bucket,
// whose bucket then holds every candidate: its index in `wanted` and the
// bucket, or {-1, null} when every value is of a list field. Sets `none`
// when some bucket is empty.
std::pair<int, const std::vector<Object*>*> SmallestBucket(const Map& map,
                                                           const std::vector<Wanted>& wanted,
                                                           bool* none) {
  std::pair<int, const std::vector<Object*>*> best{-1, nullptr};
  for (size_t i = 0; i < wanted.size(); ++i) {
    const Wanted& w = wanted[i];
    if (w.field->list) continue;
    const std::vector<Object*>* bucket = map.Lookup(*w.field, w.key);
    if (bucket == nullptr || bucket->empty()) {
      *none = true;
      return {-1, nullptr};
    }
    if (best.second == nullptr || bucket->size() < best.second->size()) {
      best = {static_cast<int>(i), bucket};
    }
  }
  return best;
}

// Reads a quoted part starting at `*i`; for the value, the part ends at the
// last quote of the text.
bool QuotedPart(std::string_view text, size_t* i, bool toLastQuote, std::string* out) {
  if (*i >= text.size() || text[*i] != '"') return false;
  size_t start = *i + 1;
  size_t end = toLastQuote ? text.rfind('"') : text.find('"', start);
  if (end == std::string_view::npos || end < start) return false;
  *out = std::string(text.substr(start, end - start));
  *i = end + 1;
  return true;
}

void SkipBlanks(std::string_view text, size_t* i) {
  while (*i < text.size() && (text[*i] == ' ' || text[*i] == '\t')) ++*i;
}

}  // namespace

bool ObjectsMatching(Map& map, const QXwFieldBinding* bindings, int count,
                     std::vector<QXwObjectId>* out) {
  std::vector<Wanted> wanted;
  for (int i = 0; i < count; ++i) {
    const QXwFieldBinding& b = bindings[i];
    const FieldDef* def = map.FieldById(b.field_id);
    if (def == nullptr) {
      SetError(QXW_ERR_NO_SUCH_FIELD, "no such field: " + std::to_string(b.field_id));
      return false;
    }
    if (b.field_val == nullptr) {
      SetError(QXW_ERR_BAD_ARGUMENT, "a binding has no value");
      return false;
    }
    Wanted w{def, {}};
    if (def->type == QXW_FIELD_STRING) {
      // No object's text equals a missing one.
      if (b.field_val->un.string_val == nullptr) return true;
      w.key.text = b.field_val->un.string_val;
    } else {
      w.key.num = static_cast<uint32_t>(b.field_val->un.int_val);
    }
    wanted.push_back(std::move(w));
  }
  bool none = false;
  auto [chosen, bucket] = SmallestBucket(map, wanted, &none);
  if (none) return true;
  if (bucket == nullptr) {
    Filter(map.ObjectsInOrder(), wanted, out);
    return true;
  }
  // Every object of the bucket has the chosen value: only the others are
  // checked.
  wanted.erase(wanted.begin() + chosen);
  Filter(*bucket, wanted, out);
  return true;
}

bool ParseClause(std::string_view text, Clause* clause) {
  size_t i = 0;
  SkipBlanks(text, &i);
  if (i >= text.size() || text[i] != '(') return false;
  ++i;
  SkipBlanks(text, &i);
  if (!QuotedPart(text, &i, false, &clause->field)) return false;
  SkipBlanks(text, &i);
  if (i >= text.size() || (text[i] != '=' && text[i] != '~')) return false;
  clause->op = text[i++];
  SkipBlanks(text, &i);
  // The value's closing quote is the last one; after it only blanks and the
  // closing parenthesis may follow.
  size_t close = text.rfind(')');
  if (close == std::string_view::npos || close < i) return false;
  for (size_t k = close + 1; k < text.size(); ++k) {
    if (text[k] != ' ' && text[k] != '\t') return false;
  }
  std::string_view inner = text.substr(0, close);
  size_t end = inner.find_last_not_of(" \t");
  if (end == std::string_view::npos) return false;
  inner = inner.substr(0, end + 1);
  if (!QuotedPart(inner, &i, true, &clause->value)) return false;
  return i == inner.size();
}

bool EvaluateClause(Map& map, const Clause& clause, std::vector<QXwObjectId>* out) {
  const FieldDef* def = map.FieldByName(clause.field);
  if (def == nullptr) {
    SetError(QXW_ERR_NO_SUCH_FIELD, "no such field: " + clause.field);
    return false;
  }
  if (clause.op == '=') {
    // Equality of text: use the index when the field has one, by turning the
    // text into the value that renders as exactly that text.
    if (!def->list) {
      Scalar key;
      bool representable = true;
      switch (def->type) {
        case QXW_FIELD_STRING:
          key.text = clause.value;
          break;
        case QXW_FIELD_BOOLEAN:
          representable = clause.value == "TRUE" || clause.value == "FALSE";
          key.num = clause.value == "TRUE" ? 1 : 0;
          break;
        default: {
          // Integers and enumerations: find candidates by scanning, since an
          // enumeration renders by name and integers may differ in sign.
          for (const Object* o : map.ObjectsInOrder()) {
            const FieldValue* v = o->Find(def->id);
            if (v != nullptr && RenderScalar(*def, v->scalar) == clause.value)
              out->push_back(o->id);
          }
          return true;
        }
      }
      if (!representable) return true;
      if (const std::vector<Object*>* bucket = map.Lookup(*def, key)) {
        for (const Object* o : *bucket) out->push_back(o->id);
      }
      return true;
    }
    for (const Object* o : map.ObjectsInOrder()) {
      const FieldValue* v = o->Find(def->id);
      if (v == nullptr) continue;
      for (const Scalar& element : v->list) {
        if (RenderScalar(*def, element) == clause.value) {
          out->push_back(o->id);
          break;
        }
      }
    }
    return true;
  }
  regex_t re;
  if (regcomp(&re, clause.value.c_str(), REG_EXTENDED | REG_NOSUB) != 0) {
    SetError(QXW_ERR_BAD_EXPRESSION, "invalid regular expression: " + clause.value);
    return false;
  }
  if (def->type == QXW_FIELD_STRING && !def->list) {
    // Each distinct text is matched once; the objects that carry a matching
    // one are then put in creation order.
    std::vector<std::pair<uint64_t, QXwObjectId>> found;
    map.ForEachText(*def, [&](const std::string& text, const std::vector<Object*>& owners) {
      if (regexec(&re, text.c_str(), 0, nullptr, 0) != 0) return;
      for (const Object* o : owners) found.emplace_back(o->seq, o->id);
    });
    regfree(&re);
    std::sort(found.begin(), found.end());
    for (const auto& [seq, id] : found) out->push_back(id);
    return true;
  }
  auto matches = [&](const Scalar& s) {
    if (def->type == QXW_FIELD_STRING) return regexec(&re, s.text.c_str(), 0, nullptr, 0) == 0;
    return regexec(&re, RenderScalar(*def, s).c_str(), 0, nullptr, 0) == 0;
  };
  for (const Object* o : map.ObjectsInOrder()) {
    const FieldValue* v = o->Find(def->id);
    if (v == nullptr) continue;
    bool hit = false;
    if (def->list) {
      for (const Scalar& element : v->list) hit = hit || matches(element);
    } else {
      hit = matches(v->scalar);
    }
    if (hit) out->push_back(o->id);
  }
  regfree(&re);
  return true;
}

}  // namespace qxwemu
