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
TEST(modRand, AgreesWithMinstdRandOverAMillionSteps) {
    const int32_t seeds[] = {1, 42, 44488, 123456789, 2147483646, -987654321};
    for (const int32_t seed : seeds) {
        modRand::Randomize(seed);
        std::minstd_rand reference(static_cast<uint32_t>(seed < 0 ? -int64_t{seed} : seed));
        int32_t mismatches = 0;
        for (int i = 0; i < 1000000; ++i) {
            const int32_t got = modRand::NextRandom();
            if (got != static_cast<int32_t>(reference())) ++mismatches;
        }
        EXPECT_EQ(mismatches, 0) << "seed " << seed;
    }
}

TEST(modRand, KnownStepsFromHandCalculation) {
    struct Case {
        int32_t seed;
        int32_t first;
        int32_t second;
    };
    const Case cases[] = {
        // 48271, then 48271^2 = 2330089441 - 2147483647 = 182605794.
        {1, 48271, 182605794},
        // 44488 = 1 * 44488 + 0: 48271 * 0 - 3399 * 1 = -3399, plus the modulus 2147483647.
        {44488, 2147480248, 0},
        // A negative seed is taken by absolute value: the same as seed 1.
        {-1, 48271, 182605794},
    };
    for (const Case& c : cases) {
        modRand::Randomize(c.seed);
        EXPECT_EQ(modRand::NextRandom(), c.first) << "seed " << c.seed;
        if (c.second != 0) {
            EXPECT_EQ(modRand::NextRandom(), c.second) << "seed " << c.seed;
        }
    }
}

TEST(modRand, ZeroSeedSticksAtTheModulus) {
    modRand::Randomize(0);
    for (int i = 0; i < 5; ++i) EXPECT_EQ(modRand::NextRandom(), 2147483647);
}

TEST(modRand, RandomizeOfMostNegativeRaises6AndKeepsState) {
    modRand::Randomize(777);
    EXPECT_VT_ERROR(modRand::Randomize(-2147483647 - 1), 6);
    EXPECT_EQ(modRand::State(), 777);
}

TEST(modRand, StateIsPerThread) {
    modRand::Randomize(1);
    int32_t otherInitial = -1;
    int32_t otherFirst = -1;
    std::thread other([&] {
        otherInitial = modRand::State();
        modRand::Randomize(5);
        otherFirst = modRand::NextRandom();
    });
    other.join();
    EXPECT_EQ(otherInitial, 0);               // never seeded on that thread
    EXPECT_EQ(otherFirst, 5 * 48271);         // 241355, below the modulus
    EXPECT_EQ(modRand::NextRandom(), 48271);  // this thread still steps from 1
}

}  // namespace
