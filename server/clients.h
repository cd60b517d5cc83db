// Each client's own collection of orbitals, named by an unguessable token that the server hands
// out in a cookie, with caps on orbitals per client and in all, and release of idle clients.
#pragma once

#include <httplib.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "engine_worker.h"
#include "veltara.h"

namespace vtserve {

/// The cookie that names a client's collection.
inline constexpr const char* kClientCookie = "veltara_client";

struct ClientLimits {
    int64_t maxOrbitals = 16;             ///< live orbitals of one client
    int64_t maxTotalOrbitals = 64;        ///< live orbitals of all clients together
    std::chrono::seconds idleTime{1800};  ///< a client unheard of this long is released
    size_t maxClients = 512;              ///< collections held at once
    int32_t fixedClockMs = 0;             ///< 0: the system clock
};

class Clients;

/// One client's collection: the orbitals it holds and the engine that holds them, which lives
/// on a thread of its own from the client's first add until its last orbital is deleted or the
/// client is released. A request works on it while holding `mutex`.
class Collection {
  public:
    explicit Collection(Clients& owner) : mOwner(owner) {}
    /// Gives the collection's orbitals back to the server's total.
    ~Collection();
    Collection(const Collection&) = delete;
    Collection& operator=(const Collection&) = delete;

    std::mutex mutex;
    /// The setups of the live orbitals by handle (the engine's slot index).
    std::map<int16_t, vt_OrbitalSetup> live;

    /// Runs job on the engine's thread, starting the engine first when there is none; the
    /// error number of creating it, else 0.
    int32_t Run(const std::function<void(vt_engine*)>& job);
    /// Ends the engine and its thread (when the last orbital is gone).
    void StopEngine() { mWorker.reset(); }

  private:
    friend class Clients;
    Clients& mOwner;
    std::unique_ptr<EngineWorker> mWorker;
    std::chrono::steady_clock::time_point mLastUse;  ///< guarded by the owner's mutex
};

/// The collections of all clients.
class Clients {
  public:
    explicit Clients(const ClientLimits& limits);
    ~Clients();
    Clients(const Clients&) = delete;
    Clients& operator=(const Clients&) = delete;

    /// The collection the request's cookie names. A request without a known token (a first
    /// contact, or a client released since) gets a new, empty collection and a Set-Cookie
    /// header on res. Null when every collection the server may hold has orbitals.
    std::shared_ptr<Collection> Find(const httplib::Request& req, httplib::Response& res);

    /// Marks the end of a request of the client: its idle time counts from here.
    void Touch(Collection& collection);

    /// Counts one orbital against the total; false when the total is reached.
    bool ReserveOrbital();
    /// Gives back n orbitals counted by ReserveOrbital.
    void ReleaseOrbitals(size_t n) { mTotal -= static_cast<int64_t>(n); }

    const ClientLimits& limits() const { return mLimits; }

  private:
    void ReleaseIdle();

    const ClientLimits mLimits;
    std::atomic<int64_t> mTotal{0};
    std::mutex mMutex;
    std::map<std::string, std::shared_ptr<Collection>> mByToken;
    std::condition_variable mWake;
    bool mStopping = false;
    std::thread mReaper;
};

}  // namespace vtserve
