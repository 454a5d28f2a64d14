// The large-database setting: on a very large map the Java side is sent only
// the string-typed fields of an object. The setting is read afresh from its
// configuration file at every submap report.
#ifndef SKIFF_DISPATCHER_LARGEDB_H_
#define SKIFF_DISPATCHER_LARGEDB_H_

#include <cstdio>

namespace skiff {

// The configuration file and the text that switches the setting on.
extern const char* const kLargeDbConfigPath;  // "/usr/QX/conf/SkiffLargeDb.conf"
extern const char* const kLargeDbKey;         // "SKIFF_LARGE_DB=TRUE"

// Applies the matching rule to an open file, read to its end: the file is
// read in pieces of at most the key's length, a piece ending early after a
// newline, and the rule holds when one piece equals the key exactly. So a line
// that is the key, or begins with it, switches the setting on; a key elsewhere
// on a line does only when it starts exactly where a piece starts.
bool LargeDbKeyFound(std::FILE* file);

// Re-reads the setting from `path`: "FALSE" first, then "TRUE" when the file
// opens and holds the key. In verbose mode writes "Can't open %s conf file"
// (no line end) when the file cannot be opened, then "SKIFF_LARGE_DB=%s\n".
void RereadLargeDbSetting(const char* path, bool verbose);

// "TRUE" or "FALSE" as the last read left it ("FALSE" before the first).
const char* LargeDbSetting();
bool IsLargeDb();

}  // namespace skiff

#endif  // SKIFF_DISPATCHER_LARGEDB_H_
