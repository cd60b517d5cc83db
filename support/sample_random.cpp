// Seeding the samples' random generator.
#include "support/sample_random.h"

namespace veltara {

namespace {

// One step of splitmix64: spreads a seed's bits so that nearby seeds give unrelated streams.
uint64_t SplitMix(uint64_t& x) noexcept {
    uint64_t z = (x += 0x9e3779b97f4a7c15ULL);
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
    return z ^ (z >> 31);
}

}  // namespace

SampleRandom::SampleRandom(uint64_t seed) noexcept {
    for (uint64_t& word : mS) word = SplitMix(seed);
}

}  // namespace veltara
