// Registration and checking of the setup and request options.
#include "request_options.h"

#include <array>
#include <cmath>
#include <numbers>
#include <utility>

namespace vtcli {

namespace {

/// A name among a fixed list; the position in `names` is the value.
template <size_t N>
int ParseName(const std::string& option, const std::string& text,
              const std::array<const char*, N>& names, int32_t& value) {
    std::string lower;
    for (char c : text) lower += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    std::string allowed;
    for (size_t i = 0; i < N; ++i) {
        if (lower == names[i]) {
            value = static_cast<int32_t>(i);
            return kExitOk;
        }
        allowed += (i == 0 ? "" : "|") + std::string(names[i]);
    }
    return UsageError(option, "'" + text + "' is not one of " + allowed);
}

/// The keys of a table of names joined by '|', for help texts.
std::string TableKeys(int32_t table) {
    std::string keys;
    int32_t rows = 0;
    vt_name_count(table, &rows);
    for (int32_t i = 0; i < rows; ++i) {
        vt_Name name{};
        vt_name(table, i, &name);
        keys += (i == 0 ? "" : "|") + std::string(name.Key);
    }
    return keys;
}

/// A name from the engine's table of mode, view or size names (its key, any case); for sizes
/// the pixel count too. `value` receives the row's value.
int ParseTableName(const std::string& option, int32_t table, const std::string& text,
                   int32_t& value) {
    std::string lower;
    for (char c : text) lower += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    int32_t rows = 0;
    vt_name_count(table, &rows);
    for (int32_t i = 0; i < rows; ++i) {
        vt_Name name{};
        vt_name(table, i, &name);
        if (lower == name.Key || (table == VT_NAMES_SIZE && lower == std::to_string(name.Value))) {
            value = name.Value;
            return kExitOk;
        }
    }
    return UsageError(option, "'" + text + "' is not one of " + TableKeys(table));
}

/// A whole number within [lo, hi].
int CheckRange(const std::string& option, int64_t value, int64_t lo, int64_t hi) {
    if (value >= lo && value <= hi) return kExitOk;
    return UsageError(option, std::to_string(value) + " is outside " + std::to_string(lo) + ".." +
                                  std::to_string(hi));
}

/// Truth values of requests are 16-bit: -1 or 0.
vt_bool Flag(bool on) { return on ? VT_TRUE : VT_FALSE; }

}  // namespace

void AddOrbitalOptions(CLI::App& command, OrbitalOptions& o) {
    command
        .add_option("--view", o.view, "pdf (probability density) or drpdf (radial distribution)")
        ->capture_default_str();
    o.radiusOption = command.add_option(
        "--radius", o.radius, "atom radius in Bohr radii, 1..32767 (default: the catalogue's)");
    command
        .add_option("--dots", o.dots,
                    "dots wanted, 0..32767; the cloud comes out somewhat smaller, and 0 gives "
                    "no cloud but a single dot at the nucleus with level 0")
        ->capture_default_str();
    o.thresholdOption = command.add_option(
        "--threshold", o.threshold,
        "probability threshold 0..255: a dot needs a level above it, so 255 draws no dot, and a "
        "threshold that only the nucleus exceeds gives a cloud without size (default: the "
        "catalogue's)");
    o.clockOption = command.add_option(
        "--clock", o.clockMs,
        "fix the millisecond clock (the random seed) for reproducible dots; 32768 or more");
}

void AddRequestOptions(CLI::App& command, RequestOptions& o) {
    command.add_option("--mode", o.mode, TableKeys(VT_NAMES_MODE))->capture_default_str();
    command.add_option("--size", o.size, "main (375 pixels) or nano (127); also 375 or 128")
        ->capture_default_str();
    command.add_option("--theta", o.theta, "first viewing angle, degrees")->capture_default_str();
    command.add_option("--phi", o.phi, "second viewing angle, degrees")->capture_default_str();
    command.add_option("--camera", o.camera, "camera distance of central projections")
        ->capture_default_str();
    command.add_option("--plane", o.plane, "position of the projection plane")
        ->capture_default_str();
    command.add_option("--stereo", o.stereo, "stereo factor of anaglyphs (not 0)")
        ->capture_default_str();
    command.add_option("--transect", o.transect, "slice number, -127..127")->capture_default_str();
    command
        .add_option("--transect-dir", o.transectDir, "axis across which the slice is cut: x|y|z")
        ->capture_default_str();
    command.add_flag("--transector", o.transector, "outline the slice on dot and volume pictures");
    command.add_flag("--coloured-transector", o.colouredTransector,
                     "draw the slice outline in colour");
    command.add_option("--quality", o.quality, "volume samples per ray: 0 (means 5) or 5..10")
        ->capture_default_str();
    command.add_flag("--preview", o.preview, "a quick volume preview instead of a final picture");
    command.add_flag("--prob-dots", o.probDots, "colour dots by probability level");
    command.add_flag("--prob-trans", o.probTrans,
                     "colour transects by probability level (with --prob-dots)");
}

int ParseView(const std::string& text, int32_t& view) {
    return ParseTableName("--view", VT_NAMES_VIEW, text, view);
}

int ApplyClock(const OrbitalOptions& o) {
    if (o.clockOption == nullptr || o.clockOption->count() == 0) return kExitOk;
    if (const int rc = CheckRange("--clock", o.clockMs, 32768, INT32_MAX)) return rc;
    FixClock(static_cast<int32_t>(o.clockMs));
    return kExitOk;
}

namespace {

/// The setup from the options, given the defaults of radius (0: the engine's) and threshold.
int SetupWith(const OrbitalOptions& o, int32_t view, int64_t radius, int64_t threshold,
              vt_OrbitalSetup& s) {
    if (o.radiusOption != nullptr && o.radiusOption->count() > 0) radius = o.radius;
    if (o.thresholdOption != nullptr && o.thresholdOption->count() > 0) threshold = o.threshold;
    if (radius != 0 || o.radiusOption == nullptr || o.radiusOption->count() > 0) {
        if (const int rc = CheckRange("--radius", radius, 1, INT16_MAX)) return rc;
    }
    if (const int rc = CheckRange("--dots", o.dots, 0, INT16_MAX)) return rc;
    if (const int rc = CheckRange("--threshold", threshold, 0, 255)) return rc;
    s = vt_OrbitalSetup{};
    s.AtomRadius = static_cast<int16_t>(radius);
    s.DotTarget = static_cast<int16_t>(o.dots);
    s.DotThreshold = static_cast<uint8_t>(threshold);
    s.OrbitalViewMode = view;
    return kExitOk;
}

}  // namespace

int MakeSetup(const OrbitalOptions& o, const vt_OrbInfo& info, int index, vt_OrbitalSetup& s) {
    int32_t view = VT_PDF;
    if (const int rc = ParseView(o.view, view)) return rc;
    const bool pdf = view == VT_PDF;
    if (const int rc =
            SetupWith(o, view, pdf ? info.DefaultPDFAtomRadius : info.DefaultDRPDFAtomRadius,
                      pdf ? info.DefaultPDFDotThreshold : info.DefaultDRPDFDotThreshold, s)) {
        return rc;
    }
    s.OrbitalIndex = static_cast<int16_t>(index);
    return kExitOk;
}

int MakeStateSetup(const OrbitalOptions& o, vt_OrbitalSetup& s) {
    int32_t view = VT_PDF;
    if (const int rc = ParseView(o.view, view)) return rc;
    // Radius 0 asks the engine for a cube holding 99.9 % of the probability; the threshold does
    // not thin a state's exact samples.
    return SetupWith(o, view, 0, 0, s);
}

int MakeRequest(const RequestOptions& o, vt_RenderRequest& r) {
    r = DefaultRequest();
    int32_t mode = 0, dir = 0, size = 0;
    if (const int rc = ParseTableName("--mode", VT_NAMES_MODE, o.mode, mode)) return rc;
    if (const int rc = ParseName<3>("--transect-dir", o.transectDir, {"x", "y", "z"}, dir)) {
        return rc;
    }
    if (const int rc = ParseTableName("--size", VT_NAMES_SIZE, o.size, size)) return rc;
    if (!std::isfinite(o.theta)) return UsageError("--theta", "must be a finite number");
    if (!std::isfinite(o.phi)) return UsageError("--phi", "must be a finite number");
    for (const auto& [name, value] : {std::pair{"--camera", o.camera}, {"--plane", o.plane}}) {
        if (const int rc = CheckRange(name, value, INT16_MIN, INT16_MAX)) return rc;
    }
    if (const int rc = CheckRange("--transect", o.transect, -127, 127)) return rc;
    if (o.quality != 0) {
        if (const int rc = CheckRange("--quality", o.quality, 5, 10)) return rc;
    }
    if (o.stereo == 0) return UsageError("--stereo", "must not be 0");
    if (const int rc = CheckRange("--stereo", o.stereo, INT16_MIN, INT16_MAX)) return rc;

    r.Theta = o.theta * std::numbers::pi / 180.0;
    r.Phi = o.phi * std::numbers::pi / 180.0;
    r.CameraPos = static_cast<int16_t>(o.camera);
    r.ProjectionPlane = static_cast<int16_t>(o.plane);
    r.TransectNo = static_cast<int16_t>(o.transect);
    r.Transector = Flag(o.transector);
    r.TransectDir = dir;
    r.Size = size;
    r.Mode = mode;
    r.VolQuality = static_cast<int16_t>(o.quality);
    r.VolFinal = Flag(!o.preview);
    r.ShowProbLevelOnDots = Flag(o.probDots);
    r.ShowProbLevelOnTrans = Flag(o.probTrans);
    r.UseColouredTransector = Flag(o.colouredTransector);
    r.StereoFactor = static_cast<int16_t>(o.stereo);
    return kExitOk;
}

}  // namespace vtcli
