// Writing qxw-mapgen's output: the three element arrays of a map file,
// objects straight to the output and submaps and symbols by way of temporary
// files, so a map of any size is written in one pass.
#ifndef SKIFF_EMULATOR_TOOLS_MAPGEN_WRITER_H_
#define SKIFF_EMULATOR_TOOLS_MAPGEN_WRITER_H_

#include <cstdio>
#include <string>

namespace mapgen {

// Writes the three entity arrays; objects go straight to the output, the
// submaps and symbols to temporary files appended at the end.
class Writer {
 public:
  // Writes to `out`, which stays open and owned by the caller; the text
  // before the "objects" array is the caller's to write. Exits the program
  // when a temporary file cannot be made.
  explicit Writer(FILE* out);

  // Adds one element, in JSON text, to its array.
  void Object(const std::string& json) { Element(out_, &objectCount_, json); }
  void Submap(const std::string& json) { Element(submaps_, &submapCount_, json); }
  void Symbol(const std::string& json) { Element(symbols_, &symbolCount_, json); }

  // Closes the objects array, appends the other two and ends the file; the
  // temporary files are closed (and so removed).
  void Finish();

  // The number of elements written to each array.
  long objects() const { return objectCount_; }
  long submaps() const { return submapCount_; }
  long symbols() const { return symbolCount_; }

 private:
  // Writes `json` to `f`, after a separator unless it is the first of the
  // array, and counts it.
  static void Element(FILE* f, long* count, const std::string& json);
  // Copies the temporary file `f` to the output and closes it.
  void Append(FILE* f);

  FILE* out_;
  FILE* submaps_;
  FILE* symbols_;
  long objectCount_ = 0, submapCount_ = 0, symbolCount_ = 0;
};

}  // namespace mapgen

#endif  // SKIFF_EMULATOR_TOOLS_MAPGEN_WRITER_H_
