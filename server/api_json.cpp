// Checked reading of the viewer API's request bodies.
#include "api_json.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "records_json.h"

namespace vtserve {

using nlohmann::json;

json ApiError::ToJson() const {
    json j = {{"error", number}, {"message", message}};
    if (!field.empty()) j["field"] = field;
    return j;
}

ApiError CheckBodySize(uint64_t bytes) {
    if (bytes <= kMaxBodyBytes) return {};
    return {413, 6,
            "Overflow: the request body is larger than " + std::to_string(kMaxBodyBytes) + " bytes",
            ""};
}

std::string Echo(const std::string& text) {
    if (text.size() <= kMaxEchoBytes) return text;
    size_t end = kMaxEchoBytes;
    // Back to the first byte of a UTF-8 character (continuation bytes are 10xxxxxx).
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
    return text.substr(0, end) + "...";
}

ApiError EngineApiError(int32_t number, const std::string& context) {
    // An unknown or empty slot is a missing resource; everything else the engine refuses is a
    // well-formed request it cannot carry out.
    int status = 422;
    if (number == 9 || number == 91) status = 404;
    if (number == 7) status = 503;
    return {status, number, std::string(vt_error_text(number)) + " (while " + context + ")", ""};
}

namespace {

ApiError TypeError(const std::string& field, const std::string& expected) {
    return {400, 13, "Type mismatch: " + field + " must be " + expected, field};
}

ApiError RangeError(const std::string& field, const json& value, int64_t lo, int64_t hi) {
    return {422, 6,
            "Overflow: " + field + " " + vtjson::Dump(value) + " is outside " + std::to_string(lo) +
                ".." + std::to_string(hi),
            field};
}

std::string Lower(const std::string& text) {
    std::string out;
    for (char c : text) out += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return out;
}

/// Refuses fields the record does not have, so that a misspelt field is not silently ignored.
ApiError CheckFields(const json& body, std::initializer_list<const char*> known) {
    for (const auto& item : body.items()) {
        // A named copy: clang before 16 cannot capture a structured binding in a lambda.
        const std::string& key = item.key();
        const bool found =
            std::any_of(known.begin(), known.end(), [&](const char* name) { return key == name; });
        if (!found) {
            std::string list;
            for (const char* name : known) list += (list.empty() ? "" : ", ") + std::string(name);
            return {400, 5,
                    "Invalid procedure call or argument: unknown field '" + Echo(key) +
                        "' (known: " + list + ")",
                    Echo(key)};
        }
    }
    return {};
}

/// A whole number within [lo, hi]; an absent field keeps `out`. A number with a fraction is a
/// type mismatch: the fields are integers of stated widths.
ApiError ReadInt(const json& body, const char* field, int64_t lo, int64_t hi, int64_t& out) {
    const auto it = body.find(field);
    if (it == body.end()) return {};
    const json& v = *it;
    if (v.is_number_integer()) {
        // Unsigned values above the signed range are out of range too.
        if (v.is_number_unsigned() &&
            v.get<uint64_t>() > static_cast<uint64_t>(std::numeric_limits<int64_t>::max())) {
            return RangeError(field, v, lo, hi);
        }
        const int64_t n = v.get<int64_t>();
        if (n < lo || n > hi) return RangeError(field, v, lo, hi);
        out = n;
        return {};
    }
    if (v.is_number_float()) {
        const double d = v.get<double>();
        if (!std::isfinite(d) || d != std::floor(d)) return TypeError(field, "a whole number");
        if (d < static_cast<double>(lo) || d > static_cast<double>(hi)) {
            return RangeError(field, v, lo, hi);
        }
        out = static_cast<int64_t>(d);
        return {};
    }
    return TypeError(field, "a whole number");
}

ApiError ReadDouble(const json& body, const char* field, double& out) {
    const auto it = body.find(field);
    if (it == body.end()) return {};
    if (!it->is_number()) return TypeError(field, "a number");
    const double d = it->get<double>();
    if (!std::isfinite(d)) return TypeError(field, "a finite number");
    out = d;
    return {};
}

/// A 16-bit truth value: true/false, or any 16-bit number passed on as it is.
ApiError ReadFlag(const json& body, const char* field, int16_t& out) {
    const auto it = body.find(field);
    if (it == body.end()) return {};
    if (it->is_boolean()) {
        out = it->get<bool>() ? VT_TRUE : VT_FALSE;
        return {};
    }
    int64_t n = out;
    if (const ApiError e = ReadInt(body, field, INT16_MIN, INT16_MAX, n); e.failed()) {
        return e.number == 13 ? TypeError(field, "true, false or a 16-bit number") : e;
    }
    out = static_cast<int16_t>(n);
    return {};
}

/// The titles and values of the engine's table of names `table` (VT_NAMES_MODE, _VIEW, _SIZE).
std::vector<std::pair<std::string, int32_t>> TableNames(int32_t table) {
    std::vector<std::pair<std::string, int32_t>> names;
    int32_t rows = 0;
    vt_name_count(table, &rows);
    for (int32_t i = 0; i < rows; ++i) {
        vt_Name name{};
        if (vt_name(table, i, &name) == VT_OK) names.emplace_back(name.Title, name.Value);
    }
    return names;
}

/// An enumeration: one of its names (case-insensitive; several spellings may share a value)
/// or any 32-bit number, which the engine treats as its rules say.
ApiError ReadEnum(const json& body, const char* field,
                  const std::vector<std::pair<std::string, int32_t>>& names, int32_t& out) {
    const auto it = body.find(field);
    if (it == body.end()) return {};
    if (it->is_string()) {
        const std::string text = Lower(it->get<std::string>());
        std::string list;
        for (const auto& [name, value] : names) {
            if (text == Lower(name)) {
                out = value;
                return {};
            }
            list += (list.empty() ? "" : ", ") + name;
        }
        return {422, 5,
                std::string("Invalid procedure call or argument: ") + field + " '" +
                    Echo(it->get<std::string>()) + "' is not one of " + list,
                field};
    }
    int64_t n = out;
    if (const ApiError e = ReadInt(body, field, INT32_MIN, INT32_MAX, n); e.failed()) {
        return e.number == 13 ? TypeError(field, "a name or a 32-bit number") : e;
    }
    out = static_cast<int32_t>(n);
    return {};
}

}  // namespace

ApiError ParseBody(const std::string& body, json& out) {
    if (body.find_first_not_of(" \t\r\n") == std::string::npos) {
        out = json::object();
        return {};
    }
    out = json::parse(body, nullptr, /*allow_exceptions*/ false);
    if (out.is_discarded()) return {400, 13, "Type mismatch: the body is not valid JSON", ""};
    if (!out.is_object()) return {400, 13, "Type mismatch: the body must be a JSON object", ""};
    return {};
}

ApiError ParseRenderRequest(const json& body, vt_RenderRequest& r, PictureFormat& format) {
    if (const ApiError e = CheckFields(
            body, {"Theta", "Phi", "CameraPos", "ProjectionPlane", "TransectNo", "Transector",
                   "TransectDir", "Size", "Mode", "VolQuality", "VolFinal", "ShowProbLevelOnDots",
                   "ShowProbLevelOnTrans", "UseColouredTransector", "StereoFactor", "format"});
        e.failed()) {
        return e;
    }
    // Fields the body leaves out keep the engine's defaults.
    vt_render_request_init(&r);

    ApiError e;
    if ((e = ReadDouble(body, "Theta", r.Theta)).failed()) return e;
    if ((e = ReadDouble(body, "Phi", r.Phi)).failed()) return e;
    struct Short {
        const char* name;
        int16_t* field;
    };
    for (const Short& s :
         {Short{"CameraPos", &r.CameraPos}, Short{"ProjectionPlane", &r.ProjectionPlane},
          Short{"TransectNo", &r.TransectNo}, Short{"VolQuality", &r.VolQuality},
          Short{"StereoFactor", &r.StereoFactor}}) {
        int64_t n = *s.field;
        if ((e = ReadInt(body, s.name, INT16_MIN, INT16_MAX, n)).failed()) return e;
        *s.field = static_cast<int16_t>(n);
    }
    for (const Short& s : {Short{"Transector", &r.Transector}, Short{"VolFinal", &r.VolFinal},
                           Short{"ShowProbLevelOnDots", &r.ShowProbLevelOnDots},
                           Short{"ShowProbLevelOnTrans", &r.ShowProbLevelOnTrans},
                           Short{"UseColouredTransector", &r.UseColouredTransector}}) {
        if ((e = ReadFlag(body, s.name, *s.field)).failed()) return e;
    }
    if ((e = ReadEnum(body, "Mode", TableNames(VT_NAMES_MODE), r.Mode)).failed()) return e;
    if ((e = ReadEnum(body, "Size", TableNames(VT_NAMES_SIZE), r.Size)).failed()) return e;
    if ((e = ReadEnum(body, "TransectDir",
                      {{"AlongX", VT_ALONG_X},
                       {"Alongy", VT_ALONG_Y},
                       {"Alongz", VT_ALONG_Z},
                       {"x", VT_ALONG_X},
                       {"y", VT_ALONG_Y},
                       {"z", VT_ALONG_Z}},
                      r.TransectDir))
            .failed()) {
        return e;
    }

    format = PictureFormat::Bgra;
    if (const auto it = body.find("format"); it != body.end()) {
        if (!it->is_string()) return TypeError("format", "\"bgra\" or \"png\"");
        const std::string f = Lower(it->get<std::string>());
        if (f == "png") {
            format = PictureFormat::Png;
        } else if (f != "bgra") {
            return {422, 5, "Invalid procedure call or argument: format must be bgra or png",
                    "format"};
        }
    }
    return {};
}

namespace {

/// The view, radius, threshold and target of an add, from the given defaults; the radius may
/// be as small as `minRadius` (0: the engine's own default for a state).
ApiError ReadSetupFields(const json& body, int64_t minRadius, int64_t radius, int64_t threshold,
                         int32_t view, vt_OrbitalSetup& s) {
    ApiError e;
    int64_t target = 10000;
    if ((e = ReadInt(body, "AtomRadius", minRadius, INT16_MAX, radius)).failed()) return e;
    if ((e = ReadInt(body, "DotThreshold", 0, 255, threshold)).failed()) return e;
    if ((e = ReadInt(body, "DotTarget", 0, INT16_MAX, target)).failed()) return e;
    s = vt_OrbitalSetup{};
    s.AtomRadius = static_cast<int16_t>(radius);
    s.DotTarget = static_cast<int16_t>(target);
    s.DotThreshold = static_cast<uint8_t>(threshold);
    s.OrbitalViewMode = view;
    return {};
}

/// OrbitalViewMode: PDF (the default) or DRPDF.
ApiError ReadView(const json& body, int32_t& view) {
    view = VT_PDF;
    if (const ApiError e = ReadEnum(body, "OrbitalViewMode", TableNames(VT_NAMES_VIEW), view);
        e.failed()) {
        return e;
    }
    if (view != VT_PDF && view != VT_DRPDF) {
        return {422, 5, "Invalid procedure call or argument: OrbitalViewMode must be PDF or DRPDF",
                "OrbitalViewMode"};
    }
    return {};
}

}  // namespace

ApiError ParseSetup(const json& body, const vt_OrbInfo catalogue[VT_CATALOGUE_SIZE],
                    vt_OrbitalSetup& s) {
    if (const ApiError e = CheckFields(
            body, {"OrbitalIndex", "OrbitalViewMode", "AtomRadius", "DotThreshold", "DotTarget"});
        e.failed()) {
        return e;
    }
    if (!body.contains("OrbitalIndex")) {
        return {400, 5, "Invalid procedure call or argument: OrbitalIndex is required",
                "OrbitalIndex"};
    }
    ApiError e;
    int64_t index = 0;
    if ((e = ReadInt(body, "OrbitalIndex", 0, VT_CATALOGUE_SIZE - 1, index)).failed()) return e;
    int32_t view = VT_PDF;
    if ((e = ReadView(body, view)).failed()) return e;
    const vt_OrbInfo& info = catalogue[index];
    const bool pdf = view == VT_PDF;
    if ((e = ReadSetupFields(body, 1, pdf ? info.DefaultPDFAtomRadius : info.DefaultDRPDFAtomRadius,
                             pdf ? info.DefaultPDFDotThreshold : info.DefaultDRPDFDotThreshold,
                             view, s))
            .failed()) {
        return e;
    }
    s.OrbitalIndex = static_cast<int16_t>(index);
    return {};
}

ApiError ParseStateSetup(const json& body, std::string& text, double& time, vt_OrbitalSetup& s) {
    if (const ApiError e = CheckFields(
            body, {"State", "Time", "OrbitalViewMode", "AtomRadius", "DotThreshold", "DotTarget"});
        e.failed()) {
        return e;
    }
    const auto state = body.find("State");
    if (state == body.end() || !state->is_string()) {
        return TypeError("State", "a text such as \"7,3,-2\" (see docs/states.md)");
    }
    text = state->get<std::string>();
    if (text.size() > kMaxStateText) {
        return {422, 5,
                "Invalid procedure call or argument: State is longer than " +
                    std::to_string(kMaxStateText) + " bytes",
                "State"};
    }
    time = 0;
    if (const auto t = body.find("Time"); t != body.end()) {
        if (!t->is_number() || !std::isfinite(t->get<double>())) {
            return TypeError("Time", "a finite number (hbar/E_h)");
        }
        time = t->get<double>();
    }
    int32_t view = VT_PDF;
    if (const ApiError e = ReadView(body, view); e.failed()) return e;
    return ReadSetupFields(body, 0, 0, 0, view, s);
}

ApiError ParseRefill(const json& body, uint8_t& threshold, int32_t& target) {
    if (const ApiError e = CheckFields(body, {"Threshold", "Target"}); e.failed()) return e;
    for (const char* field : {"Threshold", "Target"}) {
        if (!body.contains(field)) {
            return {400, 5,
                    std::string("Invalid procedure call or argument: ") + field + " is required",
                    field};
        }
    }
    int64_t t = 0, n = 0;
    ApiError e;
    if ((e = ReadInt(body, "Threshold", 0, 255, t)).failed()) return e;
    if ((e = ReadInt(body, "Target", 0, INT16_MAX, n)).failed()) return e;
    threshold = static_cast<uint8_t>(t);
    target = static_cast<int32_t>(n);
    return {};
}

}  // namespace vtserve
