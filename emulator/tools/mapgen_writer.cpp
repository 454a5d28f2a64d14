// Writing qxw-mapgen's output (see mapgen_writer.h).
#include "emulator/tools/mapgen_writer.h"

#include <cstdlib>

namespace mapgen {

Writer::Writer(FILE* out) : out_(out), submaps_(std::tmpfile()), symbols_(std::tmpfile()) {
  if (submaps_ == nullptr || symbols_ == nullptr) {
    std::perror("qxw-mapgen: tmpfile");
    std::exit(1);
  }
}

void Writer::Finish() {
  std::fputs("\n],\n\"submaps\": [\n", out_);
  Append(submaps_);
  std::fputs("\n],\n\"symbols\": [\n", out_);
  Append(symbols_);
  std::fputs("\n]\n}\n", out_);
}

void Writer::Element(FILE* f, long* count, const std::string& json) {
  if (*count > 0) std::fputs(",\n", f);
  std::fputs(json.c_str(), f);
  ++*count;
}

void Writer::Append(FILE* f) {
  std::rewind(f);
  char buffer[1 << 16];
  size_t n;
  while ((n = std::fread(buffer, 1, sizeof(buffer), f)) > 0) std::fwrite(buffer, 1, n, out_);
  std::fclose(f);
}

}  // namespace mapgen
