// Queries over objects by field value: the database's binding lists and the
// collection service's clauses. Both answer in creation order and use the
// map's value index where they can.
#ifndef SKIFF_EMULATOR_QUERY_H_
#define SKIFF_EMULATOR_QUERY_H_

#include <string>
#include <string_view>
#include <vector>

#include "emulator/model.h"

namespace qxwemu {

// The objects that match every binding. False, with the error set, when a
// binding names no field or has no value.
bool ObjectsMatching(Map& map, const QXwFieldBinding* bindings, int count,
                     std::vector<QXwObjectId>* out);

// A parsed clause ("FIELD" OP "VALUE").
struct Clause {
  std::string field;
  char op = '=';
  std::string value;
};

// Parses a clause; false when it is malformed. Blanks may surround the
// parts; the value runs to the last double quote before the closing
// parenthesis, so it may itself hold double quotes.
bool ParseClause(std::string_view text, Clause* clause);

// The objects that satisfy the clause. False, with the error set, when the
// field is unknown or the expression is not valid.
bool EvaluateClause(Map& map, const Clause& clause, std::vector<QXwObjectId>* out);

}  // namespace qxwemu

#endif  // SKIFF_EMULATOR_QUERY_H_
