// Queries as clauses of the collection service, and the node that a host
// name or an address names.
#include "search/findobject.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "search/nodebyaddress.h"
#include "tests/support/platform_session.h"

namespace {

// The clause of a query, or "(none)" when the query makes none.
std::string Clause(int category, int matchType, const std::string& query) {
  char clause[kCollectionClauseSize];
  return FormatCollectionClause(category, matchType, query.c_str(), clause) ? clause : "(none)";
}

TEST(FindObjectTest, EachQueryMakesItsClause) {
  struct Case {
    int category, matchType;
    std::string query, clause;
  } cases[] = {
      {HOSTNAME, MATCH_WILDCARD, "*", R"(("IP Hostname" ~ "^.*$"))"},
      {IPADDRESS, MATCH_WILDCARD, "10.1.*", R"(("IP Address" ~ "^10.1..*$"))"},
      {OBJECTNAME, MATCH_EXACTLY, "*", R"(("Selection Name" = "*"))"},
      {IPADDRESS, MATCH_REGEXP, "rtr", R"(("IP Address" ~ "rtr"))"},
      {OBJECTNAME, MATCH_WILDCARD, "", R"(("Selection Name" ~ "^$"))"},
      // Only '*' is translated; the rest keeps its regular-expression meaning.
      {OBJECTNAME, MATCH_WILDCARD, "a?b[c]\\d**", R"(("Selection Name" ~ "^a?b[c]\d.*.*$"))"},
      // Any other match type is a regular expression; quotes go in as they are.
      {OBJECTNAME, 7, "say \"hi\"", R"(("Selection Name" ~ "say "hi""))"},
      {3, MATCH_EXACTLY, "x", "(none)"},
      {-1, MATCH_EXACTLY, "x", "(none)"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(Clause(c.category, c.matchType, c.query), c.clause) << c.query;
  }
}

TEST(FindObjectTest, AQueryFitsWhenItsClauseFitsTheBuffer) {
  // Nine characters besides the field name and the text.
  struct Case {
    int category, matchType;
    size_t longest;  // the longest query that fits
  } cases[] = {
      {OBJECTNAME, MATCH_EXACTLY, 488},  {HOSTNAME, MATCH_REGEXP, 491},
      {IPADDRESS, MATCH_EXACTLY, 492},   {OBJECTNAME, MATCH_WILDCARD, 486},  // "^" and "$" added
      {OBJECTNAME, MATCH_WILDCARD, 243},  // and a '.' before each '*'
  };
  for (const Case& c : cases) {
    const char fill = c.longest == 243 ? '*' : 'x';
    std::string fits(c.longest, fill);
    EXPECT_EQ(Clause(c.category, c.matchType, fits).size(), kCollectionClauseSize - 1);
    EXPECT_EQ(Clause(c.category, c.matchType, fits + fill), "(none)") << c.longest;
  }
}

TEST(FindObjectTest, NodeIsNamedByItsHostNameItsAddressOrAnInterfacesAddress) {
  skifftest::PlatformSession session(skifftest::JavaTestMap("search.json"));
  ASSERT_TRUE(session.ok()) << session.error();
  const skiff::FieldIds ids = skiff::ResolveFieldIds();
  struct Case {
    const char* hostOrAddress;
    const char* node;
  } cases[] = {
      {"rtr1.example", "rtr1"},
      {"10.11.5.7", "host-x"},
      // Three interfaces carry it: the first has no node to read, the second
      // names host-x.
      {"10.9.9.9", "host-x"},
      // A network's address is no node's.
      {"10.1.0.0", nullptr},
      {"", nullptr},
  };
  for (const Case& c : cases) {
    std::unique_ptr<char, decltype(&std::free)> name(
        skiff::search::NodeSelectionNameByHostnameOrIPAddress(c.hostOrAddress, ids), &std::free);
    EXPECT_STREQ(name.get(), c.node) << c.hostOrAddress;
  }
}

}  // namespace
