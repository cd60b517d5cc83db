// Connection threads, budgets and refusals of the server.
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
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace vtserve {

namespace {

using Clock = std::chrono::steady_clock;

/// Set on the accepting thread while it refuses a connection beyond the bound.
thread_local bool tRefusing = false;
/// Set by a handler whose reply must end the connection.
thread_local bool tCloseAfterReply = false;

/// Connection threads, one per connection being served and at most `limit` of them; threads
/// are kept for later connections. A connection beyond the limit is handled on the accepting
/// thread itself in refusing mode, which writes a 503 without reading anything, so that
/// neither a queue nor the accept loop grows with a flood of connections.
class ConnectionPool : public httplib::TaskQueue {
  public:
    explicit ConnectionPool(size_t limit) : mLimit(limit) {}
    ~ConnectionPool() override = default;

    void enqueue(std::function<void()> fn) override {
        {
            std::lock_guard lock(mMutex);
            if (mBusy < mLimit) {
                ++mBusy;
                mJobs.push_back(std::move(fn));
                if (mThreads.size() < mBusy) mThreads.emplace_back([this] { Work(); });
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

  private:
    void Work() {
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
        }
    }

    const size_t mLimit;
    std::mutex mMutex;
    std::condition_variable mWake;
    std::deque<std::function<void()>> mJobs;
    std::vector<std::thread> mThreads;
    size_t mBusy = 0;  ///< connections queued or being served
    bool mStopping = false;
};

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

/// One connection's socket as httplib reads and writes it: buffered reads within the current
/// request's byte and time budget, writes within the write time-out.
class BudgetStream : public httplib::Stream {
  public:
    BudgetStream(int sock, const ConnectionLimits& limits) : mSock(sock), mLimits(limits) {}

    /// Starts the budgets of the next request.
    void StartRequest() {
        mRequestBytes = 0;
        mDeadline = Clock::now() + mLimits.requestTime;
    }

    /// True when the next request has begun to arrive within the idle time; false when the
    /// connection is idle, closed or the server stops.
    bool WaitForRequest(const std::function<bool()>& stopping) {
        if (mOffset < mFill) return true;
        const Clock::time_point until = Clock::now() + mLimits.idleTime;
        while (!stopping()) {
            const int left = MillisLeft(until);
            if (WaitFor(mSock, POLLIN, std::min(left, 200))) return true;
            if (left == 0) return false;
        }
        return false;
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
}

void GuardedServer::CloseAfterReply(httplib::Response& res) {
    tCloseAfterReply = true;
    res.set_header("Connection", "close");
}

bool GuardedServer::process_and_close_socket(socket_t sock) {
    const int yes = 1;
    setsockopt(sock, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
    if (tRefusing) {
        Refuse(sock);
        return false;
    }
    BudgetStream stream(sock, mLimits);
    for (size_t count = 1; count <= mLimits.maxRequestsPerConnection; ++count) {
        if (!stream.WaitForRequest([this] { return Stopping(); })) break;
        stream.StartRequest();
        tCloseAfterReply = false;
        bool closed = false;
        bool ok = false;
        try {
            const bool last = count == mLimits.maxRequestsPerConnection || Stopping();
            ok = process_request(stream, last, closed, [](httplib::Request&) {});
        } catch (...) {
            // A fault outside the handlers (they answer their own): this connection ends, the
            // server goes on.
            ok = false;
        }
        if (!ok || closed || tCloseAfterReply) break;
    }
    ::shutdown(sock, SHUT_RDWR);
    ::close(sock);
    return true;
}

}  // namespace vtserve
