// The engine's generator: the minimal-standard Lehmer sequence and its seeding.
#include <cstdint>
#include <random>
#include <thread>

#include "support/modRand.h"
#include "test_support.h"

namespace {

using namespace veltara;

// std::minstd_rand is the same generator (multiplier 48271, modulus 2^31 - 1), written
// independently with 64-bit products instead of Schrage's split.
TEST(modRand, AgreesWithMinstdRand) {
    for (const int32_t seed : {1, 42, 44488, 123456789, 2147483646, -987654321}) {
        modRand::Randomize(seed);
        std::minstd_rand reference(static_cast<uint32_t>(seed < 0 ? -int64_t{seed} : seed));
        int mismatches = 0;
        for (int i = 0; i < 200000; ++i)
            mismatches += modRand::NextRandom() != int32_t(reference());
        EXPECT_EQ(mismatches, 0) << "seed " << seed;
    }
}

TEST(modRand, EdgeCasesAndErrors) {
    auto seeded = [](int32_t seed) { return modRand::Randomize(seed), modRand::NextRandom(); };
    int32_t otherThread = 0;
    vt_test::CheckEdges({
        VT_GIVES(48271, seeded(1)),
        VT_GIVES(182605794, modRand::NextRandom()),  // 48271² - 2147483647
        VT_GIVES(48271, seeded(-1)),                 // the seed's absolute value
        VT_GIVES(2147480248, seeded(44488)),         // 48271 x 0 - 3399 x 1 + 2147483647
        VT_GIVES(2147483647, seeded(0)),             // a zero state sticks at the modulus
        VT_GIVES(2147483647, modRand::NextRandom()),
        VT_GIVES(241355, seeded(5)),  // 5 x 48271
        VT_RAISES(6, modRand::Randomize(-2147483647 - 1)),
        VT_GIVES(int64_t{241355} * 48271 % 2147483647, modRand::NextRandom()),  // state kept
        // Each thread has its own state, 0 until seeded.
        VT_GIVES(2147483647,
                 (std::thread([&] { otherThread = modRand::NextRandom(); }).join(), otherThread)),
        VT_GIVES(int64_t{241355} * 48271 % 2147483647 * 48271 % 2147483647, modRand::NextRandom()),
    });
}

}  // namespace
