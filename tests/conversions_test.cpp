// Checked conversions and arithmetic of stated widths, Int, and the millisecond clock.
#include <chrono>
#include <cmath>
#include <cstdint>
#include <limits>
#include <thread>

#include "support/clock.h"
#include "support/convert.h"
#include "test_support.h"

namespace {

using namespace veltara;

TEST(Convert, EdgeCasesAndErrors) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const int32_t min32 = std::numeric_limits<int32_t>::min(), max32 = 2147483647;
    // Rounding is to nearest with ties to even; the bounds are those of the width.
    vt_test::CheckEdges({
        VT_GIVES(2, ToByte(2.5)),
        VT_GIVES(0, ToByte(-0.5)),
        VT_RAISES(6, ToByte(-0.51)),
        VT_GIVES(255, ToByte(255.49)),
        VT_RAISES(6, ToByte(255.5)),
        VT_RAISES(6, ToByte(nan)),
        VT_GIVES(32767, ToInt16(32767.4)),
        VT_RAISES(6, ToInt16(32767.5)),
        VT_GIVES(-32768, ToInt16(-32768.5)),
        VT_RAISES(6, ToInt16(-32769.0)),
        VT_RAISES(6, ToInt32(2147483647.5)),
        VT_GIVES(min32, ToInt32(-2147483648.5)),
        VT_GIVES(-1, Int(-0.5)),
        VT_GIVES(255, NarrowByte(255)),
        VT_RAISES(6, NarrowByte(256)),
        VT_GIVES(-32768, Narrow16(-32768)),
        VT_RAISES(6, Narrow16(-32769)),
        VT_RAISES(6, Add16(32767, 1)),
        VT_GIVES(-32768, Mul16(-128, 256)),
        VT_RAISES(6, Mul16(128, 256)),
        VT_RAISES(6, Neg16(-32768)),
        VT_RAISES(6, Abs16(-32768)),
        VT_RAISES(6, Add32(max32, 1)),
        VT_RAISES(6, Sub32(0, min32)),
        VT_GIVES(min32, Mul32(-65536, 32768)),
        VT_RAISES(6, Mul32(65536, 32768)),
        VT_RAISES(6, Neg32(min32)),
        VT_RAISES(6, Abs32(min32)),
        VT_RAISES(5, CheckFinite(nan)),
        VT_GIVES(0.25, Divide(1, 4)),
        VT_RAISES(11, Divide(1, 0)),
        VT_RAISES(6, Divide(1e300, 1e-300)),
        VT_RAISES(5, CheckedSqrt(-1e-300)),
        VT_GIVES(2147483638, ElapsedMs(-10, min32)),
        VT_RAISES(6, ElapsedMs(min32, 1)),
        VT_RAISES(6, ElapsedMs(max32, -1)),
    });
}

TEST(Clock, FixedClockIsPerThreadOverTheSteadyMillisecondClock) {
    int32_t other = 0;
    vt_test::FixedClock clock(-123456789);
    std::thread([&] { other = TimeGetTime(); }).join();
    EXPECT_EQ(TimeGetTime(), -123456789);
    const int64_t ms = std::chrono::duration_cast<std::chrono::milliseconds>(
                           std::chrono::steady_clock::now().time_since_epoch())
                           .count();
    EXPECT_LT(std::abs(static_cast<int32_t>(static_cast<uint32_t>(other - ms))), 1000);
}

}  // namespace
