// veltara serve: the viewer page and its JSON API, each client in its own collection, on
// loopback by default.
#pragma once

#include <cstdint>
#include <string>

namespace vtserve {

/// The bounds of the options (each live orbital holds a 2 MiB probability grid).
inline constexpr int64_t kMaxOrbitalsLimit = 64;
inline constexpr int64_t kMaxTotalOrbitalsLimit = 256;

struct ServeArgs {
    std::string host = "127.0.0.1";
    int64_t port = 8375;            ///< 0: any free port
    int64_t clockMs = 0;            ///< 0: the system clock; else fixed (above 32768)
    int64_t maxOrbitals = 16;       ///< per client, 1..kMaxOrbitalsLimit
    int64_t maxTotalOrbitals = 64;  ///< all clients together, 1..kMaxTotalOrbitalsLimit
    int64_t idleSeconds = 30 * 60;  ///< a client unheard of this long is released
};

/// The limits that keep any set of clients from holding the server, in sentences for
/// `veltara serve --help`, made from the values the server uses.
std::string ServeLimitsText();

/// Serves until SIGINT or SIGTERM. Prints "Veltara viewer: http://HOST:PORT/" on stdout once
/// listening (the port chosen when 0 was asked; an IPv6 address in brackets), and a warning on
/// stderr when HOST is not a loopback address. The process exit code: 0 after a stop, 1 when
/// the address cannot be listened on (a port another process holds), 2 for bad options.
int RunServe(const ServeArgs& args);

}  // namespace vtserve
