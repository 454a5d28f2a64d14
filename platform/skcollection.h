// The platform's object-collection service.
//
// An expression is one clause ("FIELD" OP "VALUE"): OP "=" compares the
// field's value as text, OP "~" matches a POSIX extended regular expression
// anywhere in that text. Integers read as decimal, booleans as TRUE or FALSE,
// enumerations as their constant's name.
#ifndef SKIFF_PLATFORM_SKCOLLECTION_H_
#define SKIFF_PLATFORM_SKCOLLECTION_H_

#include "platform/qxwrecords.h"

#ifdef __cplusplus
extern "C" {
#endif

// Opens the service; a result below 1 is a failure.
int skCollectionOpen(void);
// The objects that satisfy the expression, in creation order, released with
// QXwDbFreeObjectIdList; null when none does or the expression is not valid.
QXwObjectIdList* skCollectionEvaluate(const char* expression);
// Closes the service.
void skCollectionDone(void);

#ifdef __cplusplus
}
#endif

#endif  // SKIFF_PLATFORM_SKCOLLECTION_H_
