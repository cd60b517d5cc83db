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

/// The request every host starts from (vt_render_request_init): Main, orthographic, angles 0,
/// camera 400, plane 200, stereo factor 20, quality 10, final.
inline vt_RenderRequest DefaultRequest() {
    vt_RenderRequest r{};
    vt_render_request_init(&r);
    return r;
}

/// One picture: every field of the render request, angles in degrees; the defaults are
/// DefaultRequest's.
struct RequestOptions {
    double theta = DefaultRequest().Theta * 180.0 / 3.14159265358979323846;
    double phi = DefaultRequest().Phi * 180.0 / 3.14159265358979323846;
    std::string mode = "orthographic";
    std::string size = "main";
    int64_t camera = DefaultRequest().CameraPos;
    int64_t plane = DefaultRequest().ProjectionPlane;
    int64_t transect = DefaultRequest().TransectNo;
    std::string transectDir = "x";
    bool transector = DefaultRequest().Transector == VT_TRUE;
    bool colouredTransector = DefaultRequest().UseColouredTransector == VT_TRUE;
    int64_t quality = DefaultRequest().VolQuality;
    bool preview = DefaultRequest().VolFinal != VT_TRUE;
    bool probDots = DefaultRequest().ShowProbLevelOnDots == VT_TRUE;
    bool probTrans = DefaultRequest().ShowProbLevelOnTrans == VT_TRUE;
    int64_t stereo = DefaultRequest().StereoFactor;
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

/// The setup of a state beyond the catalogue: the options' view, dots and threshold, and
/// radius 0 (the engine's default) unless --radius is given. kExitOk or kExitUsage.
int MakeStateSetup(const OrbitalOptions& options, vt_OrbitalSetup& setup);

/// The request (angles converted to radians); kExitOk, or kExitUsage with a message.
int MakeRequest(const RequestOptions& options, vt_RenderRequest& request);

}  // namespace vtcli
