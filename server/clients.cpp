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

std::shared_ptr<Collection> Clients::Find(const httplib::Request& req, httplib::Response& res,
                                          ApiError& refusal) {
    const std::string token = TokenOf(req);
    std::shared_ptr<Collection> released;  // freed after the lock, since it may join a thread
    std::lock_guard lock(mMutex);
    const Clock::time_point now = Clock::now();
    if (const auto it = mByToken.find(token); !token.empty() && it != mByToken.end()) {
        Collection& c = *it->second;
        c.mPreviousUse = c.mLastUse;
        c.mLastUse = now;
        ++c.mRequests;
        return it->second;
    }
    // A released client hears why, once; its next request starts afresh.
    if (const auto it = mNotices.find(token); !token.empty() && it != mNotices.end()) {
        refusal = {410, 9,
                   std::string(vt_error_text(9)) + ": this client's orbitals were released " +
                       it->second + "; its next request starts a new, empty collection",
                   ""};
        mNotices.erase(it);
        return nullptr;
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
        if (oldest == mByToken.end()) {
            refusal = {503, 6,
                       "Overflow: the server holds as many clients as it can; try again later", ""};
            return nullptr;
        }
        released = Release(oldest, "");
    }
    const std::string fresh = NewToken();
    if (fresh.empty()) {
        refusal = {503, 5, "Invalid procedure call or argument: no random token to give", ""};
        return nullptr;
    }
    auto collection = std::make_shared<Collection>(*this);
    collection->mCreated = collection->mLastUse = now;
    collection->mRequests = 1;
    mByToken.emplace(fresh, collection);
    res.set_header("Set-Cookie", std::string(kClientCookie) + "=" + fresh +
                                     "; Path=/; HttpOnly; SameSite=Strict");
    return collection;
}

void Clients::Touch(Collection& collection) {
    std::lock_guard lock(mMutex);
    collection.mLastUse = Clock::now();
}

bool Clients::TakeOrbital() {
    if (mTotal.fetch_add(1) >= mLimits.maxTotalOrbitals) {
        mTotal.fetch_sub(1);
        return false;
    }
    return true;
}

bool Clients::ReserveOrbital(const Collection& requester) {
    return TakeOrbital() || MakeRoom(requester);
}

std::shared_ptr<Collection> Clients::Release(
    std::map<std::string, std::shared_ptr<Collection>>::iterator it, const std::string& why) {
    std::shared_ptr<Collection> c = std::move(it->second);
    if (!c->live.empty()) {
        if (mNoticeOrder.size() >= mLimits.maxNotices) {
            mNotices.erase(mNoticeOrder.front());
            mNoticeOrder.pop_front();
        }
        mNotices[it->first] = why;
        mNoticeOrder.push_back(it->first);
    }
    mByToken.erase(it);
    return c;
}

bool Clients::MakeRoom(const Collection& requester) {
    std::shared_ptr<Collection> released;  // freed after the lock: it joins its engine's thread
    std::lock_guard lock(mMutex);
    const Clock::time_point now = Clock::now();
    using Entry = std::map<std::string, std::shared_ptr<Collection>>::iterator;
    // The first of the entries that `eligible` admits, by `before`.
    auto pick = [&](auto eligible, auto before) {
        Entry best = mByToken.end();
        for (Entry it = mByToken.begin(); it != mByToken.end(); ++it) {
            const Collection& c = *it->second;
            // Held by a request (the map's reference and that one), or without orbitals.
            if (&c == &requester || it->second.use_count() != 1 || c.live.empty()) continue;
            if (eligible(c) && (best == mByToken.end() || before(c, *best->second))) best = it;
        }
        return best;
    };
    const auto older = [](const Collection& a, const Collection& b) {
        return a.mCreated < b.mCreated;
    };
    const auto idler = [](const Collection& a, const Collection& b) {
        return a.mLastUse < b.mLastUse;
    };
    const auto any = [](const Collection&) { return true; };
    const std::string total = std::to_string(mLimits.maxTotalOrbitals);
    Entry victim = pick([](const Collection& c) { return c.mRequests == 1; }, older);
    std::string why = "to make room for another client: the server holds at most " + total +
                      " orbitals, and this client had made only one request";
    if (victim == mByToken.end()) {
        victim = pick(
            [&](const Collection& c) {
                return c.mRequests < 2 || now - c.mPreviousUse > mLimits.steadyTime;
            },
            idler);
        why = "to make room for another client: the server holds at most " + total +
              " orbitals, and this client had been idle longest";
    }
    if (victim == mByToken.end() && requester.live.empty()) victim = pick(any, idler);
    if (victim == mByToken.end()) return false;
    released = Release(victim, why);
    // The requester's orbital is counted now, so that no other request takes the room; the
    // released orbitals are given back as `released` ends, before this request adds its own.
    ++mTotal;
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
                idle.push_back(Release(it++, "after " + std::to_string(mLimits.idleTime.count()) +
                                                 " seconds without a request"));
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
