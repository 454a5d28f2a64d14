// Object search: a query (a field, how to match, a text) becomes one clause
// of the platform's object-collection service, which gives the matching
// objects.
#ifndef SKIFF_SEARCH_FINDOBJECT_H_
#define SKIFF_SEARCH_FINDOBJECT_H_

#include <cstddef>

#include "platform/qxwrecords.h"

// What a search looks at. Values arrive from requests as they were sent, so
// the enumerations hold any int.
enum QUERY_CATEGORY_TYPE : int {
  OBJECTNAME = 0,  // "Selection Name"
  HOSTNAME = 1,    // "IP Hostname"
  IPADDRESS = 2,   // "IP Address"
};

// How the query text is matched: as it stands (=), or as a regular
// expression (~), which a wildcard pattern is turned into first.
enum QUERY_MATCH_TYPE : int {
  MATCH_EXACTLY = 0,
  MATCH_WILDCARD = 1,
  MATCH_REGEXP = 2,
};

// The clause's size, its NUL included.
constexpr size_t kCollectionClauseSize = 512;

// The field a category searches; null for a value that is no category.
const char* QueryCategoryFieldName(int queryCategoryType);

// The regular expression of a wildcard pattern: anchored at both ends, each
// '*' made ".*", every other character (also '?', '.', '[') left as it is
// and so keeping its meaning in a regular expression. A new array that the
// caller releases with delete[]; null when memory is exhausted. A null
// pattern counts as empty.
char* ConvertWildcardToRegExp(const char* regExp);

// Writes the clause ("FIELD" OP "TEXT") of a query into `clause`: the
// category's field, '=' for an exact match and '~' for any other match type,
// the text converted for a wildcard match and unchanged otherwise, with no
// escaping. False, with `clause` holding no clause, for an unknown category,
// a conversion that found no memory, or a clause longer than the buffer.
bool FormatCollectionClause(int queryCategoryType, int queryMatchType, const char* queryString,
                            char (&clause)[kCollectionClauseSize]);

// A handle on the object-collection service for one search: the service is
// open while the handle lives.
class FindObject {
 public:
  // Opens the service; on failure says so on standard error, and the handle
  // then finds nothing.
  FindObject();
  // Closes the service if this handle opened it.
  ~FindObject();
  FindObject(const FindObject&) = delete;
  FindObject& operator=(const FindObject&) = delete;

  // The objects that match, in the service's order, as a list the caller
  // releases with QXwDbFreeObjectIdList; null when the service is not open,
  // the query makes no clause, or nothing matches.
  QXwObjectIdList* GetMatchingObjects(QUERY_CATEGORY_TYPE queryCategoryType,
                                      QUERY_MATCH_TYPE queryMatchType, const char* queryString);

 private:
  int m_initialized;
};

#endif  // SKIFF_SEARCH_FINDOBJECT_H_
