// The text of map file elements for qxw-mapgen: JSON strings, and the object
// and submap elements with their field lists. Pure text, no I/O.
#ifndef SKIFF_EMULATOR_TOOLS_MAPGEN_TEXT_H_
#define SKIFF_EMULATOR_TOOLS_MAPGEN_TEXT_H_

#include <cstdint>
#include <string>
#include <vector>

namespace mapgen {

// `s` as a JSON string: quoted, with " and \ escaped and control
// characters written \u00XX.
std::string Quote(const std::string& s);

// A submap element: `id`, `name`, application `app`, `policy` and parent
// object `parent`.
std::string SubmapJson(uint32_t id, const std::string& name, const char* app, int policy,
                       uint32_t parent);

// An object element: `id`, child submap `child` and `status` (each left out
// when 0), compound status `compound` (left out when negative), and
// `fields`, the members of its "fields" object as JSON text.
std::string ObjectJson(uint32_t id, uint32_t child, int status, const std::string& fields,
                       int compound = -1);

// The "TopM Interface List" member of a node's fields, one string each.
std::string InterfaceList(const std::vector<std::string>& strings);

}  // namespace mapgen

#endif  // SKIFF_EMULATOR_TOOLS_MAPGEN_TEXT_H_
