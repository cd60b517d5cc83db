// Checked conversions and arithmetic of stated widths, Int, and the millisecond clock.
#include <chrono>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <thread>

#include "support/clock.h"
#include "support/convert.h"
#include "test_support.h"

namespace {

using namespace veltara;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

// An expected integer, or nullopt for error 6.
struct RoundCase {
    double in;
    std::optional<int64_t> out;
};

TEST(Convert, ToByteRoundsHalfToEvenWithin0To255) {
    const RoundCase cases[] = {
        {0.5, 0},
        {1.5, 2},
        {2.5, 2},
        {254.5, 254},
        {254.6, 255},
        {255.0, 255},
        {255.49, 255},
        {255.5, std::nullopt},
        {256.0, std::nullopt},
        {-0.5, 0},
        {-0.51, std::nullopt},
        {-1.0, std::nullopt},
        {kNaN, std::nullopt},
        {kInf, std::nullopt},
        {-kInf, std::nullopt},
    };
    for (const RoundCase& c : cases) {
        if (c.out) {
            EXPECT_EQ(ToByte(c.in), *c.out) << c.in;
        } else {
            EXPECT_VT_ERROR(ToByte(c.in), 6);
        }
    }
}

TEST(Convert, ToInt16RoundsHalfToEvenWithin16Bits) {
    const RoundCase cases[] = {
        {-0.5, 0},
        {-1.5, -2},
        {32766.5, 32766},
        {32767.4, 32767},
        {32767.5, std::nullopt},  // rounds to 32768
        {-32768.5, -32768},       // the even neighbour is in range
        {-32769.5, std::nullopt},
        {-32767.5, -32768},
        {kNaN, std::nullopt},
        {kInf, std::nullopt},
        {-kInf, std::nullopt},
    };
    for (const RoundCase& c : cases) {
        if (c.out) {
            EXPECT_EQ(ToInt16(c.in), *c.out) << c.in;
        } else {
            EXPECT_VT_ERROR(ToInt16(c.in), 6);
        }
    }
}

TEST(Convert, ToInt32RoundsHalfToEvenWithin32Bits) {
    const RoundCase cases[] = {
        {2.5, 2},
        {3.5, 4},
        {-2.5, -2},
        {2147483646.5, 2147483646},
        {2147483647.0, 2147483647},
        {2147483647.5, std::nullopt},    // rounds to 2^31
        {-2147483648.5, -2147483648LL},  // the even neighbour -2^31 is in range
        {-2147483649.5, std::nullopt},
        {1e300, std::nullopt},
        {kNaN, std::nullopt},
        {kInf, std::nullopt},
        {-kInf, std::nullopt},
    };
    for (const RoundCase& c : cases) {
        if (c.out) {
            EXPECT_EQ(ToInt32(c.in), *c.out) << c.in;
        } else {
            EXPECT_VT_ERROR(ToInt32(c.in), 6);
        }
    }
}

TEST(Convert, IntRoundsTowardsMinusInfinity) {
    const struct {
        double in, out;
    } cases[] = {{-0.5, -1}, {0.5, 0}, {-1.0, -1}, {2.99, 2}, {-2.01, -3}};
    for (const auto& c : cases) EXPECT_EQ(Int(c.in), c.out) << c.in;
}

// Checked integer arithmetic: the 64-bit result of a, b is the reference; outside the width
// the operation raises 6.
TEST(Convert, SixteenBitArithmeticOverflowRaises6) {
    constexpr int16_t kMax = 32767;
    constexpr int16_t kMin = -32768;
    EXPECT_EQ(Add16(32000, 767), kMax);
    EXPECT_VT_ERROR(Add16(kMax, 1), 6);
    EXPECT_EQ(Sub16(-32000, 768), kMin);
    EXPECT_VT_ERROR(Sub16(kMin, 1), 6);
    EXPECT_EQ(Mul16(-128, 256), kMin);
    EXPECT_VT_ERROR(Mul16(128, 256), 6);
    EXPECT_EQ(Neg16(kMax), -32767);
    EXPECT_VT_ERROR(Neg16(kMin), 6);
    EXPECT_EQ(Abs16(-32767), kMax);
    EXPECT_VT_ERROR(Abs16(kMin), 6);
}

TEST(Convert, ThirtyTwoBitArithmeticOverflowRaises6) {
    constexpr int32_t kMax = 2147483647;
    constexpr int32_t kMin = -2147483647 - 1;
    EXPECT_EQ(Add32(2147483600, 47), kMax);
    EXPECT_VT_ERROR(Add32(kMax, 1), 6);
    EXPECT_EQ(Sub32(-2147483600, 48), kMin);
    EXPECT_VT_ERROR(Sub32(kMin, 1), 6);
    EXPECT_VT_ERROR(Sub32(0, kMin), 6);
    EXPECT_EQ(Mul32(-65536, 32768), kMin);
    EXPECT_VT_ERROR(Mul32(65536, 32768), 6);
    EXPECT_EQ(Neg32(kMax), -2147483647);
    EXPECT_VT_ERROR(Neg32(kMin), 6);
    EXPECT_EQ(Abs32(-2147483647), kMax);
    EXPECT_VT_ERROR(Abs32(kMin), 6);
}

TEST(Convert, FloatingFaultsBecomeEngineErrors) {
    EXPECT_VT_ERROR(CheckFinite(kNaN), 5);
    EXPECT_VT_ERROR(CheckFinite(-kInf), 6);
    EXPECT_VT_ERROR(Divide(1.0, 0.0), 11);
    EXPECT_VT_ERROR(Divide(1e300, 1e-300), 6);
    EXPECT_VT_ERROR(CheckedSqrt(-1.0), 5);
    EXPECT_EQ(Divide(1.0, 4.0), 0.25);
}

TEST(Clock, ElapsedMsIsChecked32BitDifference) {
    EXPECT_EQ(ElapsedMs(100, 40), 60);
    EXPECT_EQ(ElapsedMs(-10, -2147483647 - 1), 2147483638);
    EXPECT_VT_ERROR(ElapsedMs(-2147483647 - 1, 1), 6);
    EXPECT_VT_ERROR(ElapsedMs(2147483647, -1), 6);
}

// The system clock as std::chrono reads it: milliseconds of CLOCK_MONOTONIC, wrapped to 32 bits.
int32_t SteadyMs() {
    const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(
                        std::chrono::steady_clock::now().time_since_epoch())
                        .count();
    return static_cast<int32_t>(static_cast<uint32_t>(ms));
}

// Whether a reading lies within a second of the system clock (wrapping difference).
bool NearSystemClock(int32_t reading) {
    const int32_t diff =
        static_cast<int32_t>(static_cast<uint32_t>(reading) - static_cast<uint32_t>(SteadyMs()));
    return diff > -1000 && diff < 1000;
}

TEST(Clock, SetClockIsPerThreadAndEmptyRestoresSystemClock) {
    constexpr int32_t kFixed = -123456789;
    SetClock([] { return kFixed; });
    EXPECT_EQ(TimeGetTime(), kFixed);

    int32_t otherReading = 0;
    int32_t otherFixed = 0;
    std::thread other([&] {
        otherReading = TimeGetTime();
        SetClock([] { return 5; });
        otherFixed = TimeGetTime();
    });
    other.join();
    EXPECT_TRUE(NearSystemClock(otherReading)) << otherReading;
    EXPECT_EQ(otherFixed, 5);
    EXPECT_EQ(TimeGetTime(), kFixed);  // untouched by the other thread's clock

    SetClock({});
    EXPECT_TRUE(NearSystemClock(TimeGetTime()));
}

}  // namespace
