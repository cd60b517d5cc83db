// One thread that owns the engine of `veltara serve` and runs every engine call in turn.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

#include "veltara.h"

namespace vtcli {

/// The engine lives on this worker's thread from creation to destruction. The engine is
/// single-threaded and its random generator and clock are per thread, so running every call
/// here (rather than on whichever server thread took the request) keeps dot clouds the same as
/// a one-thread host would get: the generator that Add seeds is the one that later refills use.
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

    /// Runs job(engine) on the worker thread and returns when it has finished. Calls from many
    /// threads are served one at a time, in arrival order. job must not throw.
    void Run(const std::function<void(vt_engine*)>& job);

  private:
    void Loop(int32_t fixedClockMs);

    std::mutex mMutex;
    std::condition_variable mWake;
    std::deque<std::function<void()>> mQueue;
    bool mStopping = false;
    bool mReady = false;
    int32_t mCreateError = 0;
    vt_engine* mEngine = nullptr;
    std::thread mThread;
};

}  // namespace vtcli
