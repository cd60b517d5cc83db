// The engine's own thread for `veltara serve`.
#include "engine_worker.h"

#include "cli_common.h"

namespace vtcli {

EngineWorker::EngineWorker(int32_t fixedClockMs) {
    mThread = std::thread([this, fixedClockMs] { Loop(fixedClockMs); });
    std::unique_lock lock(mMutex);
    mWake.wait(lock, [this] { return mReady; });
}

EngineWorker::~EngineWorker() {
    {
        std::lock_guard lock(mMutex);
        mStopping = true;
    }
    mWake.notify_all();
    mThread.join();
}

void EngineWorker::Run(const std::function<void(vt_engine*)>& job) {
    std::mutex doneMutex;
    std::condition_variable doneWake;
    bool done = false;
    {
        std::lock_guard lock(mMutex);
        mQueue.emplace_back([&] {
            job(mEngine);
            std::lock_guard doneLock(doneMutex);
            done = true;
            doneWake.notify_one();
        });
    }
    mWake.notify_all();
    std::unique_lock doneLock(doneMutex);
    doneWake.wait(doneLock, [&] { return done; });
}

void EngineWorker::Loop(int32_t fixedClockMs) {
    // The clock is per thread: fixing it here fixes the seeds of every Add.
    if (fixedClockMs > 0) FixClock(fixedClockMs);
    {
        std::lock_guard lock(mMutex);
        mCreateError = vt_create(&mEngine);
        mReady = true;
    }
    mWake.notify_all();

    for (;;) {
        std::function<void()> job;
        {
            std::unique_lock lock(mMutex);
            mWake.wait(lock, [this] { return mStopping || !mQueue.empty(); });
            if (mQueue.empty()) break;  // stopping, and nothing left to serve
            job = std::move(mQueue.front());
            mQueue.pop_front();
        }
        job();
    }
    vt_destroy(mEngine);
    mEngine = nullptr;
}

}  // namespace vtcli
