// Tokens, collections and their release.
#include "clients.h"

#include <sys/random.h>

#include <algorithm>
#include <cerrno>
#include <vector>

namespace vtserve {

namespace {

using Clock = std::chrono::steady_clock;

/// 128 bits from the kernel's generator as 32 hex digits; empty if it has none to give.
std::string NewToken() {
    unsigned char bytes[16];
    size_t got = 0;
    while (got < sizeof bytes) {
        const ssize_t n = getrandom(bytes + got, sizeof bytes - got, 0);
        if (n <= 0) {
            if (n < 0 && errno == EINTR) continue;
            return {};
        }
        got += static_cast<size_t>(n);
    }
    static const char kHex[] = "0123456789abcdef";
    std::string token;
    for (unsigned char b : bytes) {
        token += kHex[b >> 4];
        token += kHex[b & 15];
    }
    return token;
}

/// The value of the client cookie among the request's cookies; empty when there is none.
std::string TokenOf(const httplib::Request& req) {
    const size_t headers = req.get_header_value_count("Cookie");
    for (size_t h = 0; h < headers; ++h) {
        const std::string line = req.get_header_value("Cookie", h);
        size_t at = 0;
        while (at < line.size()) {
            size_t end = line.find(';', at);
            if (end == std::string::npos) end = line.size();
            std::string pair = line.substr(at, end - at);
            pair.erase(0, pair.find_first_not_of(' '));
            const std::string name = std::string(kClientCookie) + "=";
            if (pair.compare(0, name.size(), name) == 0) return pair.substr(name.size());
            at = end + 1;
        }
    }
    return {};
}

}  // namespace

Collection::~Collection() { mOwner.ReleaseOrbitals(live.size()); }

int32_t Collection::Run(const std::function<void(vt_engine*)>& job) {
    if (!mWorker) {
        auto worker = std::make_unique<EngineWorker>(mOwner.limits().fixedClockMs);
        if (const int32_t rc = worker->createError()) return rc;
        mWorker = std::move(worker);
    }
    mWorker->Run(job);
    return 0;
}

Clients::Clients(const ClientLimits& limits) : mLimits(limits) {
    mReaper = std::thread([this] { ReleaseIdle(); });
}

Clients::~Clients() {
    {
        std::lock_guard lock(mMutex);
        mStopping = true;
    }
    mWake.notify_all();
    mReaper.join();
    mByToken.clear();
}

std::shared_ptr<Collection> Clients::Find(const httplib::Request& req, httplib::Response& res) {
    const std::string token = TokenOf(req);
    std::shared_ptr<Collection> released;  // freed after the lock, since it may join a thread
    std::lock_guard lock(mMutex);
    if (const auto it = mByToken.find(token); !token.empty() && it != mByToken.end()) {
        it->second->mLastUse = Clock::now();
        return it->second;
    }
    if (mByToken.size() >= mLimits.maxClients) {
        // Make room by the client unheard of longest among those that hold no orbital.
        auto oldest = mByToken.end();
        for (auto it = mByToken.begin(); it != mByToken.end(); ++it) {
            if (it->second.use_count() == 1 && it->second->live.empty() &&
                (oldest == mByToken.end() || it->second->mLastUse < oldest->second->mLastUse)) {
                oldest = it;
            }
        }
        if (oldest == mByToken.end()) return nullptr;
        released = std::move(oldest->second);
        mByToken.erase(oldest);
    }
    const std::string fresh = NewToken();
    if (fresh.empty()) return nullptr;
    auto collection = std::make_shared<Collection>(*this);
    collection->mLastUse = Clock::now();
    mByToken.emplace(fresh, collection);
    res.set_header("Set-Cookie", std::string(kClientCookie) + "=" + fresh +
                                     "; Path=/; HttpOnly; SameSite=Strict");
    return collection;
}

void Clients::Touch(Collection& collection) {
    std::lock_guard lock(mMutex);
    collection.mLastUse = Clock::now();
}

bool Clients::ReserveOrbital() {
    if (mTotal.fetch_add(1) >= mLimits.maxTotalOrbitals) {
        mTotal.fetch_sub(1);
        return false;
    }
    return true;
}

void Clients::ReleaseIdle() {
    // A few looks per idle time, at most one a second.
    const auto tick = std::clamp<Clock::duration>(
        mLimits.idleTime / 4, std::chrono::milliseconds(50), std::chrono::seconds(1));
    std::unique_lock lock(mMutex);
    while (!mWake.wait_for(lock, tick, [this] { return mStopping; })) {
        std::vector<std::shared_ptr<Collection>> idle;
        const Clock::time_point now = Clock::now();
        for (auto it = mByToken.begin(); it != mByToken.end();) {
            // A collection that a request holds is in use, however old its last contact.
            if (it->second.use_count() == 1 && now - it->second->mLastUse >= mLimits.idleTime) {
                idle.push_back(std::move(it->second));
                it = mByToken.erase(it);
            } else {
                ++it;
            }
        }
        lock.unlock();
        idle.clear();  // ends their engines and threads
        lock.lock();
    }
}

}  // namespace vtserve
