// The routes of `veltara serve`.
#include "routes.h"

#include <exception>
#include <memory>
#include <nlohmann/json.hpp>

#include "api_json.h"
#include "connections.h"
#include "png_writer.h"
#include "records_json.h"
#include "request_rules.h"
#include "static_assets.h"

namespace vtserve {

namespace {

using httplib::Request;
using httplib::Response;
using nlohmann::json;

void SendJson(Response& res, int status, const json& body) {
    res.status = status;
    res.set_content(vtjson::Dump(body), "application/json");
}

void SendError(Response& res, const ApiError& e) { SendJson(res, e.status, e.ToJson()); }

/// The answer to an exception that reached a route: the request fails, the server goes on.
void SendFault(Response& res, std::exception_ptr fault) {
    std::string what = "unknown fault";
    try {
        std::rethrow_exception(fault);
    } catch (const std::bad_alloc&) {
        return SendError(res, {503, 7, "Out of memory (while serving the request)", ""});
    } catch (const std::exception& e) {
        what = e.what();
    } catch (...) {
    }
    SendError(res, {500, 5, "Invalid procedure call or argument: " + what, ""});
}

/// The handle in the path among the client's orbitals; an unknown one is refused as the engine
/// would (9, 404).
ApiError FindHandle(const Collection& c, const std::string& text, int16_t& handle) {
    const ApiError unknown{404, 9, "Subscript out of range: no orbital " + text, "handle"};
    if (text.size() > 6) return unknown;
    const long n = std::stol(text);  // the route admits only -?\d+
    if (n < INT16_MIN || n > INT16_MAX || c.live.count(static_cast<int16_t>(n)) == 0) {
        return unknown;
    }
    handle = static_cast<int16_t>(n);
    return {};
}

ApiError HandleOf(const Collection& c, const Request& req, int16_t& handle) {
    return FindHandle(c, req.matches[1], handle);
}

json LiveJson(const ServerState& s, const Collection& c, int16_t handle,
              const vt_OrbitalSetup& setup) {
    if (const auto state = c.stateText.find(handle); state != c.stateText.end()) {
        return {{"handle", handle},
                {"Name", state->second},
                {"commandName", state->second},
                {"OrbType", "State"},
                {"setup", vtjson::SetupJson(setup)}};
    }
    const vt_OrbInfo& info = s.catalogue[setup.OrbitalIndex];
    return {{"handle", handle},
            {"Name", info.Name},
            {"commandName", vtjson::CommandName(info)},
            {"OrbType", info.OrbType == VT_AVERAGE_ORBS ? "AverageOrbs" : "SingleOrb"},
            {"setup", vtjson::SetupJson(setup)}};
}

// ---- Routes that need no collection ----

void GetCatalogue(ServerState& s, const Request&, Response& res) {
    res.status = 200;
    res.set_content(s.catalogueJson, "application/json");
}

void GetInfo(ServerState& s, const Request&, Response& res) {
    const ClientLimits& limits = s.clients.limits();
    SendJson(res, 200,
             {{"HighestN", vt_highest_n(nullptr)},
              {"maxOrbitals", limits.maxOrbitals},
              {"maxTotalOrbitals", limits.maxTotalOrbitals},
              {"idleSeconds", limits.idleTime.count()},
              {"maxBodyBytes", kMaxBodyBytes},
              {"fixedClock", s.fixedClockMs}});
}

/// The presenter of the about box: the page shows the dialog, so this one keeps the texts.
struct AboutCapture {
    json texts;
    bool topMost = false;
};

void GetAbout(ServerState& s, const Request&, Response& res) {
    AboutCapture capture;
    int32_t rc = 0;
    {
        std::lock_guard lock(s.aboutMutex);
        vt_set_about_presenter(
            [](const vt_AboutBox* box, void* ctx) {
                static_cast<AboutCapture*>(ctx)->texts = {{"Caption", box->Caption},
                                                          {"FrameCaption", box->FrameCaption},
                                                          {"Label", box->Label},
                                                          {"YearsLabel", box->YearsLabel}};
            },
            [](vt_bool onTop, void* ctx) {
                static_cast<AboutCapture*>(ctx)->topMost = onTop == VT_TRUE;
            },
            &capture);
        rc = vt_about(s.aboutEngine);
        vt_set_about_presenter(nullptr, nullptr, nullptr);
    }
    if (rc != 0) return SendError(res, EngineApiError(rc, "showing the about box"));
    capture.texts["TopMost"] = capture.topMost;
    SendJson(res, 200, capture.texts);
}

// ---- Routes on the client's collection (its mutex held) ----

void ListOrbitals(ServerState& s, Collection& c, const Request&, Response& res, const json&) {
    json list = json::array();
    for (const auto& [handle, setup] : c.live) list.push_back(LiveJson(s, c, handle, setup));
    SendJson(res, 200, list);
}

void AddOrbital(ServerState& s, Collection& c, const Request&, Response& res, const json& body) {
    vt_OrbitalSetup setup{};
    // A state in the engine's text form, or a catalogue orbital by index.
    std::shared_ptr<vt_superposition> state;
    std::string text;
    double time = 0;
    if (body.is_object() && body.contains("State")) {
        if (const ApiError e = ParseStateSetup(body, text, time, setup); e.failed()) {
            return SendError(res, e);
        }
        vt_superposition* parsed = nullptr;
        if (const int32_t rc = vt_parse_state(text.c_str(), &parsed)) {
            return SendError(
                res, {422, rc,
                      "Invalid procedure call or argument: State: " + Echo(vt_last_error_detail()),
                      "State"});
        }
        state.reset(parsed, vt_superposition_free);
    } else if (const ApiError e = ParseSetup(body, s.catalogue, setup); e.failed()) {
        return SendError(res, e);
    }
    const ClientLimits& limits = s.clients.limits();
    if (static_cast<int64_t>(c.live.size()) >= limits.maxOrbitals) {
        return SendError(res,
                         {409, 6,
                          "Overflow: a client holds at most " + std::to_string(limits.maxOrbitals) +
                              " orbitals; delete one first",
                          ""});
    }
    if (!s.clients.ReserveOrbital(c)) {
        res.set_header("Retry-After", "60");
        return SendError(
            res, {503, 6,
                  "Overflow: the server holds at most " + std::to_string(limits.maxTotalOrbitals) +
                      " orbitals for all its clients; try again later",
                  ""});
    }
    // Given back unless the orbital is added, whatever ends the request.
    struct Reservation {
        Clients& clients;
        bool kept = false;
        ~Reservation() {
            if (!kept) clients.ReleaseOrbitals(1);
        }
    } reservation{s.clients};
    ApiError error;
    int16_t handle = -1;
    vt_OrbitalStats stats{};
    const std::string name =
        state ? "state " + Echo(text) : vtjson::CommandName(s.catalogue[setup.OrbitalIndex]);
    const int32_t created = c.Run([&](vt_engine* e) {
        // The engine fills the lowest empty slot; the map mirrors the slots.
        int16_t expected = 0;
        while (c.live.count(expected) != 0) ++expected;
        const int32_t rc = state ? vt_add_state(e, state.get(), time, &setup, &handle)
                                 : vt_add(e, &setup, &handle);
        if (rc != 0) {
            // A failed setup leaves its renderer in the slot: free it and its grid.
            vt_delete(e, expected);
            error = EngineApiError(rc, "adding " + name);
            if (error.status == 404) error.status = 422;
            return;
        }
        vt_get_stats(e, handle, &stats);
        // A state's defaults (radius, and a catalogue orbital's own row) are the engine's.
        if (state) vt_get_setup(e, handle, &setup);
    });
    if (created != 0) error = EngineApiError(created, "starting this client's engine");
    if (error.failed()) {
        if (c.live.empty()) c.StopEngine();
        return SendError(res, error);
    }
    c.live[handle] = setup;
    c.stateText.erase(handle);
    // A state the catalogue lists is that orbital, named as the catalogue names it.
    int16_t row = -1;
    if (state && (vt_state_catalogue_index(state.get(), &row) != VT_OK || row < 0)) {
        c.stateText[handle] = text;
    }
    reservation.kept = true;
    json reply = LiveJson(s, c, handle, setup);
    reply["stats"] = vtjson::StatsJson(stats);
    SendJson(res, 201, reply);
}

void DeleteOrbital(ServerState& s, Collection& c, const Request& req, Response& res, const json&) {
    int16_t handle = 0;
    if (const ApiError e = HandleOf(c, req, handle); e.failed()) return SendError(res, e);
    int32_t rc = 0;
    c.Run([&](vt_engine* e) { rc = vt_delete(e, handle); });
    if (rc != 0)
        return SendError(res, EngineApiError(rc, "deleting orbital " + req.matches[1].str()));
    c.live.erase(handle);
    c.stateText.erase(handle);
    s.clients.ReleaseOrbitals(1);
    // The engine of a client without orbitals is not kept: a later add starts a fresh one.
    if (c.live.empty()) c.StopEngine();
    SendJson(res, 200, {{"deleted", handle}});
}

void GetStats(ServerState&, Collection& c, const Request& req, Response& res, const json&) {
    int16_t handle = 0;
    if (const ApiError e = HandleOf(c, req, handle); e.failed()) return SendError(res, e);
    vt_OrbitalStats stats{};
    int32_t rc = 0;
    c.Run([&](vt_engine* e) { rc = vt_get_stats(e, handle, &stats); });
    if (rc != 0) return SendError(res, EngineApiError(rc, "reading statistics"));
    SendJson(res, 200, vtjson::StatsJson(stats));
}

void Refill(ServerState&, Collection& c, const Request& req, Response& res, const json& body) {
    int16_t handle = 0;
    if (const ApiError e = HandleOf(c, req, handle); e.failed()) return SendError(res, e);
    uint8_t threshold = 0;
    int32_t target = 0;
    if (const ApiError e = ParseRefill(body, threshold, target); e.failed()) {
        return SendError(res, e);
    }
    ApiError error;
    vt_OrbitalStats stats{};
    c.Run([&](vt_engine* e) {
        vt_Variant index{};
        index.kind = VT_VARIANT_INT16;
        index.value.i16 = handle;
        int32_t result = 0;
        if (const int32_t rc = vt_refill_dot_matrix(e, &index, threshold, target, &result)) {
            error = EngineApiError(rc, "re-filling the dot cloud");
            if (error.status == 404) error.status = 422;
            return;
        }
        vt_get_setup(e, handle, &c.live[handle]);
        vt_get_stats(e, handle, &stats);
    });
    if (error.failed()) return SendError(res, error);
    SendJson(res, 200, vtjson::StatsJson(stats));
}

void Render(ServerState&, Collection& c, const Request& req, Response& res, const json& body) {
    int16_t handle = 0;
    if (const ApiError e = HandleOf(c, req, handle); e.failed()) return SendError(res, e);
    vt_RenderRequest request{};
    PictureFormat format = PictureFormat::Bgra;
    if (const ApiError e = ParseRenderRequest(body, request, format); e.failed()) {
        return SendError(res, e);
    }
    ApiError error;
    std::vector<uint8_t> bgra;
    int32_t width = 0, height = 0;
    vt_RenderDCinfo dc{};
    c.Run([&](vt_engine* e) {
        int32_t rc = vt_get_render(e, handle, &request, &dc);
        if (rc != 0) {
            error = EngineApiError(rc, "rendering orbital " + std::to_string(handle));
            if (error.status == 404) error.status = 422;
            return;
        }
        // The handle of the size drawn (a size the engine does not draw, such as 200, leaves
        // the old picture, or none).
        const int32_t hdc = request.Size == VT_MAIN ? dc.MainHDC : dc.NanoHDC;
        if ((rc = vt_surface_info(hdc, &width, &height)) == 0) {
            bgra.resize(static_cast<size_t>(width) * static_cast<size_t>(height) * 4);
            rc = vt_surface_read(hdc, bgra.data(), bgra.size());
        }
        if (rc != 0) error = {422, rc, EngineApiError(rc, "reading the picture").message, ""};
    });
    if (error.failed()) return SendError(res, error);
    res.status = 200;
    res.set_header("X-Width", std::to_string(width));
    res.set_header("X-Height", std::to_string(height));
    res.set_header("X-Main-HDC", std::to_string(dc.MainHDC));
    res.set_header("X-Nano-HDC", std::to_string(dc.NanoHDC));
    if (format == PictureFormat::Png) {
        std::vector<uint8_t> png;
        const std::string problem = vtjson::EncodePng(vtjson::FromBgra(bgra, width, height), png);
        if (!problem.empty())
            return SendError(res, {500, 5, "PNG encoding failed: " + problem, ""});
        res.set_content(reinterpret_cast<const char*>(png.data()), png.size(), "image/png");
    } else {
        res.set_content(reinterpret_cast<const char*>(bgra.data()), bgra.size(),
                        "application/octet-stream");
    }
}

// ---- Wrapping: bodies, clients and faults ----

using PlainRoute = void (*)(ServerState&, const Request&, Response&);
using ClientRoute = void (*)(ServerState&, Collection&, const Request&, Response&, const json&);

/// Runs a client route: parses the body, finds (or makes) the client's collection and holds it
/// for the request. No exception leaves.
void ServeClient(ServerState& s, ClientRoute route, const Request& req, Response& res,
                 const std::string& body) {
    try {
        json parsed;
        if (const ApiError e = ParseBody(body, parsed); e.failed()) return SendError(res, e);
        ApiError refusal;
        const std::shared_ptr<Collection> client = s.clients.Find(req, res, refusal);
        if (!client) {
            if (refusal.status == 503) res.set_header("Retry-After", "60");
            return SendError(res, refusal);
        }
        std::lock_guard lock(client->mutex);
        route(s, *client, req, res, parsed);
        s.clients.Touch(*client);
    } catch (...) {
        SendFault(res, std::current_exception());
    }
}

httplib::Server::Handler Plain(ServerState& s, PlainRoute route) {
    return [&s, route](const Request& req, Response& res) {
        try {
            route(s, req, res);
        } catch (...) {
            SendFault(res, std::current_exception());
        }
    };
}

httplib::Server::Handler WithoutBody(ServerState& s, ClientRoute route) {
    return [&s, route](const Request& req, Response& res) {
        ServeClient(s, route, req, res, std::string());
    };
}

/// A route with a body (POST, DELETE): reads the body itself, so that every body, of a stated
/// length or in chunks, passes the one size check as it arrives.
httplib::Server::HandlerWithContentReader WithBody(ServerState& s, ClientRoute route) {
    return [&s, route](const Request& req, Response& res, const httplib::ContentReader& reader) {
        std::string body;
        ApiError tooLong;
        bool read = false;
        try {
            read = reader([&](const char* data, size_t size) {
                tooLong = CheckBodySize(body.size() + size);
                if (tooLong.failed()) return false;
                body.append(data, size);
                return true;
            });
        } catch (...) {
        }
        if (!read) {
            GuardedServer::CloseAfterReply(req);
            return SendError(res, tooLong.failed() ? tooLong
                                                   : ApiError{400, 13,
                                                              "Type mismatch: the request body "
                                                              "could not be read",
                                                              ""});
        }
        ServeClient(s, route, req, res, body);
    };
}

// ---- Everything else ----

httplib::Server::HandlerResponse AnswerError(const Request& req, Response& res) {
    using Result = httplib::Server::HandlerResponse;
    // httplib applies Range to the reply after this handler: never to an error.
    const_cast<Request&>(req).ranges.clear();
    if (!res.body.empty()) return Result::Unhandled;  // the API's own answers keep their body
    if (res.status == 404) {
        SendError(res, {404, 5,
                        "Invalid procedure call or argument: no route " + Echo(req.method) + " " +
                            Echo(req.path),
                        ""});
    } else if (res.status == 400) {
        // httplib's own refusal: the head could not be parsed.
        SendError(res, {400, 13,
                        "Type mismatch: the request line or a header is not HTTP as this "
                        "server reads it; the connection ends here",
                        ""});
    } else {
        SendError(res,
                  {res.status, 5,
                   "Invalid procedure call or argument: HTTP " + std::to_string(res.status), ""});
    }
    return Result::Handled;
}

}  // namespace

void AddRoutes(GuardedServer& server, ServerState& s, const std::vector<std::string>& hosts) {
    json list = json::array();
    for (int i = 0; i < VT_CATALOGUE_SIZE; ++i)
        list.push_back(vtjson::OrbInfoJson(s.catalogue[i], i));
    s.catalogueJson = vtjson::Dump(list);

    // Replies are whole: a single Range is ignored, several are refused.
    server.set_default_headers({{"Accept-Ranges", "none"}});
    // A client that asks before sending its body hears at once if it would be refused.
    server.set_expect_100_continue_handler([&hosts](const Request& req, Response& res) {
        const ApiError e = CheckRequest(req, hosts);
        if (!e.failed()) return 100;
        GuardedServer::CloseAfterReply(req);
        SendError(res, e);
        return e.status;
    });
    // Before routing: the request's address, method, length, origin and type.
    server.SetRequestCheck([&hosts](const Request& req, Response& res) {
        try {
            const ApiError e = CheckRequest(req, hosts);
            // A single range is ignored: every answer is whole (httplib would cut the reply,
            // and throw on a range beyond its end).
            const_cast<Request&>(req).ranges.clear();
            if (e.failed()) {
                SendError(res, e);
                return httplib::Server::HandlerResponse::Handled;
            }
        } catch (...) {
            SendFault(res, std::current_exception());
            return httplib::Server::HandlerResponse::Handled;
        }
        return httplib::Server::HandlerResponse::Unhandled;
    });

    // The page's files.
    for (size_t i = 0; i < kStaticAssetCount; ++i) {
        const StaticAsset& asset = kStaticAssets[i];
        server.Get(asset.path, [&asset](const Request&, Response& res) {
            res.set_content(reinterpret_cast<const char*>(asset.data), asset.size,
                            asset.contentType);
            res.set_header("Cache-Control", "no-cache");
        });
    }

    server.Get("/api/catalogue", Plain(s, GetCatalogue));
    server.Get("/api/info", Plain(s, GetInfo));
    server.Get("/api/about", Plain(s, GetAbout));
    server.Get("/api/orbitals", WithoutBody(s, ListOrbitals));
    server.Post("/api/orbitals", WithBody(s, AddOrbital));
    server.Delete(R"(/api/orbitals/(-?\d+))", WithBody(s, DeleteOrbital));
    server.Get(R"(/api/orbitals/(-?\d+)/stats)", WithoutBody(s, GetStats));
    server.Post(R"(/api/orbitals/(-?\d+)/refill)", WithBody(s, Refill));
    server.Post(R"(/api/orbitals/(-?\d+)/render)", WithBody(s, Render));
    // Every other POST and DELETE is answered without reading its body, which httplib would
    // otherwise read whole, whatever its length.
    const auto noRoute = [](const Request& req, Response& res, const httplib::ContentReader&) {
        GuardedServer::CloseAfterReply(req);
        res.status = 404;
        AnswerError(req, res);
    };
    server.Post(".*", noRoute);
    server.Delete(".*", noRoute);

    server.SetErrorAnswer(AnswerError);
    server.set_exception_handler(
        [](const Request&, Response& res, std::exception_ptr fault) { SendFault(res, fault); });
}

}  // namespace vtserve
