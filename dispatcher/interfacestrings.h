// A node's "TopM Interface List": one string per interface, its tokens
// separated by blanks (a run of blanks is one separator). Token 2 is the
// interface's IP address, token 3 its subnet mask, token 4 its physical
// address.
#ifndef SKIFF_DISPATCHER_INTERFACESTRINGS_H_
#define SKIFF_DISPATCHER_INTERFACESTRINGS_H_

#include <string>
#include <vector>

#include "platform/qxwrecords.h"

namespace skiff {

// The string of every entry of a list value, in order (an absent string is
// taken as empty).
std::vector<std::string> GetInterfaceStrings(const QXwListFieldValue* list);

// Token `tokenIndex` (from 0) of each interface string, in order, joined by
// line feeds with none after the last. A string without that token adds an
// empty line, so that line k always belongs to interface k.
std::string ConcatenateIndexedTokens(int tokenIndex,
                                     const std::vector<std::string>& interfaceStrings);

}  // namespace skiff

#endif  // SKIFF_DISPATCHER_INTERFACESTRINGS_H_
