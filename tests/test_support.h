// Shared helpers of the test suite: error matchers and a fixed clock.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "support/clock.h"
#include "support/error.h"

/// Expects `statement` to raise engine error `expected_number` with its message.
#define EXPECT_VT_ERROR(statement, expected_number)                                         \
    do {                                                                                    \
        try {                                                                               \
            statement;                                                                      \
            ADD_FAILURE() << "expected error " << (expected_number) << " from " #statement; \
        } catch (const ::veltara::Error& vt_error_) {                                       \
            EXPECT_EQ(vt_error_.number(), (expected_number)) << #statement;                 \
            EXPECT_STREQ(vt_error_.what(), ::veltara::ErrorText(expected_number));          \
        }                                                                                   \
    } while (0)

namespace vt_test {

/// Fixes the calling thread's clock at `ms` for the scope (readings above 32768 ms give a
/// non-zero generator seed); `Advance` moves it on.
class FixedClock {
  public:
    explicit FixedClock(int32_t ms) : mNow(ms) {
        veltara::SetClock([this] { return mNow; });
    }
    ~FixedClock() { veltara::SetClock({}); }
    void Set(int32_t ms) { mNow = ms; }
    void Advance(int32_t ms) { mNow += ms; }

  private:
    int32_t mNow;
};

}  // namespace vt_test
