// The platform's common library: string hash, copies, tokenizer and the
// platform's versions of C library functions.
#ifndef SKIFF_PLATFORM_QXCOMMON_H_
#define SKIFF_PLATFORM_QXCOMMON_H_

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

struct hostent;

// A well-spread hash of the text.
unsigned int _QXhash(const char* text);
// A copy of the text allocated with malloc; null for a null text.
char* _QXstrdup(const char* text);
// The next field of `text` (or, when `text` is null, of the text of the
// previous call on this thread), up to the next character of `separators`.
// Two adjacent separators hold an empty field; null when no field is left.
// `flags` is 0. The text is modified in place.
char* _QXstrtok(char* text, const char* separators, int flags);

size_t strlen_new(const char* s);
int strcmp_new(const char* a, const char* b);
int strncmp_new(const char* a, const char* b, size_t n);
char* strcpy_new(char* dest, const char* src);
char* strncpy_new(char* dest, const char* src, size_t n);
char* strdup_new(const char* s);
char* strchr_new(const char* s, int c);
struct hostent* gethostbyname_new(const char* name);

#ifdef __cplusplus
}
#endif

#endif  // SKIFF_PLATFORM_QXCOMMON_H_
