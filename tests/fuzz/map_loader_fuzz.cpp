// Fuzz target: the emulator's map file loader on any text. A text it refuses
// gets a message that names the file; a map it loads dumps to a text that
// loads again into a map with the same dump.
#include <cstdlib>
#include <string>
#include <string_view>

#include "emulator/loader.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string error;
  std::unique_ptr<qxwemu::Map> map =
      qxwemu::LoadMap(std::string_view(reinterpret_cast<const char*>(data), size), "fuzz", &error);
  if (map == nullptr) {
    if (error.rfind("fuzz: ", 0) != 0) std::abort();
    return 0;
  }
  const std::string dump = qxwemu::DumpMap(*map).dump();
  std::unique_ptr<qxwemu::Map> again = qxwemu::LoadMap(dump, "dump", &error);
  if (again == nullptr || qxwemu::DumpMap(*again).dump() != dump) std::abort();
  return 0;
}
