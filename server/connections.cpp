// Connection threads, budgets, refusals and the framing rules of the server's connections.
#include "connections.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <functional>
#include <list>
#include <mutex>
#include <thread>
#include <vector>

namespace vtserve {

namespace {

using Clock = std::chrono::steady_clock;

/// Set on the accepting thread while it refuses a connection beyond the bound.
thread_local bool tRefusing = false;

/// What the connection loop learns of the request being served, from httplib's hooks.
struct RequestTrace {
    bool parsed = false;    ///< request line and headers were read and understood
    bool chunked = false;   ///< the body comes in chunks, whose end only their reader sees
    bool lengthOk = false;  ///< Content-Length absent (no body) or a plain number
    uint64_t length = 0;    ///< the body's stated length
    size_t bodyStart = 0;   ///< bytes of the request taken before its body
    bool close = false;     ///< the connection ends after this reply
};
thread_local RequestTrace tRequest;

/// The milliseconds left until `deadline`, at least 0.
int MillisLeft(Clock::time_point deadline) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    return static_cast<int>(std::max<int64_t>(0, left.count()));
}

/// Waits until the socket can be read (events POLLIN) or written (POLLOUT); false on time-out
/// or error.
bool WaitFor(int sock, short events, int millis) {
    pollfd p{sock, events, 0};
    int n = 0;
    do {
        n = ::poll(&p, 1, millis);
    } while (n < 0 && errno == EINTR);
    return n > 0 && (p.revents & (events | POLLHUP)) != 0;
}

/// Connection threads, one per connection being served and at most `limit` of them; threads
/// are kept for later connections. A connection beyond the limit takes the place of the
/// kept-alive connection idle longest, whose socket is shut so that its thread ends it and takes
/// the newcomer; when every connection is inside a request, the newcomer is handled on the
/// accepting thread itself in refusing mode, which writes a 503 without reading anything, so
/// that neither a queue nor the accept loop grows with a flood of connections.
class ConnectionPool : public httplib::TaskQueue {
  public:
    explicit ConnectionPool(size_t limit) : mLimit(limit) {}
    ~ConnectionPool() override = default;

    void enqueue(std::function<void()> fn) override {
        {
            std::lock_guard lock(mMutex);
            bool room = mBusy - mGivingWay < mLimit;
            if (!room) room = GiveWay();
            if (room) {
                ++mBusy;
                mJobs.push_back(std::move(fn));
                if (mThreads.size() < std::min(mBusy, mLimit)) {
                    mThreads.emplace_back([this] { Work(); });
                }
                mWake.notify_one();
                return;
            }
        }
        tRefusing = true;
        fn();
        tRefusing = false;
    }

    void shutdown() override {
        {
            std::lock_guard lock(mMutex);
            mStopping = true;
        }
        mWake.notify_all();
        for (std::thread& t : mThreads) t.join();
    }

    /// Called by a connection's thread before it waits for the next request on `sock`; false
    /// when the connection has been asked to give way (it ends at once).
    static bool EnterIdle(int sock) {
        if (tPool == nullptr) return true;
        std::lock_guard lock(tPool->mMutex);
        tSlot->sock = sock;
        tSlot->idle = true;
        tSlot->idleSince = Clock::now();
        return !tSlot->givingWay;
    }
    /// Called when the wait ends; false when the connection must give way: it then ends without
    /// reading what arrived.
    static bool LeaveIdle() {
        if (tPool == nullptr) return true;
        std::lock_guard lock(tPool->mMutex);
        tSlot->idle = false;
        tSlot->sock = -1;
        return !tSlot->givingWay;
    }

  private:
    struct Slot {
        int sock = -1;
        bool idle = false;       ///< waiting between requests, its socket open
        bool givingWay = false;  ///< asked to end for a newcomer
        Clock::time_point idleSince;
    };

    /// Asks the connection idle longest to end; false when none is idle. Holds mMutex.
    bool GiveWay() {
        Slot* oldest = nullptr;
        for (Slot& s : mSlots) {
            if (s.idle && !s.givingWay && (!oldest || s.idleSince < oldest->idleSince)) {
                oldest = &s;
            }
        }
        if (oldest == nullptr) return false;
        oldest->givingWay = true;
        ++mGivingWay;
        // Wakes its wait at once; the socket stays open until its thread leaves the idle state.
        ::shutdown(oldest->sock, SHUT_RDWR);
        return true;
    }

    void Work() {
        Slot* slot = nullptr;
        {
            std::lock_guard lock(mMutex);
            slot = &mSlots.emplace_back();
        }
        tPool = this;
        tSlot = slot;
        for (;;) {
            std::function<void()> job;
            {
                std::unique_lock lock(mMutex);
                mWake.wait(lock, [this] { return mStopping || !mJobs.empty(); });
                if (mJobs.empty()) return;
                job = std::move(mJobs.front());
                mJobs.pop_front();
            }
            job();
            std::lock_guard lock(mMutex);
            --mBusy;
            if (slot->givingWay) {
                slot->givingWay = false;
                --mGivingWay;
            }
        }
    }

    static thread_local ConnectionPool* tPool;
    static thread_local Slot* tSlot;

    const size_t mLimit;
    std::mutex mMutex;
    std::condition_variable mWake;
    std::deque<std::function<void()>> mJobs;
    std::vector<std::thread> mThreads;
    std::list<Slot> mSlots;  ///< one per thread; a list, so that pointers to them hold
    size_t mBusy = 0;        ///< connections queued or being served
    size_t mGivingWay = 0;   ///< of them, those asked to end for a newcomer
    bool mStopping = false;
};

thread_local ConnectionPool* ConnectionPool::tPool = nullptr;
thread_local ConnectionPool::Slot* ConnectionPool::tSlot = nullptr;

std::string AddressText(const sockaddr_storage& addr) {
    char text[INET6_ADDRSTRLEN] = {};
    if (addr.ss_family == AF_INET) {
        inet_ntop(AF_INET, &reinterpret_cast<const sockaddr_in&>(addr).sin_addr, text, sizeof text);
    } else if (addr.ss_family == AF_INET6) {
        inet_ntop(AF_INET6, &reinterpret_cast<const sockaddr_in6&>(addr).sin6_addr, text,
                  sizeof text);
    }
    return text;
}

int AddressPort(const sockaddr_storage& addr) {
    if (addr.ss_family == AF_INET)
        return ntohs(reinterpret_cast<const sockaddr_in&>(addr).sin_port);
    if (addr.ss_family == AF_INET6) {
        return ntohs(reinterpret_cast<const sockaddr_in6&>(addr).sin6_port);
    }
    return -1;
}

/// The answer to a connection beyond the bound, sent without reading the request.
void Refuse(int sock) {
    static constexpr char kBody[] =
        "{\"error\": 6, \"message\": \"Overflow: the server serves as many connections as it "
        "can; try again\"}";
    static const std::string kReply =
        "HTTP/1.1 503 Service Unavailable\r\nContent-Type: application/json\r\n"
        "Connection: close\r\nRetry-After: 1\r\nContent-Length: " +
        std::to_string(sizeof kBody - 1) + "\r\n\r\n" + kBody;
    ::send(sock, kReply.data(), kReply.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    // Take what has already arrived, so that closing does not reset the connection before the
    // client has read the reply.
    char scratch[4096];
    while (::recv(sock, scratch, sizeof scratch, MSG_DONTWAIT) > 0) {
    }
    ::shutdown(sock, SHUT_RDWR);
    ::close(sock);
}

/// The stated length of a body: a plain decimal number, else nothing.
bool ParseLength(const std::string& text, uint64_t& length) {
    if (text.empty() || text.size() > 19) return false;
    length = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') return false;
        length = length * 10 + static_cast<uint64_t>(c - '0');
    }
    return true;
}

}  // namespace

/// One connection's bytes as httplib reads and writes them, counting the bytes of the current
/// request that have been taken.
class ConnectionStream : public httplib::Stream {
  public:
    /// True when the next request has begun to arrive; false when the connection is idle,
    /// closed, asked to give way or the server stops.
    virtual bool WaitForRequest(const std::function<bool()>& stopping) = 0;
    /// Starts the budgets of the next request.
    virtual void StartRequest() { mTaken = 0; }
    /// Bytes of the current request taken so far.
    size_t taken() const { return mTaken; }

  protected:
    size_t mTaken = 0;
};

namespace {

/// A socket within the current request's byte and time budget: buffered reads, writes within
/// the write time-out.
class SocketStream : public ConnectionStream {
  public:
    SocketStream(int sock, const ConnectionLimits& limits) : mSock(sock), mLimits(limits) {}

    void StartRequest() override {
        ConnectionStream::StartRequest();
        mRequestBytes = mFill - mOffset;
        mDeadline = Clock::now() + mLimits.requestTime;
    }

    bool WaitForRequest(const std::function<bool()>& stopping) override {
        if (mOffset < mFill) return true;
        if (!ConnectionPool::EnterIdle(mSock)) {
            ConnectionPool::LeaveIdle();
            return false;
        }
        const Clock::time_point until = Clock::now() + mLimits.idleTime;
        bool arrived = false;
        while (!stopping()) {
            const int left = MillisLeft(until);
            if ((arrived = WaitFor(mSock, POLLIN, std::min(left, 200)))) break;
            if (left == 0) break;
        }
        return ConnectionPool::LeaveIdle() && arrived;
    }

    bool is_readable() const override {
        return mOffset < mFill || WaitFor(mSock, POLLIN, ReadMillis());
    }
    bool is_writable() const override {
        return WaitFor(mSock, POLLOUT, static_cast<int>(mLimits.writeTime.count()));
    }

    ssize_t read(char* ptr, size_t size) override {
        if (mOffset == mFill) {
            // Over budget or out of time: the request ends as if the client had gone.
            if (mRequestBytes >= mLimits.maxRequestBytes) return -1;
            if (!WaitFor(mSock, POLLIN, ReadMillis())) return -1;
            const ssize_t n = ::recv(mSock, mBuffer, sizeof mBuffer, 0);
            if (n <= 0) return n;
            mOffset = 0;
            mFill = static_cast<size_t>(n);
            mRequestBytes += mFill;
        }
        const size_t n = std::min(size, mFill - mOffset);
        std::memcpy(ptr, mBuffer + mOffset, n);
        mOffset += n;
        mTaken += n;
        return static_cast<ssize_t>(n);
    }

    ssize_t write(const char* ptr, size_t size) override {
        if (!is_writable()) return -1;
        return ::send(mSock, ptr, size, MSG_NOSIGNAL);
    }

    void get_remote_ip_and_port(std::string& ip, int& port) const override {
        sockaddr_storage addr{};
        socklen_t length = sizeof addr;
        if (getpeername(mSock, reinterpret_cast<sockaddr*>(&addr), &length) == 0) {
            ip = AddressText(addr);
            port = AddressPort(addr);
        }
    }
    void get_local_ip_and_port(std::string& ip, int& port) const override {
        sockaddr_storage addr{};
        socklen_t length = sizeof addr;
        if (getsockname(mSock, reinterpret_cast<sockaddr*>(&addr), &length) == 0) {
            ip = AddressText(addr);
            port = AddressPort(addr);
        }
    }
    socket_t socket() const override { return mSock; }

  private:
    /// Waiting time for the next bytes: the read time-out, cut short by the request's deadline.
    int ReadMillis() const {
        return std::min(static_cast<int>(mLimits.readTime.count()), MillisLeft(mDeadline));
    }

    int mSock;
    const ConnectionLimits& mLimits;
    char mBuffer[4096];
    size_t mOffset = 0;
    size_t mFill = 0;
    size_t mRequestBytes = 0;
    Clock::time_point mDeadline = Clock::now();
};

/// Bytes in memory as a connection from 127.0.0.1, within the same request byte budget; what
/// the server writes is kept.
class MemoryStream : public ConnectionStream {
  public:
    MemoryStream(std::string_view bytes, const ConnectionLimits& limits, std::string& written)
        : mBytes(bytes), mLimits(limits), mWritten(written) {}

    bool WaitForRequest(const std::function<bool()>&) override { return mOffset < mBytes.size(); }
    bool is_readable() const override { return mOffset < mBytes.size(); }
    bool is_writable() const override { return true; }

    ssize_t read(char* ptr, size_t size) override {
        const size_t n =
            std::min({size, mBytes.size() - mOffset,
                      mLimits.maxRequestBytes - std::min(mTaken, mLimits.maxRequestBytes)});
        if (n == 0) return mOffset == mBytes.size() ? 0 : -1;
        std::memcpy(ptr, mBytes.data() + mOffset, n);
        mOffset += n;
        mTaken += n;
        return static_cast<ssize_t>(n);
    }
    ssize_t write(const char* ptr, size_t size) override {
        mWritten.append(ptr, size);
        return static_cast<ssize_t>(size);
    }
    void get_remote_ip_and_port(std::string& ip, int& port) const override {
        ip = "127.0.0.1";
        port = 40000;
    }
    void get_local_ip_and_port(std::string& ip, int& port) const override {
        ip = "127.0.0.1";
        port = 8375;
    }
    socket_t socket() const override { return INVALID_SOCKET; }

  private:
    std::string_view mBytes;
    const ConnectionLimits& mLimits;
    std::string& mWritten;
    size_t mOffset = 0;
};

}  // namespace

GuardedServer::GuardedServer(const ConnectionLimits& limits) : mLimits(limits) {
    new_task_queue = [this] { return new ConnectionPool(mLimits.maxConnections); };
    set_tcp_nodelay(true);
    set_read_timeout(std::chrono::duration_cast<std::chrono::seconds>(mLimits.readTime).count());
    set_write_timeout(std::chrono::duration_cast<std::chrono::seconds>(mLimits.writeTime).count());
    set_keep_alive_timeout(
        std::chrono::duration_cast<std::chrono::seconds>(mLimits.idleTime).count());
    set_keep_alive_max_count(mLimits.maxRequestsPerConnection);
    // httplib's default sets SO_REUSEPORT, with which a second server on the same port starts
    // and shares the connections; SO_REUSEADDR alone still refuses a port that is listened on.
    set_socket_options([](socket_t sock) {
        const int yes = 1;
        setsockopt(sock, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    });
    set_pre_routing_handler([this](const httplib::Request& req, httplib::Response& res) {
        // A chunked body's end is seen by its reader alone: such a connection is not kept, and
        // the reply says so.
        if (tRequest.chunked) CloseAfterReply(req);
        if (!mRequestCheck) return HandlerResponse::Unhandled;
        const HandlerResponse answer = mRequestCheck(req, res);
        // A refused request's body is never read.
        if (answer == HandlerResponse::Handled) CloseAfterReply(req);
        return answer;
    });
    set_error_handler(
        HandlerWithResponse([this](const httplib::Request& req, httplib::Response& res) {
            // After a request that could not be parsed, or a 400, the next byte of the connection
            // cannot be trusted to start a request.
            if (!tRequest.parsed || res.status == 400) CloseAfterReply(req);
            return mErrorAnswer ? mErrorAnswer(req, res) : HandlerResponse::Unhandled;
        }));
}

void GuardedServer::CloseAfterReply(const httplib::Request& req) {
    tRequest.close = true;
    // httplib writes "Connection: close" on the reply of a request that asks for it (and a
    // Keep-Alive header otherwise). The request is httplib's own non-const object.
    auto& headers = const_cast<httplib::Request&>(req).headers;
    headers.erase("Connection");
    headers.emplace("Connection", "close");
}

void GuardedServer::ServeConnection(ConnectionStream& stream) {
    for (size_t count = 1; count <= mLimits.maxRequestsPerConnection; ++count) {
        if (!stream.WaitForRequest([this] { return Stopping(); })) break;
        stream.StartRequest();
        tRequest = RequestTrace{};
        bool closed = false;
        bool ok = false;
        try {
            const bool last = count == mLimits.maxRequestsPerConnection || Stopping();
            ok = process_request(stream, last, closed, [&stream](httplib::Request& req) {
                // Called once the head is parsed, before the body is read: where the body
                // starts and how long it says it is.
                RequestTrace& t = tRequest;
                t.parsed = true;
                t.bodyStart = stream.taken();
                t.chunked = req.has_header("Transfer-Encoding");
                // A request that states neither a length nor chunks has no body; httplib would
                // read one until the client closes. (A POST must state one: the request check
                // refuses it.)
                if (!t.chunked && !req.has_header("Content-Length") && req.method != "POST") {
                    req.set_header("Content-Length", "0");
                }
                t.lengthOk = !req.has_header("Content-Length") ||
                             ParseLength(req.get_header_value("Content-Length"), t.length);
            });
        } catch (...) {
            // A fault outside the handlers (they answer their own): this connection ends, the
            // server goes on.
            ok = false;
        }
        // Kept only when the request was framed plainly and its body taken to the last byte.
        const RequestTrace& t = tRequest;
        const bool bodyTaken = t.lengthOk && stream.taken() - t.bodyStart == t.length;
        if (!ok || closed || t.close || !t.parsed || t.chunked || !bodyTaken) break;
    }
}

bool GuardedServer::process_and_close_socket(socket_t sock) {
    const int yes = 1;
    setsockopt(sock, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
    if (tRefusing) {
        Refuse(sock);
        return false;
    }
    SocketStream stream(sock, mLimits);
    ServeConnection(stream);
    ::shutdown(sock, SHUT_RDWR);
    ::close(sock);
    return true;
}

std::string GuardedServer::ServeBytes(std::string_view bytes) {
    std::string written;
    MemoryStream stream(bytes, mLimits, written);
    ServeConnection(stream);
    return written;
}

}  // namespace vtserve
