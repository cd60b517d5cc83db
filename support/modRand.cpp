// modRand: Lehmer generator with Schrage's decomposition; the state is per thread.
#include "support/modRand.h"

#include "support/convert.h"

namespace veltara::modRand {

namespace {
// mLo and mHi are scratch of one step, kept per thread beside the state.
thread_local int32_t mSeed = 0;
thread_local int32_t mLo = 0;
thread_local int32_t mHi = 0;

constexpr int32_t kQ = 44488;  // modulus / multiplier
constexpr int32_t kR = 3399;   // modulus mod multiplier
}  // namespace

void Randomize(const int32_t& Seed) { mSeed = Abs32(Seed); }

int32_t NextRandom() {
    mHi = mSeed / kQ;
    mLo = mSeed % kQ;
    // For states 0..2147483647 neither product nor difference leaves 32 bits.
    mSeed = 48271 * mLo - kR * mHi;
    if (mSeed <= 0) mSeed += 2147483647;
    return mSeed;
}

int32_t State() { return mSeed; }

}  // namespace veltara::modRand
