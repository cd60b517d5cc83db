// The millisecond clock: whole milliseconds since boot as a wrapping 32-bit signed value.
#pragma once

#include <cstdint>
#include <functional>

namespace veltara {

/// Milliseconds of the monotonic clock, wrapped to 32 bits (about 49.7 days a lap), or the
/// reading of the source installed on this thread by SetClock.
int32_t TimeGetTime();

/// Replaces the clock of the calling thread; an empty function restores the system clock.
/// Tests fix the clock so that seeds and timings are reproducible.
void SetClock(std::function<int32_t()> source);

/// later - earlier in 32-bit signed arithmetic; raises 6 when the difference overflows.
int32_t ElapsedMs(int32_t later, int32_t earlier);

}  // namespace veltara
