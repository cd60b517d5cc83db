// The samples' random generator: xoshiro256** seeded through splitmix64. Integer arithmetic
// only, so one seed gives the same numbers on every machine and in WebAssembly.
#pragma once

#include <cstdint>

namespace veltara {

/// A stream of random numbers for exact samples (the renderers' dot generator is modRand).
class SampleRandom {
  public:
    /// The stream of `seed`: the four words of state are four steps of splitmix64 from it,
    /// which are never all zero.
    explicit SampleRandom(uint64_t seed) noexcept;

    /// The next 64 random bits.
    uint64_t NextBits() noexcept {
        const uint64_t result = RotateLeft(mS[1] * 5, 7) * 9;
        const uint64_t t = mS[1] << 17;
        mS[2] ^= mS[0];
        mS[3] ^= mS[1];
        mS[1] ^= mS[2];
        mS[0] ^= mS[3];
        mS[2] ^= t;
        mS[3] = RotateLeft(mS[3], 45);
        return result;
    }

    /// A double in [0, 1): the top 53 bits of the next word, times 2^-53 (exact).
    double NextUnit() noexcept { return static_cast<double>(NextBits() >> 11) * 0x1.0p-53; }

  private:
    static uint64_t RotateLeft(uint64_t x, int k) noexcept { return (x << k) | (x >> (64 - k)); }
    uint64_t mS[4];
};

}  // namespace veltara
