// Command-line options that become an orbital setup and a render request.
#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <string>

#include "cli_common.h"

namespace vtcli {

/// How to add an orbital: the view and the setup fields (unset ones take the catalogue's
/// defaults for the view).
struct OrbitalOptions {
    std::string view = "pdf";
    int64_t radius = 0;
    int64_t dots = 10000;
    int64_t threshold = 0;
    int64_t clockMs = 0;
    CLI::Option* radiusOption = nullptr;
    CLI::Option* thresholdOption = nullptr;
    CLI::Option* clockOption = nullptr;
};

/// One picture: every field of the render request, angles in degrees.
struct RequestOptions {
    double theta = 20;
    double phi = 30;
    std::string mode = "orthographic";
    std::string size = "main";
    int64_t camera = 400;
    int64_t plane = 200;
    int64_t transect = 0;
    std::string transectDir = "x";
    bool transector = false;
    bool colouredTransector = false;
    int64_t quality = 10;
    bool preview = false;
    bool probDots = false;
    bool probTrans = false;
    int64_t stereo = 20;
};

void AddOrbitalOptions(CLI::App& command, OrbitalOptions& options);
void AddRequestOptions(CLI::App& command, RequestOptions& options);

/// The view named by --view (VT_PDF or VT_DRPDF); kExitUsage with a message for another name.
int ParseView(const std::string& text, int32_t& view);

/// Fixes the clock when --clock was given. kExitOk, or kExitUsage with a message.
int ApplyClock(const OrbitalOptions& options);

/// The setup for catalogue entry `index`; kExitOk, or kExitUsage with a message.
int MakeSetup(const OrbitalOptions& options, const vt_OrbInfo& info, int index,
              vt_OrbitalSetup& setup);

/// The request (angles converted to radians); kExitOk, or kExitUsage with a message.
int MakeRequest(const RequestOptions& options, vt_RenderRequest& request);

}  // namespace vtcli
