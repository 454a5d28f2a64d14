// The random numbers of qxw-mapgen: the same sequence for the same seed on
// every machine, so a map can be made again from its options.
#ifndef SKIFF_EMULATOR_TOOLS_MAPGEN_RANDOM_H_
#define SKIFF_EMULATOR_TOOLS_MAPGEN_RANDOM_H_

#include <cstdint>

namespace mapgen {

// splitmix64: small, fast and the same everywhere.
class Random {
 public:
  explicit Random(uint64_t seed) : state_(seed) {}
  // The next number of the sequence.
  uint64_t Next() {
    uint64_t z = (state_ += 0x9e3779b97f4a7c15ULL);
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
    return z ^ (z >> 31);
  }
  // A number from 0 to `n` - 1; `n` must be positive.
  int Below(int n) { return static_cast<int>(Next() % static_cast<uint64_t>(n)); }

 private:
  uint64_t state_;
};

}  // namespace mapgen

#endif  // SKIFF_EMULATOR_TOOLS_MAPGEN_RANDOM_H_
