// The text of map file elements for qxw-mapgen (see mapgen_text.h).
#include "emulator/tools/mapgen_text.h"

#include <cstdio>

namespace mapgen {

std::string Quote(const std::string& s) {
  std::string out = "\"";
  for (char c : s) {
    if (c == '"' || c == '\\') {
      out += '\\';
      out += c;
    } else if (static_cast<unsigned char>(c) < 0x20) {
      char buf[8];
      std::snprintf(buf, sizeof(buf), "\\u%04x", c);
      out += buf;
    } else {
      out += c;
    }
  }
  return out + "\"";
}

std::string SubmapJson(uint32_t id, const std::string& name, const char* app, int policy,
                       uint32_t parent) {
  char buf[256];
  std::snprintf(buf, sizeof(buf),
                "{\"id\": %u, \"name\": %s, \"app\": %s, \"policy\": %d, \"parentObject\": %u}", id,
                Quote(name).c_str(), Quote(app).c_str(), policy, parent);
  return buf;
}

std::string ObjectJson(uint32_t id, uint32_t child, int status, const std::string& fields,
                       int compound) {
  std::string s = "{\"id\": " + std::to_string(id);
  if (child != 0) s += ", \"childSubmap\": " + std::to_string(child);
  if (status != 0) s += ", \"status\": " + std::to_string(status);
  if (compound >= 0) s += ", \"compoundStatus\": " + std::to_string(compound);
  return s + ", \"fields\": {" + fields + "}}";
}

std::string InterfaceList(const std::vector<std::string>& strings) {
  std::string list = "\"TopM Interface List\": [";
  for (size_t i = 0; i < strings.size(); ++i) list += (i ? ", " : "") + Quote(strings[i]);
  return list + "]";
}

}  // namespace mapgen
