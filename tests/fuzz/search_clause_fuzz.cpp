// Fuzz target: a search query made into a clause of the collection service.
// The wildcard conversion and the clause must be what the header says, and
// the service's own clause parser must read back the field, the operator and
// the text that went in.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstring>
#include <memory>
#include <string>

#include "emulator/query.h"
#include "search/findobject.h"
#include "tests/fuzz/check.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  const int category = in.ConsumeIntegralInRange(-1, 3);
  const int matchType = in.ConsumeIntegralInRange(-1, 3);
  const std::string query = in.ConsumeRemainingBytesAsString().c_str();

  std::string regExp = "^";
  for (char c : query) regExp += c == '*' ? ".*" : std::string(1, c);
  regExp += "$";
  std::unique_ptr<char[]> converted(ConvertWildcardToRegExp(query.c_str()));
  Check(converted != nullptr && converted.get() == regExp);

  char clause[kCollectionClauseSize];
  const bool made = FormatCollectionClause(category, matchType, query.c_str(), clause);
  const char* field = QueryCategoryFieldName(category);
  const char op = matchType == MATCH_EXACTLY ? '=' : '~';
  const std::string text = matchType == MATCH_WILDCARD ? regExp : query;
  const std::string expected =
      field == nullptr ? "" : "(\"" + std::string(field) + "\" " + op + " \"" + text + "\")";
  const bool fits = field != nullptr && expected.size() < kCollectionClauseSize;
  Check(made == fits && clause == (fits ? expected : ""));
  if (!made) return 0;
  qxwemu::Clause parsed;
  Check(qxwemu::ParseClause(clause, &parsed) && parsed.field == field && parsed.op == op &&
        parsed.value == text);
  return 0;
}
