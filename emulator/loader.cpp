// Loading a map from its text or from a file: the input read in chunks and
// the passes of the streaming parser over it.
#include "emulator/loader.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <iterator>

#include "emulator/map_builder.h"
#include "emulator/map_stream.h"

namespace qxwemu {

namespace {

// Reads a file in chunks, as the characters of an input iterator, so that a
// map file of any size costs one buffer of memory.
class ChunkReader {
 public:
  // Reads `file`, which stays open and owned by the caller, in chunks of
  // 1 MiB, or of `size` bytes when it says the file is smaller.
  ChunkReader(FILE* file, size_t size)
      : file_(file), buffer_(std::clamp<size_t>(size, 1, 1 << 20)) {}

  // Starts again from the beginning of the file.
  void Rewind() {
    std::rewind(file_);
    pos_ = len_ = 0;
  }
  // Whether a character is at hand, reading the next chunk when the buffer
  // is used up; false at the end of the file (or on a read error).
  bool Available() {
    if (pos_ < len_) return true;
    len_ = std::fread(buffer_.data(), 1, buffer_.size(), file_);
    pos_ = 0;
    return len_ > 0;
  }
  // The character at hand; only after Available() said there is one.
  char Current() const { return buffer_[pos_]; }
  // Moves past the character at hand.
  void Advance() { ++pos_; }

 private:
  FILE* file_;
  std::vector<char> buffer_;
  size_t pos_ = 0;
  size_t len_ = 0;
};

// An input iterator over the characters of a ChunkReader; the
// default-constructed one is the end, which any iterator equals once its
// reader has no more characters.
class ChunkIterator {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = char;

  ChunkIterator() = default;  // the end
  explicit ChunkIterator(ChunkReader* reader) : reader_(reader) {}

  char operator*() const { return reader_->Current(); }
  ChunkIterator& operator++() {
    reader_->Advance();
    return *this;
  }
  bool operator==(const ChunkIterator& other) const { return AtEnd() == other.AtEnd(); }
  bool operator!=(const ChunkIterator& other) const { return !(*this == other); }

 private:
  bool AtEnd() const { return reader_ == nullptr || !reader_->Available(); }
  ChunkReader* reader_ = nullptr;
};

// Runs the streaming parser over the text from `begin` to `end` once. With
// `knownFields` null, the field table comes from the file; when the file
// defines fields after its objects, stores the table in
// `*fieldsForSecondPass` and returns null for a second pass with it.
// Otherwise returns the map. Throws MapError on invalid JSON or any
// violation.
template <class Iterator>
std::unique_ptr<Map> RunPass(Iterator begin, Iterator end, const std::vector<FieldDef>* knownFields,
                             std::vector<FieldDef>* fieldsForSecondPass) {
  MapBuilder builder(knownFields);
  MapSax sax(builder);
  bool ok = Json::sax_parse(begin, end, &sax, nlohmann::detail::input_format_t::json, true);
  if (!ok) throw MapError("invalid JSON", sax.parseError());
  if (builder.needsSecondPass()) {
    *fieldsForSecondPass = builder.FieldTable();
    return nullptr;
  }
  return builder.Finish();
}

}  // namespace

std::unique_ptr<Map> LoadMap(std::string_view text, const std::string& origin, std::string* error) {
  try {
    std::vector<FieldDef> fields;
    std::unique_ptr<Map> map = RunPass(text.begin(), text.end(), nullptr, &fields);
    if (map == nullptr) map = RunPass(text.begin(), text.end(), &fields, &fields);
    return map;
  } catch (const std::exception& e) {
    *error = origin + ": " + e.what();
  }
  return nullptr;
}

std::unique_ptr<Map> LoadMapFile(const std::string& path, std::string* error) {
  FILE* file = std::fopen(path.c_str(), "rb");
  struct stat st {};
  if (file == nullptr || fstat(fileno(file), &st) != 0 || !S_ISREG(st.st_mode)) {
    if (file != nullptr) std::fclose(file);
    *error = path + ": cannot be read";
    return nullptr;
  }
  std::unique_ptr<Map> map;
  try {
    ChunkReader reader(file, static_cast<size_t>(st.st_size));
    std::vector<FieldDef> fields;
    map = RunPass(ChunkIterator(&reader), ChunkIterator(), nullptr, &fields);
    if (map == nullptr) {
      reader.Rewind();
      map = RunPass(ChunkIterator(&reader), ChunkIterator(), &fields, &fields);
    }
  } catch (const std::exception& e) {
    *error = path + ": " + e.what();
  }
  std::fclose(file);
  return map;
}

std::unique_ptr<Map> LoadDefaultMap(std::string* error) {
  return LoadMap(DefaultMapText(), "default.json", error);
}

}  // namespace qxwemu
