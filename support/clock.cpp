// The millisecond clock and its per-thread replacement.
#include "support/clock.h"

#include <ctime>
#include <utility>

#include "support/convert.h"

namespace veltara {

namespace {
thread_local std::function<int32_t()> tClock;
}

int32_t TimeGetTime() {
    if (tClock) return tClock();
    timespec ts{};
    clock_gettime(CLOCK_MONOTONIC, &ts);
    const uint64_t ms =
        static_cast<uint64_t>(ts.tv_sec) * 1000u + static_cast<uint64_t>(ts.tv_nsec) / 1000000u;
    // The platform clock is an unsigned 32-bit count read as signed: it wraps.
    return static_cast<int32_t>(static_cast<uint32_t>(ms));
}

void SetClock(std::function<int32_t()> source) { tClock = std::move(source); }

int32_t ElapsedMs(int32_t later, int32_t earlier) { return Sub32(later, earlier); }

}  // namespace veltara
