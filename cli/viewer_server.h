// veltara serve: the viewer page and its JSON API over one engine, on loopback by default.
#pragma once

#include <cstdint>
#include <string>

namespace vtcli {

/// Live orbitals the server holds at most (each keeps a 2 MiB probability grid).
inline constexpr int kMaxLiveOrbitals = 64;
/// The largest request body the server reads, in bytes.
inline constexpr size_t kMaxBodyBytes = 64 * 1024;

struct ServeArgs {
    std::string host = "127.0.0.1";
    int64_t port = 8375;  ///< 0: any free port
    int64_t clockMs = 0;  ///< 0: the system clock; else fixed (above 32768)
    int64_t maxOrbitals = kMaxLiveOrbitals;
};

/// Serves until SIGINT or SIGTERM. Prints "Veltara viewer: http://HOST:PORT/" on stdout once
/// listening (the port chosen when 0 was asked). The process exit code.
int RunServe(const ServeArgs& args);

}  // namespace vtcli
