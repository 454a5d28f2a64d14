// Failures injected into platform functions: which calls fail (every one,
// a number of them, those after the first N, those naming an id) and the
// `fail` command that sets them.
#include <algorithm>
#include <optional>
#include <string>

#include "emulator/control_commands.h"

namespace qxwemu {

bool IdArgs::Has(uint32_t id) const {
  if (std::find(ids.begin(), ids.end(), id) != ids.end()) return true;
  if (list != nullptr && std::find(list, list + count, id) != list + count) return true;
  for (int i = 0; bindings != nullptr && i < bindingCount; ++i) {
    if (bindings[i].field_id == id) return true;
  }
  return false;
}

namespace {

template <class List>
IdArgs IdsOfList(const List* list, const uint32_t* items, std::initializer_list<uint32_t> ids) {
  IdArgs args{ids};
  if (list != nullptr && list->count > 0 && items != nullptr) {
    args.list = items;
    args.count = list->count;
  }
  return args;
}

}  // namespace

IdArgs ListArgs(const QXwSymbolIdList* list, std::initializer_list<uint32_t> ids) {
  return IdsOfList(list, list == nullptr ? nullptr : list->symbol_ids, ids);
}

IdArgs ListArgs(const QXwObjectIdList* list, std::initializer_list<uint32_t> ids) {
  return IdsOfList(list, list == nullptr ? nullptr : list->object_ids, ids);
}

bool FnTakesIds(Fn fn) {
  switch (fn) {
    case k_QXwListSymbols:
    case k_QXwGetSymbolsByObject:
    case k_QXwGetSubmapInfo:
    case k_QXwGetObjectInfo:
    case k_QXwDeleteSymbols:
    case k_QXwSetSymbolsVisibility:
    case k_QXwSetObjectAckState:
    case k__QXwManageObjects:
    case k__QXwUnmanageObjects:
    case k_QXwDbObjectIdToSelectionName:
    case k_QXwDbGetFieldValues:
    case k_QXwDbGetCapabilityFieldValues:
    case k_QXwDbGetFieldValuesByObjects:
    case k_QXwDbGetFieldIntegerValue:
    case k_QXwDbSetFieldIntegerValue:
    case k_QXwDbListObjectsByFieldValue:
    case k_QXwDbListObjectsByFieldValues:
    case k_QXwDbGetFieldInfo:
    case k_QXwDbGetEnumConstants:
      return true;
    default:
      return false;
  }
}

bool Call::Failing(const IdArgs& args) {
  Failure& f = Emu().failures[fn_];
  if (!f.active || (f.forId && !args.Has(f.id))) return false;
  if (f.passes > 0) {
    --f.passes;
    return false;
  }
  if (f.remaining > 0 && --f.remaining == 0) f.active = false;
  SetError(f.code);
  return true;
}

// fail FUNCTION off, or
// fail FUNCTION [for ID] [after N] [times M] [CODE [COUNT]]: the platform
// function fails with CODE (default 1): only calls with the id ID among their
// id arguments when `for` is given; the first N such calls succeed when
// `after` is given; then M calls fail (`times`, or COUNT), or every call.
Json CmdFail(const Words& w, std::string_view) {
  const Refusal usage{"usage: fail FUNCTION [for ID] [after N] [times M] [CODE [COUNT]]"};
  if (w.size() < 2) throw usage;
  std::optional<Fn> fn = FnByName(w[1]);
  if (!fn) throw Refusal{"unknown platform function \"" + w[1] + "\""};
  if (!FnCanFail(*fn)) throw Refusal{w[1] + " cannot fail"};
  Failure& f = Emu().failures[*fn];
  if (w.size() >= 3 && w[2] == "off") {
    ExpectWords(w, 3, 3);
    f = Failure();
    return Ok();
  }
  Failure next;
  next.active = true;
  size_t i = 2;
  bool seen[3] = {};  // for, after, times
  for (; i + 1 < w.size(); i += 2) {
    const std::string& word = w[i];
    int which = word == "for" ? 0 : word == "after" ? 1 : word == "times" ? 2 : -1;
    if (which < 0) break;
    if (seen[which]) throw Refusal{"\"" + word + "\" is given twice"};
    seen[which] = true;
    if (which == 0) {
      if (!FnTakesIds(*fn)) throw Refusal{w[1] + " has no id argument"};
      next.forId = true;
      next.id = ParseId(w[i + 1]);
    } else if (which == 1) {
      next.passes = ParseInteger(w[i + 1], 0, INT32_MAX, "the number of calls that succeed");
    } else {
      next.remaining = ParseInteger(w[i + 1], 1, INT32_MAX, "the count");
    }
  }
  if (w.size() - i > 2) throw usage;
  if (i < w.size())
    next.code = static_cast<int>(ParseInteger(w[i], INT32_MIN, INT32_MAX, "the code"));
  if (i + 1 < w.size()) {
    if (seen[2]) throw Refusal{"the count is given twice"};
    next.remaining = ParseInteger(w[i + 1], 1, INT32_MAX, "the count");
  }
  f = next;
  return Ok();
}

}  // namespace qxwemu
