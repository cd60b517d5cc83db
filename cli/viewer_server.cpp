// The HTTP server of the viewer: static page files and a JSON API over one engine.
#include "viewer_server.h"

#include <httplib.h>
#include <pthread.h>
#include <signal.h>

#include <cstdio>
#include <map>
#include <nlohmann/json.hpp>
#include <thread>
#include <vector>

#include "cli_common.h"
#include "engine_worker.h"
#include "orbital_names.h"
#include "png_writer.h"
#include "serve_json.h"
#include "web_assets.h"

namespace vtcli {

using nlohmann::json;

namespace {

/// What the server knows of one live orbital; the engine holds the rest.
struct LiveOrbital {
    vt_OrbitalSetup setup{};
};

/// The engine's state as the API sees it. Touched only on the engine worker's thread.
struct EngineState {
    vt_OrbInfo catalogue[40]{};
    std::map<int16_t, LiveOrbital> live;
};

void SendJson(httplib::Response& res, int status, const json& body) {
    res.status = status;
    res.set_content(body.dump(), "application/json");
}

void SendError(httplib::Response& res, const ApiError& e) { SendJson(res, e.status, e.ToJson()); }

/// The handle in the path; an unknown one is refused as the engine would (9, 404).
ApiError FindHandle(const EngineState& state, const std::string& text, int16_t& handle) {
    const ApiError unknown{404, 9, "Subscript out of range: no orbital " + text, "handle"};
    if (text.size() > 6) return unknown;
    const long n = std::stol(text);  // the route admits only -?\d{1,}
    if (n < INT16_MIN || n > INT16_MAX || state.live.count(static_cast<int16_t>(n)) == 0) {
        return unknown;
    }
    handle = static_cast<int16_t>(n);
    return {};
}

json LiveJson(const EngineState& state, int16_t handle, const LiveOrbital& orbital) {
    const vt_OrbInfo& info = state.catalogue[orbital.setup.OrbitalIndex];
    return {{"handle", handle},
            {"Name", info.Name},
            {"commandName", CommandName(info)},
            {"OrbType", info.OrbType == VT_AVERAGE_ORBS ? "AverageOrbs" : "SingleOrb"},
            {"setup", SetupJson(orbital.setup)}};
}

/// The presenter of the about box: the page shows the dialog, so this one keeps the texts.
struct AboutCapture {
    json texts;
    bool topMost = false;
};

void CaptureAbout(const vt_AboutBox* box, void* ctx) {
    static_cast<AboutCapture*>(ctx)->texts = {{"Caption", box->Caption},
                                              {"FrameCaption", box->FrameCaption},
                                              {"Label", box->Label},
                                              {"YearsLabel", box->YearsLabel}};
}

void CaptureTopMost(vt_bool onTop, void* ctx) {
    static_cast<AboutCapture*>(ctx)->topMost = onTop == VT_TRUE;
}

}  // namespace

int RunServe(const ServeArgs& args) {
    if (args.clockMs != 0 && (args.clockMs < 32768 || args.clockMs > INT32_MAX)) {
        return UsageError("--clock", std::to_string(args.clockMs) + " is outside 32768.." +
                                         std::to_string(INT32_MAX));
    }
    if (args.port < 0 || args.port > 65535) {
        return UsageError("--port", std::to_string(args.port) + " is outside 0..65535");
    }
    if (args.maxOrbitals < 1 || args.maxOrbitals > kMaxLiveOrbitals) {
        return UsageError("--max-orbitals", std::to_string(args.maxOrbitals) + " is outside 1.." +
                                                std::to_string(kMaxLiveOrbitals));
    }

    // SIGINT and SIGTERM are taken by one waiting thread; every other thread blocks them.
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGINT);
    sigaddset(&stopSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);

    EngineWorker worker(static_cast<int32_t>(args.clockMs));
    if (worker.createError() != 0) return EngineError(worker.createError(), "creating the engine");
    EngineState state;
    int32_t catalogueError = 0;
    worker.Run([&](vt_engine* e) { catalogueError = vt_enum_orbitals(e, state.catalogue); });
    if (catalogueError != 0) return EngineError(catalogueError, "reading the orbital catalogue");

    httplib::Server server;
    server.set_payload_max_length(kMaxBodyBytes);
    server.set_keep_alive_max_count(1000);

    // ---- The page ----
    for (size_t i = 0; i < kWebAssetCount; ++i) {
        const WebAsset& asset = kWebAssets[i];
        server.Get(asset.path, [&asset](const httplib::Request&, httplib::Response& res) {
            res.set_content(reinterpret_cast<const char*>(asset.data), asset.size,
                            asset.contentType);
            res.set_header("Cache-Control", "no-cache");
        });
    }

    // ---- Catalogue, limits, about ----
    server.Get("/api/catalogue", [&](const httplib::Request&, httplib::Response& res) {
        json list = json::array();
        for (int i = 0; i < 40; ++i) list.push_back(OrbInfoJson(state.catalogue[i], i));
        SendJson(res, 200, list);
    });
    server.Get("/api/info", [&](const httplib::Request&, httplib::Response& res) {
        SendJson(res, 200,
                 {{"HighestN", vt_highest_n(nullptr)},
                  {"maxOrbitals", args.maxOrbitals},
                  {"maxBodyBytes", kMaxBodyBytes},
                  {"fixedClock", args.clockMs}});
    });
    server.Get("/api/about", [&](const httplib::Request&, httplib::Response& res) {
        AboutCapture capture;
        int32_t rc = 0;
        worker.Run([&](vt_engine* e) {
            vt_set_about_presenter(CaptureAbout, CaptureTopMost, &capture);
            rc = vt_about(e);
            vt_set_about_presenter(nullptr, nullptr, nullptr);
        });
        if (rc != 0) return SendError(res, EngineApiError(rc, "showing the about box"));
        capture.texts["TopMost"] = capture.topMost;
        SendJson(res, 200, capture.texts);
    });

    // ---- Orbitals ----
    server.Get("/api/orbitals", [&](const httplib::Request&, httplib::Response& res) {
        json list = json::array();
        worker.Run([&](vt_engine*) {
            for (const auto& [handle, orbital] : state.live) {
                list.push_back(LiveJson(state, handle, orbital));
            }
        });
        SendJson(res, 200, list);
    });

    server.Post("/api/orbitals", [&](const httplib::Request& req, httplib::Response& res) {
        json body;
        if (const ApiError e = ParseBody(req.body, body); e.failed()) return SendError(res, e);
        ApiError error;
        json reply;
        worker.Run([&](vt_engine* e) {
            vt_OrbitalSetup setup{};
            if ((error = ParseSetup(body, state.catalogue, setup)).failed()) return;
            if (static_cast<int64_t>(state.live.size()) >= args.maxOrbitals) {
                error = {409, 6,
                         "Overflow: the viewer holds at most " + std::to_string(args.maxOrbitals) +
                             " orbitals; delete one first",
                         ""};
                return;
            }
            // The engine fills the lowest empty slot; the server's map mirrors the slots.
            int16_t expected = 0;
            while (state.live.count(expected) != 0) ++expected;
            int16_t handle = -1;
            if (const int32_t rc = vt_add(e, &setup, &handle)) {
                // A failed setup leaves its renderer in the slot: free it and its grid.
                vt_delete(e, expected);
                error = EngineApiError(
                    rc, "adding " + CommandName(state.catalogue[setup.OrbitalIndex]));
                if (error.status == 404) error.status = 422;
                return;
            }
            state.live[handle].setup = setup;
            vt_OrbitalStats stats{};
            vt_get_stats(e, handle, &stats);
            reply = LiveJson(state, handle, state.live[handle]);
            reply["stats"] = StatsJson(stats);
        });
        if (error.failed()) return SendError(res, error);
        SendJson(res, 201, reply);
    });

    server.Delete(
        R"(/api/orbitals/(-?\d+))", [&](const httplib::Request& req, httplib::Response& res) {
            ApiError error;
            int16_t handle = 0;
            worker.Run([&](vt_engine* e) {
                if ((error = FindHandle(state, req.matches[1], handle)).failed()) return;
                if (const int32_t rc = vt_delete(e, handle)) {
                    error = EngineApiError(rc, "deleting orbital " + std::to_string(handle));
                    return;
                }
                state.live.erase(handle);
            });
            if (error.failed()) return SendError(res, error);
            SendJson(res, 200, {{"deleted", handle}});
        });

    server.Get(R"(/api/orbitals/(-?\d+)/stats)",
               [&](const httplib::Request& req, httplib::Response& res) {
                   ApiError error;
                   vt_OrbitalStats stats{};
                   worker.Run([&](vt_engine* e) {
                       int16_t handle = 0;
                       if ((error = FindHandle(state, req.matches[1], handle)).failed()) return;
                       if (const int32_t rc = vt_get_stats(e, handle, &stats)) {
                           error = EngineApiError(rc, "reading statistics");
                       }
                   });
                   if (error.failed()) return SendError(res, error);
                   SendJson(res, 200, StatsJson(stats));
               });

    server.Post(R"(/api/orbitals/(-?\d+)/refill)", [&](const httplib::Request& req,
                                                       httplib::Response& res) {
        json body;
        if (const ApiError e = ParseBody(req.body, body); e.failed()) {
            return SendError(res, e);
        }
        ApiError error;
        vt_OrbitalStats stats{};
        worker.Run([&](vt_engine* e) {
            int16_t handle = 0;
            if ((error = FindHandle(state, req.matches[1], handle)).failed()) return;
            uint8_t threshold = 0;
            int32_t target = 0;
            if ((error = ParseRefill(body, threshold, target)).failed()) return;
            vt_Variant index{};
            index.kind = VT_VARIANT_INT16;
            index.value.i16 = handle;
            int32_t result = 0;
            if (const int32_t rc = vt_refill_dot_matrix(e, &index, threshold, target, &result)) {
                error = EngineApiError(rc, "re-filling the dot cloud");
                if (error.status == 404) error.status = 422;
                return;
            }
            vt_get_setup(e, handle, &state.live[handle].setup);
            vt_get_stats(e, handle, &stats);
        });
        if (error.failed()) return SendError(res, error);
        SendJson(res, 200, StatsJson(stats));
    });

    server.Post(R"(/api/orbitals/(-?\d+)/render)", [&](const httplib::Request& req,
                                                       httplib::Response& res) {
        json body;
        if (const ApiError e = ParseBody(req.body, body); e.failed()) {
            return SendError(res, e);
        }
        vt_RenderRequest request{};
        PictureFormat format = PictureFormat::Bgra;
        if (const ApiError e = ParseRenderRequest(body, request, format); e.failed()) {
            return SendError(res, e);
        }
        ApiError error;
        std::vector<uint8_t> bgra;
        int32_t width = 0, height = 0;
        vt_RenderDCinfo dc{};
        worker.Run([&](vt_engine* e) {
            int16_t handle = 0;
            if ((error = FindHandle(state, req.matches[1], handle)).failed()) return;
            int32_t rc = vt_get_render(e, handle, &request, &dc);
            if (rc != 0) {
                error = EngineApiError(rc, "rendering orbital " + std::to_string(handle));
                if (error.status == 404) error.status = 422;
                return;
            }
            // The handle of the size drawn (a size the engine does not draw, such
            // as 200, leaves the old picture, or none).
            const int32_t hdc = request.Size == VT_MAIN ? dc.MainHDC : dc.NanoHDC;
            if ((rc = vt_surface_info(hdc, &width, &height)) == 0) {
                bgra.resize(static_cast<size_t>(width) * static_cast<size_t>(height) * 4);
                rc = vt_surface_read(hdc, bgra.data(), bgra.size());
            }
            if (rc != 0) {
                error = EngineApiError(rc, "reading the picture");
                error.status = 422;
            }
        });
        if (error.failed()) return SendError(res, error);
        res.set_header("X-Width", std::to_string(width));
        res.set_header("X-Height", std::to_string(height));
        res.set_header("X-Main-HDC", std::to_string(dc.MainHDC));
        res.set_header("X-Nano-HDC", std::to_string(dc.NanoHDC));
        if (format == PictureFormat::Png) {
            std::vector<uint8_t> png;
            const std::string problem = EncodePng(FromBgra(bgra, width, height), png);
            if (!problem.empty()) {
                return SendError(res, {500, 5, "PNG encoding failed: " + problem, ""});
            }
            res.set_content(reinterpret_cast<const char*>(png.data()), png.size(), "image/png");
        } else {
            res.set_content(reinterpret_cast<const char*>(bgra.data()), bgra.size(),
                            "application/octet-stream");
        }
    });

    // ---- Everything else: JSON errors, never an empty page ----
    // httplib calls this for every status from 400 on; answers the API made keep their body.
    server.set_error_handler(httplib::Server::HandlerWithResponse([](const httplib::Request& req,
                                                                     httplib::Response& res) {
        using Result = httplib::Server::HandlerResponse;
        if (!res.body.empty()) return Result::Unhandled;
        if (res.status == 413) {
            SendError(res, {413, 6,
                            "Overflow: the request body is larger than " +
                                std::to_string(kMaxBodyBytes) + " bytes",
                            ""});
        } else if (res.status == 404) {
            SendError(
                res, {404, 5,
                      "Invalid procedure call or argument: no route " + req.method + " " + req.path,
                      ""});
        } else {
            SendError(
                res,
                {res.status, 5,
                 "Invalid procedure call or argument: HTTP " + std::to_string(res.status), ""});
        }
        return Result::Handled;
    }));
    server.set_exception_handler(
        [](const httplib::Request&, httplib::Response& res, std::exception_ptr ep) {
            std::string what = "unknown";
            try {
                std::rethrow_exception(ep);
            } catch (const std::exception& e) {
                what = e.what();
            } catch (...) {
            }
            SendError(res, {500, 5, "Invalid procedure call or argument: " + what, ""});
        });

    // ---- Listen ----
    int port = static_cast<int>(args.port);
    if (port == 0) {
        port = server.bind_to_any_port(args.host);
    } else if (!server.bind_to_port(args.host, port)) {
        port = -1;
    }
    if (port < 0) {
        return FileError("cannot listen on " + args.host + ":" + std::to_string(args.port));
    }
    std::printf("Veltara viewer: http://%s:%d/\n", args.host.c_str(), port);
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
    return ok ? kExitOk : FileError("the server stopped unexpectedly");
}

}  // namespace vtcli
