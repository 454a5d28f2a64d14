// What a fuzz target asserts: a condition that fails aborts the target, and
// libFuzzer keeps the input that made it fail.
#ifndef SKIFF_TESTS_FUZZ_CHECK_H_
#define SKIFF_TESTS_FUZZ_CHECK_H_

#include <cstdlib>

inline void Check(bool holds) {
  if (!holds) std::abort();
}

#endif  // SKIFF_TESTS_FUZZ_CHECK_H_
