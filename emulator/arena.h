// Arena: builds one platform record or list, with everything it points to,
// in a chain of malloc'd chunks that one call releases.
//
// The first allocation is the record handed to the caller ("the top"); the
// matching free function passes the top back to Arena::Release, which frees
// the whole chain. So a list of ten thousand symbols costs a handful of
// mallocs, and a record freed with anything but its own free function is
// caught (by the magic check here, or by AddressSanitizer).
#ifndef SKIFF_EMULATOR_ARENA_H_
#define SKIFF_EMULATOR_ARENA_H_

#include <cstddef>
#include <cstring>
#include <string_view>

namespace qxwemu {

class Arena {
 public:
  // `expectedBytes` sizes the first chunk; more chunks are added as needed.
  explicit Arena(size_t expectedBytes = 256);
  ~Arena();  // frees everything unless Finish was called

  // Zeroed storage for `n` objects of a trivially copyable type T.
  template <class T>
  T* New(size_t n = 1) {
    return static_cast<T*>(Alloc(sizeof(T) * n, alignof(T)));
  }
  // A NUL-terminated copy of `text`.
  char* Text(std::string_view text);

  // Hands the chain to the caller: `top` must be the first allocation.
  template <class T>
  T* Finish(T* top) {
    ReleaseOwnership(top);
    return top;
  }

  // Frees the chain whose top record is `top` (null is ignored).
  static void Release(const void* top);
  // How many records have been handed to callers and not released yet.
  static long Outstanding();

  Arena(const Arena&) = delete;
  Arena& operator=(const Arena&) = delete;

 private:
  struct Chunk;
  void* Alloc(size_t bytes, size_t align);
  void AddChunk(size_t minBytes);
  void ReleaseOwnership(const void* top);

  Chunk* first_ = nullptr;
  Chunk* current_ = nullptr;
  size_t nextChunkBytes_;
  bool finished_ = false;
};

}  // namespace qxwemu

#endif  // SKIFF_EMULATOR_ARENA_H_
