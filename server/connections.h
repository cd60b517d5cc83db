// The server's connections: httplib's request handling behind a bounded set of connection
// threads, per-request byte and time budgets, TCP_NODELAY and a fast refusal when full.
#pragma once

#include <httplib.h>

#include <chrono>
#include <cstddef>

namespace vtserve {

/// What one connection may take.
struct ConnectionLimits {
    size_t maxConnections = 32;  ///< served at once; the next one is refused with 503 at once
    size_t maxRequestBytes = 256 * 1024;           ///< request line, headers and body together
    std::chrono::milliseconds requestTime{10000};  ///< a whole request, first byte to last
    std::chrono::milliseconds readTime{5000};      ///< silence while a request is being read
    std::chrono::milliseconds writeTime{5000};     ///< a reply the client does not take
    std::chrono::milliseconds idleTime{5000};      ///< between requests on a kept-alive connection
    size_t maxRequestsPerConnection = 1000;
};

/// httplib's server with its connections handled here rather than by httplib's own loop, which
/// in the version Debian ships queues connections without bound behind a fixed pool, reads
/// header lines and chunked bodies without bound, and sets TCP_NODELAY only on the listening
/// socket. Requests are still parsed, routed and answered by httplib.
class GuardedServer : public httplib::Server {
  public:
    explicit GuardedServer(const ConnectionLimits& limits);

    /// Called by a handler that answers before reading the body: the connection closes after
    /// this reply, so that the unread bytes are never taken for the next request.
    static void CloseAfterReply(httplib::Response& res);

  private:
    // Overrides httplib's handling of one accepted socket (a private virtual of httplib::Server).
    bool process_and_close_socket(socket_t sock) override;
    bool Stopping() const { return svr_sock_ == INVALID_SOCKET; }

    ConnectionLimits mLimits;
};

}  // namespace vtserve
