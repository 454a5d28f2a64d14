// The platform's common library: string hash, copies, tokenizer and the
// platform's versions of C library functions.
#include "platform/qxcommon.h"

#include <netdb.h>

#include <cstdlib>
#include <cstring>

extern "C" {

unsigned int _QXhash(const char* text) {
  // FNV-1a, then a final mix so that short keys that differ in one place
  // spread over every bit.
  uint32_t h = 2166136261u;
  for (const unsigned char* p = reinterpret_cast<const unsigned char*>(text); p && *p; ++p) {
    h ^= *p;
    h *= 16777619u;
  }
  h ^= h >> 16;
  h *= 0x85ebca6bu;
  h ^= h >> 13;
  h *= 0xc2b2ae35u;
  h ^= h >> 16;
  return h;
}

char* _QXstrdup(const char* text) { return text == nullptr ? nullptr : strdup(text); }

char* _QXstrtok(char* text, const char* separators, int) {
  thread_local char* next = nullptr;
  if (text != nullptr) next = text;
  if (next == nullptr) return nullptr;
  char* field = next;
  char* end = field + std::strcspn(field, separators ? separators : "");
  if (*end != '\0') {
    *end = '\0';
    next = end + 1;
  } else {
    next = nullptr;
  }
  return field;
}

size_t strlen_new(const char* s) { return std::strlen(s); }
int strcmp_new(const char* a, const char* b) { return std::strcmp(a, b); }
int strncmp_new(const char* a, const char* b, size_t n) { return std::strncmp(a, b, n); }
char* strcpy_new(char* dest, const char* src) { return std::strcpy(dest, src); }
char* strncpy_new(char* dest, const char* src, size_t n) { return std::strncpy(dest, src, n); }
char* strdup_new(const char* s) { return strdup(s); }
char* strchr_new(const char* s, int c) { return const_cast<char*>(std::strchr(s, c)); }
struct hostent* gethostbyname_new(const char* name) {
  return gethostbyname(name);
}

}  // extern "C"
