// One thread that owns one client's engine and runs every call on it in turn.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>

#include "veltara.h"

namespace vtserve {

/// The engine lives on this worker's thread from creation to destruction. The engine is
/// single-threaded and its random generator and clock are per thread, so running every call of
/// one client here (rather than on whichever server thread took the request) keeps its dot
/// clouds the same as a one-thread host would get: the generator that Add seeds is the one that
/// later refills use, whatever other clients do meanwhile.
class EngineWorker {
  public:
    /// Starts the thread and creates the engine on it; fixedClockMs > 0 fixes that thread's
    /// clock first. createError() tells whether the engine came up.
    explicit EngineWorker(int32_t fixedClockMs);
    /// Destroys the engine on its thread and joins it.
    ~EngineWorker();
    EngineWorker(const EngineWorker&) = delete;
    EngineWorker& operator=(const EngineWorker&) = delete;

    /// The error number of vt_create (0 when the engine exists).
    int32_t createError() const { return mCreateError; }

    /// Runs job(engine) on the worker thread and returns when it has finished; an exception of
    /// the job is thrown again here. Calls from many threads are served one at a time, in
    /// arrival order.
    void Run(const std::function<void(vt_engine*)>& job);

  private:
    void Loop();

    std::mutex mMutex;
    std::condition_variable mWake;
    std::deque<std::function<void()>> mQueue;
    bool mStopping = false;
    bool mReady = false;
    int32_t mCreateError = 0;
    int32_t mFixedClockMs = 0;
    vt_engine* mEngine = nullptr;
    std::thread mThread;
};

}  // namespace vtserve
