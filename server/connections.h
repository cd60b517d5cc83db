// The server's connections: httplib's request handling behind a bounded set of connection
// threads, per-request byte and time budgets, TCP_NODELAY, idle connections that give way to new
// ones, and connections that end whenever a request's framing is in doubt.
#pragma once

#include <httplib.h>

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

namespace vtserve {

class ConnectionStream;  // one connection's bytes as the request handling reads and writes them

/// What one connection may take.
struct ConnectionLimits {
    /// Served at once. A connection beyond them takes the place of the kept-alive connection
    /// idle longest, which is closed; when none is idle it is refused with 503 at once.
    size_t maxConnections = 32;
    size_t maxRequestBytes = 256 * 1024;           ///< request line, headers and body together
    std::chrono::milliseconds requestTime{10000};  ///< a whole request, first byte to last
    std::chrono::milliseconds readTime{5000};      ///< silence while a request is being read
    std::chrono::milliseconds writeTime{5000};     ///< a reply the client does not take
    std::chrono::milliseconds idleTime{5000};      ///< between requests on a kept-alive connection
    size_t maxRequestsPerConnection = 1000;
};

/// httplib's server with its connections handled here rather than by httplib's own loop, which
/// in the version Debian ships queues connections without bound behind a fixed pool, reads
/// header lines and chunked bodies without bound, sets TCP_NODELAY only on the listening
/// socket, keeps a connection open after a request it could not parse and never reads a GET's
/// body, so that bytes left over would run as the next request. Requests are still parsed,
/// routed and answered by httplib.
///
/// A connection is kept for a further request only when the last one was parsed, its reply was
/// not a 400, its body (stated by Content-Length) was read to the last byte, and nothing asked
/// for the connection to end; a chunked body always ends it.
class GuardedServer : public httplib::Server {
  public:
    explicit GuardedServer(const ConnectionLimits& limits);

    /// Called by a handler that answers before reading the body: the connection closes after
    /// this reply, so that the unread bytes are never taken for the next request.
    static void CloseAfterReply(const httplib::Request& req);

    /// The check of each parsed request before routing (the server's rules of address, method,
    /// length and origin): Handled when it has answered, which closes the connection. Use this
    /// rather than set_pre_routing_handler, which the connection rules occupy.
    void SetRequestCheck(HandlerWithResponse check) { mRequestCheck = std::move(check); }
    /// The answer to errors (status 400 and above). Use this rather than set_error_handler.
    void SetErrorAnswer(HandlerWithResponse answer) { mErrorAnswer = std::move(answer); }

    /// Serves `bytes` as the requests of one connection, without a socket, and returns what the
    /// server wrote back: the same handling as a connection's, for fuzzing and tests.
    std::string ServeBytes(std::string_view bytes);

  private:
    // Overrides httplib's handling of one accepted socket (a private virtual of httplib::Server).
    bool process_and_close_socket(socket_t sock) override;
    void ServeConnection(ConnectionStream& stream);
    bool Stopping() const { return svr_sock_ == INVALID_SOCKET; }

    ConnectionLimits mLimits;
    HandlerWithResponse mRequestCheck;
    HandlerWithResponse mErrorAnswer;
};

}  // namespace vtserve
