// A client's engine on its own thread.
#include "engine_worker.h"

namespace vtserve {

namespace {
int32_t ReadFixedClock(void* ctx) { return *static_cast<const int32_t*>(ctx); }
}  // namespace

EngineWorker::EngineWorker(int32_t fixedClockMs) : mFixedClockMs(fixedClockMs) {
    mThread = std::thread([this] { Loop(); });
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
    std::exception_ptr failure;
    {
        std::lock_guard lock(mMutex);
        mQueue.emplace_back([&] {
            try {
                job(mEngine);
            } catch (...) {
                failure = std::current_exception();
            }
            std::lock_guard doneLock(doneMutex);
            done = true;
            doneWake.notify_one();
        });
    }
    mWake.notify_all();
    {
        std::unique_lock doneLock(doneMutex);
        doneWake.wait(doneLock, [&] { return done; });
    }
    if (failure) std::rethrow_exception(failure);
}

void EngineWorker::Loop() {
    // The clock is per thread: fixing it here fixes the seeds of this client's adds.
    if (mFixedClockMs > 0) vt_set_clock(ReadFixedClock, &mFixedClockMs);
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

}  // namespace vtserve
