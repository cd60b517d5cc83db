// Raw bytes as one connection's requests to the viewer's server, without a socket: the request
// line, headers and body framing, the request rules, routing, the clients' collections and the
// JSON bodies, as a connection's thread runs them. Nothing may crash, leak, read out of bounds,
// or answer a request that follows one the connection ended on.
//
// Adds are never carried out (the server's total of orbitals is 0, so every add is refused
// after its body is read), which keeps an input at microseconds rather than a grid's
// milliseconds; the bodies an add or a picture would read are fed to their readers directly.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "api_json.h"
#include "connections.h"
#include "request_rules.h"
#include "routes.h"

namespace {

/// No orbitals, and one collection at a time: each new client takes the place of the last, so
/// that an input frees what it allocates and libFuzzer's leak check stays quiet and quick.
vtserve::ClientLimits NoOrbitals() {
    vtserve::ClientLimits limits;
    limits.maxTotalOrbitals = 0;
    limits.maxClients = 1;
    return limits;
}

/// The server as `veltara serve` sets it up on 127.0.0.1:8375, for the life of the process.
struct Served {
    vtserve::ServerState state{NoOrbitals()};
    vtserve::GuardedServer server{vtserve::ConnectionLimits{}};
    std::vector<std::string> hosts = vtserve::AllowedHosts("127.0.0.1", 8375);

    Served() {
        if (vt_create(&state.aboutEngine) != 0 ||
            vt_enum_orbitals(state.aboutEngine, state.catalogue) != 0) {
            std::fprintf(stderr, "the engine did not start\n");
            std::abort();
        }
        vtserve::AddRoutes(server, state, hosts);
    }
};

/// The count of replies in what the server wrote: a status line starts each.
size_t Replies(const std::string& written) {
    size_t count = 0;
    for (size_t at = written.find("HTTP/1.1 "); at != std::string::npos;
         at = written.find("HTTP/1.1 ", at + 1)) {
        ++count;
    }
    return count;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static Served* served = new Served();  // kept to the end, as a server's state is
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);

    // A connection that never starts a request gets no reply; one whose first bytes are not a
    // request line gets one reply, a 400, and nothing more, whatever follows.
    const std::string written = served->server.ServeBytes(bytes);
    if (size > 0 && bytes.substr(0, 1) != "\r" && bytes.substr(0, 1) != "\n" &&
        bytes.find(' ') > bytes.find('\n') && Replies(written) > 1) {
        std::fprintf(stderr, "a request after an unparsed line was answered\n");
        std::abort();
    }

    // The same bytes as a body of each kind.
    nlohmann::json body;
    if (!vtserve::ParseBody(std::string(bytes), body).failed()) {
        vt_RenderRequest request{};
        vtserve::PictureFormat format{};
        vtserve::ParseRenderRequest(body, request, format);
        vt_OrbitalSetup setup{};
        vtserve::ParseSetup(body, served->state.catalogue, setup);
        uint8_t threshold = 0;
        int32_t target = 0;
        vtserve::ParseRefill(body, threshold, target);
    }
    return 0;
}
