// Starting and stopping the viewer's server.
#include "viewer_server.h"

#include <arpa/inet.h>
#include <pthread.h>
#include <signal.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <thread>

#include "connections.h"
#include "request_rules.h"
#include "routes.h"

namespace vtserve {

namespace {

constexpr int kExitOk = 0;
constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;

int Usage(const char* option, int64_t value, int64_t lo, int64_t hi) {
    std::fprintf(stderr, "veltara: %s: %lld is outside %lld..%lld\n", option,
                 static_cast<long long>(value), static_cast<long long>(lo),
                 static_cast<long long>(hi));
    return kExitUsage;
}

int Failed(const std::string& problem) {
    std::fprintf(stderr, "veltara: %s\n", problem.c_str());
    return kExitFailed;
}

/// True for 127.0.0.0/8, ::1 and localhost: addresses no other machine reaches.
bool IsLoopback(const std::string& host) {
    if (host == "localhost") return true;
    in_addr v4{};
    if (inet_pton(AF_INET, host.c_str(), &v4) == 1) return (ntohl(v4.s_addr) >> 24) == 127;
    in6_addr v6{};
    return inet_pton(AF_INET6, host.c_str(), &v6) == 1 && IN6_IS_ADDR_LOOPBACK(&v6);
}

}  // namespace

std::string ServeLimitsText() {
    const ConnectionLimits c;
    const ClientLimits k;
    const auto seconds = [](std::chrono::milliseconds t) {
        return std::to_string(t.count() / 1000);
    };
    return "Limits, so that no set of clients holds the server: at most " +
           std::to_string(c.maxConnections) +
           " connections are served at once; when all are taken, a new one takes the place of "
           "the kept-alive connection idle longest (none idle: 503 at once), and a kept-alive "
           "connection closes after " +
           seconds(c.idleTime) + " s without a request. A request arrives whole within " +
           seconds(c.requestTime) + " s and " + std::to_string(c.maxRequestBytes / 1024) +
           " KiB, its body within " + std::to_string(kMaxBodyBytes / 1024) +
           " KiB. When the total of orbitals is reached, an add releases another client's "
           "collection: first one that made only one request, oldest first; then, among those "
           "without two requests in the last " +
           std::to_string(k.steadyTime.count() / 60) +
           " minutes, the one idle longest; and for a client without orbitals, the one idle "
           "longest of all. A client whose orbitals were released is told so (410) the next "
           "time it asks.";
}

int RunServe(const ServeArgs& args) {
    if (args.clockMs != 0 && (args.clockMs < 32768 || args.clockMs > INT32_MAX)) {
        return Usage("--clock", args.clockMs, 32768, INT32_MAX);
    }
    if (args.port < 0 || args.port > 65535) return Usage("--port", args.port, 0, 65535);
    if (args.maxOrbitals < 1 || args.maxOrbitals > kMaxOrbitalsLimit) {
        return Usage("--max-orbitals", args.maxOrbitals, 1, kMaxOrbitalsLimit);
    }
    if (args.maxTotalOrbitals < 1 || args.maxTotalOrbitals > kMaxTotalOrbitalsLimit) {
        return Usage("--max-total-orbitals", args.maxTotalOrbitals, 1, kMaxTotalOrbitalsLimit);
    }
    if (args.idleSeconds < 1 || args.idleSeconds > 7 * 24 * 3600) {
        return Usage("--idle-seconds", args.idleSeconds, 1, 7 * 24 * 3600);
    }

    // SIGINT and SIGTERM are taken by one waiting thread; every other thread blocks them.
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGINT);
    sigaddset(&stopSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);

    ClientLimits limits;
    limits.maxOrbitals = args.maxOrbitals;
    limits.maxTotalOrbitals = args.maxTotalOrbitals;
    limits.idleTime = std::chrono::seconds(args.idleSeconds);
    limits.fixedClockMs = static_cast<int32_t>(args.clockMs);
    ServerState state(limits);
    state.fixedClockMs = limits.fixedClockMs;
    if (const int32_t rc = vt_create(&state.aboutEngine)) {
        return Failed("error " + std::to_string(rc) + ": " + vt_error_text(rc) +
                      " (while creating the engine)");
    }
    if (const int32_t rc = vt_enum_orbitals(state.aboutEngine, state.catalogue)) {
        vt_destroy(state.aboutEngine);
        return Failed("error " + std::to_string(rc) + ": " + vt_error_text(rc) +
                      " (while reading the orbital catalogue)");
    }

    int result = kExitOk;
    {
        GuardedServer server{ConnectionLimits{}};
        // Listen first: the Host rule needs the port.
        int port = static_cast<int>(args.port);
        errno = 0;
        if (port == 0) {
            port = server.bind_to_any_port(args.host);
        } else if (!server.bind_to_port(args.host, port)) {
            port = -1;
        }
        const std::string url = "http://" + UrlHost(args.host) + ":";
        if (port < 0) {
            const int error = errno;
            vt_destroy(state.aboutEngine);
            return Failed("cannot listen on " + url + std::to_string(args.port) + "/" +
                          (error != 0 ? std::string(" (") + std::strerror(error) + ")" : "") +
                          (error == EADDRINUSE ? ": another program holds the port" : ""));
        }
        const std::vector<std::string> hosts = AllowedHosts(args.host, port);
        AddRoutes(server, state, hosts);
        if (!IsLoopback(args.host)) {
            std::fprintf(stderr,
                         "veltara: warning: %s is not a loopback address: every machine that "
                         "reaches it can use this viewer\n",
                         args.host.c_str());
        }
        std::printf("Veltara viewer: %s%d/\n", url.c_str(), port);
        std::fflush(stdout);

        std::thread stopper([&] {
            int signal = 0;
            sigwait(&stopSignals, &signal);
            server.stop();
        });
        const bool ok = server.listen_after_bind();
        // Wake the stopper if the server ended by itself.
        if (!ok) pthread_kill(stopper.native_handle(), SIGTERM);
        stopper.join();
        if (!ok) result = Failed("the server stopped unexpectedly");
    }
    vt_destroy(state.aboutEngine);
    return result;
}

}  // namespace vtserve
