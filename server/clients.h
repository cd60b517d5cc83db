// Each client's own collection of orbitals, named by an unguessable token that the server hands
// out in a cookie, with caps on orbitals per client and in all, release of idle clients, room
// made for new clients when the total is reached, and a plain notice to a released client.
#pragma once

#include <httplib.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "api_json.h"
#include "engine_worker.h"
#include "veltara.h"

namespace vtserve {

/// The cookie that names a client's collection.
inline constexpr const char* kClientCookie = "veltara_client";

struct ClientLimits {
    int64_t maxOrbitals = 16;             ///< live orbitals of one client
    int64_t maxTotalOrbitals = 64;        ///< live orbitals of all clients together
    std::chrono::seconds idleTime{1800};  ///< a client unheard of this long is released
    /// A collection with two requests within this time gives way last when room is made.
    std::chrono::seconds steadyTime{600};
    size_t maxClients = 512;   ///< collections held at once
    size_t maxNotices = 1024;  ///< released clients remembered, to be told so
    int32_t fixedClockMs = 0;  ///< 0: the system clock
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
    /// The text of each live orbital added as a state beyond the catalogue.
    std::map<int16_t, std::string> stateText;

    /// Runs job on the engine's thread, starting the engine first when there is none; the
    /// error number of creating it, else 0.
    int32_t Run(const std::function<void(vt_engine*)>& job);
    /// Ends the engine and its thread (when the last orbital is gone).
    void StopEngine() { mWorker.reset(); }

  private:
    friend class Clients;
    Clients& mOwner;
    std::unique_ptr<EngineWorker> mWorker;
    // Guarded by the owner's mutex.
    std::chrono::steady_clock::time_point mCreated;
    std::chrono::steady_clock::time_point mLastUse;      ///< end of the last request
    std::chrono::steady_clock::time_point mPreviousUse;  ///< the request before the last
    int64_t mRequests = 0;
};

/// The collections of all clients.
class Clients {
  public:
    explicit Clients(const ClientLimits& limits);
    ~Clients();
    Clients(const Clients&) = delete;
    Clients& operator=(const Clients&) = delete;

    /// The collection the request's cookie names. A request without a known token (a first
    /// contact, or a client released and told so before) gets a new, empty collection and a
    /// Set-Cookie header on res. Null with `refusal` set: 410 (9) the first time a client whose
    /// orbitals were released asks again (its next request starts afresh), 503 (6) when every
    /// collection the server may hold has orbitals.
    std::shared_ptr<Collection> Find(const httplib::Request& req, httplib::Response& res,
                                     ApiError& refusal);

    /// Marks the end of a request of the client: its idle time counts from here.
    void Touch(Collection& collection);

    /// Counts one orbital of `requester` (its mutex held) against the total. When the total is
    /// reached, another collection gives way, released with its orbitals: first those that
    /// made only one request, oldest first; then, among those without two requests within
    /// steadyTime, the one idle longest; then, for a requester without orbitals (so that a new
    /// client can always add one), the one idle longest of all. A collection that a request
    /// holds never gives way. False when none can.
    bool ReserveOrbital(const Collection& requester);
    /// Gives back n orbitals counted by ReserveOrbital.
    void ReleaseOrbitals(size_t n) { mTotal -= static_cast<int64_t>(n); }

    const ClientLimits& limits() const { return mLimits; }

  private:
    void ReleaseIdle();
    bool TakeOrbital();
    /// Releases the collection that gives way to `requester` and counts the requester's orbital;
    /// false when there is none.
    bool MakeRoom(const Collection& requester);
    /// Forgets `it`'s token, remembering why when it held orbitals. Holds mMutex.
    std::shared_ptr<Collection> Release(
        std::map<std::string, std::shared_ptr<Collection>>::iterator it, const std::string& why);

    const ClientLimits mLimits;
    std::atomic<int64_t> mTotal{0};
    std::mutex mMutex;
    std::map<std::string, std::shared_ptr<Collection>> mByToken;
    std::map<std::string, std::string> mNotices;  ///< why a released token's orbitals went
    std::deque<std::string> mNoticeOrder;         ///< their tokens, oldest first
    std::condition_variable mWake;
    bool mStopping = false;
    std::thread mReaper;
};

}  // namespace vtserve
