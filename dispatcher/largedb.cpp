#include "dispatcher/largedb.h"

#include <cstring>

namespace skiff {

const char* const kLargeDbConfigPath = "/usr/QX/conf/SkiffLargeDb.conf";
const char* const kLargeDbKey = "SKIFF_LARGE_DB=TRUE";

namespace {
bool g_isLargeDb = false;
}  // namespace

bool LargeDbKeyFound(std::FILE* file) {
  const size_t keyLength = std::strlen(kLargeDbKey);
  char piece[32];  // the key's length and the terminating NUL
  static_assert(sizeof(piece) > 19, "the piece buffer must hold the key");
  bool found = false;
  while (std::fgets(piece, static_cast<int>(keyLength + 1), file) != nullptr) {
    if (std::strcmp(piece, kLargeDbKey) == 0) found = true;
  }
  return found;
}

void RereadLargeDbSetting(const char* path, bool verbose) {
  g_isLargeDb = false;
  std::FILE* file = std::fopen(path, "r");
  if (file == nullptr) {
    if (verbose) std::fprintf(stderr, "Can't open %s conf file", path);
  } else {
    g_isLargeDb = LargeDbKeyFound(file);
    std::fclose(file);
  }
  if (verbose) std::fprintf(stderr, "SKIFF_LARGE_DB=%s\n", LargeDbSetting());
}

const char* LargeDbSetting() { return g_isLargeDb ? "TRUE" : "FALSE"; }

bool IsLargeDb() { return g_isLargeDb; }

}  // namespace skiff
