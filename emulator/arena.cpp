#include "emulator/arena.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

namespace qxwemu {

namespace {
constexpr uint64_t kMagic = 0x51587741524e4131ULL;  // marks a chain's first chunk
std::atomic<long> g_outstanding{0};                 // records handed out, not released
constexpr size_t kMaxChunk = 1 << 20;
}  // namespace

struct alignas(16) Arena::Chunk {
  Chunk* next;
  uint64_t magic;
  size_t used;
  size_t capacity;
  const char* type;  // the first chunk's: the type of the top record
  // payload follows, aligned to 16 bytes
  char* payload() { return reinterpret_cast<char*>(this + 1); }
};

Arena::Arena(size_t expectedBytes) : nextChunkBytes_(std::max<size_t>(expectedBytes, 64)) {}

Arena::~Arena() {
  if (finished_) return;
  for (Chunk* c = first_; c != nullptr;) {
    Chunk* next = c->next;
    std::free(c);
    c = next;
  }
}

void Arena::AddChunk(size_t minBytes) {
  static_assert(sizeof(Chunk) % 16 == 0, "payload must stay 16-byte aligned");
  size_t capacity = std::max(minBytes, nextChunkBytes_);
  auto* chunk = static_cast<Chunk*>(std::malloc(sizeof(Chunk) + capacity));
  if (chunk == nullptr) throw std::bad_alloc();
  chunk->next = nullptr;
  chunk->magic = first_ == nullptr ? kMagic : 0;
  chunk->used = 0;
  chunk->capacity = capacity;
  chunk->type = nullptr;
  if (current_ != nullptr) current_->next = chunk;
  if (first_ == nullptr) first_ = chunk;
  current_ = chunk;
  nextChunkBytes_ = std::min(capacity * 2, kMaxChunk);
}

void* Arena::Alloc(size_t bytes, size_t align) {
  if (bytes == 0) bytes = 1;
  if (current_ != nullptr) {
    size_t start = (current_->used + align - 1) & ~(align - 1);
    if (start + bytes <= current_->capacity) {
      current_->used = start + bytes;
      void* p = current_->payload() + start;
      std::memset(p, 0, bytes);
      return p;
    }
  }
  AddChunk(bytes + align);
  size_t start = 0;
  current_->used = start + bytes;
  void* p = current_->payload() + start;
  std::memset(p, 0, bytes);
  return p;
}

char* Arena::Text(std::string_view text) {
  char* p = New<char>(text.size() + 1);
  if (!text.empty()) std::memcpy(p, text.data(), text.size());
  return p;
}

void Arena::ReleaseOwnership(const void* top, const char* type) {
  if (first_ == nullptr || top != first_->payload()) {
    std::fprintf(stderr, "qxwplatform: arena finished with a record that is not its first\n");
    std::abort();
  }
  first_->type = type;
  finished_ = true;
  g_outstanding.fetch_add(1, std::memory_order_relaxed);
}

long Arena::Outstanding() { return g_outstanding.load(std::memory_order_relaxed); }

void Arena::ReleaseTagged(const void* top, const char* type) {
  if (top == nullptr) return;
  auto* chunk = reinterpret_cast<Chunk*>(const_cast<char*>(static_cast<const char*>(top))) - 1;
  if (chunk->magic != kMagic) {
    std::fprintf(stderr,
                 "qxwplatform: a record was released with the wrong free function "
                 "or twice (%p)\n",
                 top);
    std::abort();
  }
  if (std::strcmp(chunk->type, type) != 0) {
    std::fprintf(stderr,
                 "qxwplatform: a %s was released as a %s, with the wrong free function (%p)\n",
                 chunk->type, type, top);
    std::abort();
  }
  chunk->magic = 0;
  g_outstanding.fetch_sub(1, std::memory_order_relaxed);
  for (Chunk* c = chunk; c != nullptr;) {
    Chunk* next = c->next;
    std::free(c);
    c = next;
  }
}

}  // namespace qxwemu
