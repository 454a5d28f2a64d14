// Arena: builds one platform record or list, with everything it points to,
// in a chain of malloc'd chunks that one call releases.
//
// The first allocation is the record handed to the caller ("the top"); the
// matching free function passes the top back to Arena::Release, which frees
// the whole chain. So a list of ten thousand symbols costs a handful of
// mallocs. Each chain is tagged with the type of its top record, and a record
// freed with anything but its own free function is caught: released twice or
// with free() (by the magic check here, or by AddressSanitizer), or with the
// free function of another type (by the tag).
#ifndef SKIFF_EMULATOR_ARENA_H_
#define SKIFF_EMULATOR_ARENA_H_

#include <cstddef>
#include <cstring>
#include <string_view>

#include "platform/qxwrecords.h"

namespace qxwemu {

// The name of a top record type, the tag of its chains. Only the types below
// can top a chain.
template <class T>
const char* RecordTypeName();
#define QXWEMU_RECORD_TYPE(T)              \
  template <>                              \
  inline const char* RecordTypeName<T>() { \
    return #T;                             \
  }
QXWEMU_RECORD_TYPE(QXwMapInfo)
QXWEMU_RECORD_TYPE(QXwSymbolList)
QXWEMU_RECORD_TYPE(QXwSubmapInfo)
QXWEMU_RECORD_TYPE(QXwSubmapList)
QXWEMU_RECORD_TYPE(QXwObjectInfo)
QXWEMU_RECORD_TYPE(QXwObjectList)
QXWEMU_RECORD_TYPE(QXwFieldBindList)
QXWEMU_RECORD_TYPE(QXwObjectFieldList)
QXWEMU_RECORD_TYPE(QXwObjectIdList)
QXWEMU_RECORD_TYPE(QXwFieldList)
QXWEMU_RECORD_TYPE(QXwFieldInfo)
QXWEMU_RECORD_TYPE(QXwEnumConstants)
#undef QXWEMU_RECORD_TYPE

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

  // Hands the chain to the caller, tagged with the type of `top`, which must
  // be the first allocation.
  template <class T>
  T* Finish(T* top) {
    ReleaseOwnership(top, RecordTypeName<T>());
    return top;
  }

  // Frees the chain whose top record is `top` (null is ignored). Stops the
  // process with a message when `top` is not the top of a live chain of
  // type T: released before, never made here, or of another type.
  template <class T>
  static void Release(const T* top) {
    ReleaseTagged(top, RecordTypeName<T>());
  }
  // How many records have been handed to callers and not released yet.
  static long Outstanding();

  Arena(const Arena&) = delete;
  Arena& operator=(const Arena&) = delete;

 private:
  struct Chunk;
  void* Alloc(size_t bytes, size_t align);
  void AddChunk(size_t minBytes);
  void ReleaseOwnership(const void* top, const char* type);
  static void ReleaseTagged(const void* top, const char* type);

  Chunk* first_ = nullptr;
  Chunk* current_ = nullptr;
  size_t nextChunkBytes_;
  bool finished_ = false;
};

}  // namespace qxwemu

#endif  // SKIFF_EMULATOR_ARENA_H_
