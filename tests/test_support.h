// Shared helpers of the test suite: error matchers, tables of edge cases and a fixed clock.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <initializer_list>
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

/// Rows of an edge-case table (vt_test::CheckEdges): the expression gives `value`, or it
/// raises engine error `number`. The expression comes last so that it may hold braces.
#define VT_GIVES(value, ...)                                                                  \
    vt_test::Edge {                                                                           \
#__VA_ARGS__,                                                                         \
            [&] { return static_cast<double>(__VA_ARGS__); }, static_cast < double>(value), 0 \
    }
#define VT_RAISES(number, ...)                                                \
    vt_test::Edge {                                                           \
#__VA_ARGS__, [&] { return (void)(__VA_ARGS__), 0.0; }, 0.0, (number) \
    }

namespace vt_test {

struct Edge {
    const char* what;
    std::function<double()> call;
    double value;
    int32_t error;
};

/// Runs every row of an edge-case table, each labelled with its expression.
inline void CheckEdges(std::initializer_list<Edge> rows) {
    for (const Edge& row : rows) {
        SCOPED_TRACE(row.what);
        if (row.error != 0) {
            EXPECT_VT_ERROR(row.call(), row.error);
        } else {
            double got = 0;
            EXPECT_NO_THROW(got = row.call());
            EXPECT_EQ(got, row.value);
        }
    }
}

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
