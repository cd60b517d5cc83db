// The viewer API's request bodies read into engine records with checked widths, and its errors.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>

#include "veltara.h"

namespace vtserve {

/// The largest request body the server reads, in bytes.
inline constexpr size_t kMaxBodyBytes = 64 * 1024;
/// The most bytes of request text that an error message repeats.
inline constexpr size_t kMaxEchoBytes = 200;

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

/// The one check of a request body's size, stated or read so far: 413 (6) above kMaxBodyBytes.
ApiError CheckBodySize(uint64_t bytes);

/// Request text as an error repeats it: at most kMaxEchoBytes bytes, cut before a character
/// that would cross the bound, then "...".
std::string Echo(const std::string& text);

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

/// The longest state text a request may carry.
inline constexpr size_t kMaxStateText = 1000;

/// Reads the setup of a state in the engine's text form: State (required, a text such as
/// "7,3,-2", at most 1000 bytes; see docs/states.md), Time (hbar/E_h, default 0),
/// OrbitalViewMode, AtomRadius (0..32767, 0: a cube holding 99.9 % of the probability),
/// DotThreshold (0..255, default 0), DotTarget (0..32767, default 10000). The text itself is
/// read by the engine afterwards.
ApiError ParseStateSetup(const nlohmann::json& body, std::string& text, double& time,
                         vt_OrbitalSetup& setup);

/// Reads a refill: Threshold (0..255) and Target (0..32767), both required.
ApiError ParseRefill(const nlohmann::json& body, uint8_t& threshold, int32_t& target);

}  // namespace vtserve
