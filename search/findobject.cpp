#include "search/findobject.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <new>

#include "bridge/tracescope.h"
#include "platform/qxwdb.h"
#include "platform/skcollection.h"

const char* QueryCategoryFieldName(int queryCategoryType) {
  switch (queryCategoryType) {
    case OBJECTNAME:
      return "Selection Name";
    case HOSTNAME:
      return "IP Hostname";
    case IPADDRESS:
      return "IP Address";
  }
  return nullptr;
}

char* ConvertWildcardToRegExp(const char* regExp) {
  if (regExp == nullptr) regExp = "";
  const size_t length = std::strlen(regExp);
  size_t stars = 0;
  for (const char* c = regExp; *c != '\0'; ++c) stars += *c == '*';
  char* converted = new (std::nothrow) char[length + stars + 3];
  if (converted == nullptr) return nullptr;
  char* out = converted;
  *out++ = '^';
  for (const char* c = regExp; *c != '\0'; ++c) {
    if (*c == '*') *out++ = '.';
    *out++ = *c;
  }
  *out++ = '$';
  *out = '\0';
  return converted;
}

bool FormatCollectionClause(int queryCategoryType, int queryMatchType, const char* queryString,
                            char (&clause)[kCollectionClauseSize]) {
  clause[0] = '\0';
  const char* fieldName = QueryCategoryFieldName(queryCategoryType);
  if (fieldName == nullptr) return false;
  std::unique_ptr<char[]> converted;
  const char* text = queryString != nullptr ? queryString : "";
  if (queryMatchType == MATCH_WILDCARD) {
    converted.reset(ConvertWildcardToRegExp(text));
    if (converted == nullptr) return false;
    text = converted.get();
  }
  const char op = queryMatchType == MATCH_EXACTLY ? '=' : '~';
  const int written =
      std::snprintf(clause, sizeof(clause), "(\"%s\" %c \"%s\")", fieldName, op, text);
  if (written < 0 || static_cast<size_t>(written) >= sizeof(clause)) {
    clause[0] = '\0';
    return false;
  }
  return true;
}

FindObject::FindObject() : m_initialized(0) {
  SKIFF_TRACE("FindObject::FindObject");
  if (skCollectionOpen() < 1) {
    std::fputs("Find::Find The call to skCollectionOpen() failed!", stderr);
    return;
  }
  m_initialized = 1;
}

FindObject::~FindObject() {
  SKIFF_TRACE("FindObject::~FindObject");
  if (m_initialized) skCollectionDone();
}

QXwObjectIdList* FindObject::GetMatchingObjects(QUERY_CATEGORY_TYPE queryCategoryType,
                                                QUERY_MATCH_TYPE queryMatchType,
                                                const char* queryString) {
  SKIFF_TRACE("FindObject::GetMatchingObjects");
  if (!m_initialized) return nullptr;
  char clause[kCollectionClauseSize];
  if (!FormatCollectionClause(queryCategoryType, queryMatchType, queryString, clause)) {
    return nullptr;
  }
  return skCollectionEvaluate(clause);
}
