// The viewer's API and page: one handler per route over the clients' collections.
#pragma once

#include <httplib.h>

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "clients.h"
#include "veltara.h"

namespace vtserve {

/// What the handlers share for the life of the server.
struct ServerState {
    explicit ServerState(const ClientLimits& limits) : clients(limits) {}

    vt_OrbInfo catalogue[VT_CATALOGUE_SIZE]{};
    std::string catalogueJson;  ///< the catalogue's reply, written once
    Clients clients;
    int32_t fixedClockMs = 0;
    /// The engine that shows the about box (the presenter is process-wide): one at a time.
    vt_engine* aboutEngine = nullptr;
    std::mutex aboutMutex;
};

/// Registers the page's files, the API routes, and the answers to everything else (JSON errors
/// for unknown routes, refused requests and exceptions).
void AddRoutes(httplib::Server& server, ServerState& state, const std::vector<std::string>& hosts);

}  // namespace vtserve
