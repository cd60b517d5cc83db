// The viewer API's request bodies read into engine records with checked widths, and its errors.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>

#include "veltara.h"

namespace vtserve {

/// The largest request body the server reads, in bytes.
inline constexpr size_t kMaxBodyBytes = 64 * 1024;

/// A request the API refuses: the HTTP status, the engine-style error number (6 a value outside
/// its field's width, 13 a value of the wrong type or malformed JSON, 5 an unknown field, name
/// or route, 9 an unknown orbital handle, or the engine's own number) and a message that names
/// the field.
struct ApiError {
    int status = 0;
    int32_t number = 0;
    std::string message;
    std::string field;

    bool failed() const { return number != 0; }
    nlohmann::json ToJson() const;
};

/// The API error of an engine error number, with what the server was doing.
ApiError EngineApiError(int32_t number, const std::string& context);

/// Parses a request body: empty means {}; anything but a JSON object is refused (13, 400).
ApiError ParseBody(const std::string& body, nlohmann::json& out);

/// The picture format of a render: raw BGRA rows (top first) or PNG.
enum class PictureFormat { Bgra, Png };

/// Reads a render request: every field of vt_RenderRequest under its own name, all optional
/// (defaults: angles 0, CameraPos 400, ProjectionPlane 200, StereoFactor 20, VolQuality 10,
/// VolFinal true, Size Main, Mode Orthographic, other flags false), plus "format" ("bgra" or
/// "png"). Angles are radians; enumerations take their names or any 32-bit number; flags take
/// true/false or a 16-bit number.
ApiError ParseRenderRequest(const nlohmann::json& body, vt_RenderRequest& request,
                            PictureFormat& format);

/// Reads an orbital setup: OrbitalIndex (0..39, required), OrbitalViewMode ("PDF", "DRPDF",
/// 0 or 1; default PDF), AtomRadius (1..32767), DotThreshold (0..255), DotTarget (0..32767,
/// default 10000). Radius and threshold default to the catalogue's values for the view.
ApiError ParseSetup(const nlohmann::json& body, const vt_OrbInfo catalogue[VT_CATALOGUE_SIZE],
                    vt_OrbitalSetup& setup);

/// Reads a refill: Threshold (0..255) and Target (0..32767), both required.
ApiError ParseRefill(const nlohmann::json& body, uint8_t& threshold, int32_t& target);

}  // namespace vtserve
