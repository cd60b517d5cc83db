// JSON of the public records.
#include "records_json.h"

#include <vector>

namespace vtjson {

using nlohmann::json;

std::string CommandName(const vt_OrbInfo& info) {
    return (info.OrbType == VT_AVERAGE_ORBS ? "av" : "") + std::string(info.Name);
}

json OrbInfoJson(const vt_OrbInfo& info, int index) {
    return {{"index", index},
            {"Name", info.Name},
            {"commandName", CommandName(info)},
            {"n", info.n},
            {"l", info.l},
            {"M", info.M},
            {"OrbType", info.OrbType == VT_AVERAGE_ORBS ? "AverageOrbs" : "SingleOrb"},
            {"DefaultPDFAtomRadius", info.DefaultPDFAtomRadius},
            {"DefaultDRPDFAtomRadius", info.DefaultDRPDFAtomRadius},
            {"DefaultPDFDotThreshold", info.DefaultPDFDotThreshold},
            {"DefaultDRPDFDotThreshold", info.DefaultDRPDFDotThreshold},
            {"PDFOptFactor", info.PDFOptFactor},
            {"DRPDFOptFactor", info.DRPDFOptFactor}};
}

json SetupJson(const vt_OrbitalSetup& s) {
    return {{"OrbitalIndex", s.OrbitalIndex},
            {"OrbitalViewMode", s.OrbitalViewMode == VT_DRPDF ? "DRPDF" : "PDF"},
            {"AtomRadius", s.AtomRadius},
            {"DotThreshold", s.DotThreshold},
            {"DotTarget", s.DotTarget}};
}

json StatsJson(const vt_OrbitalStats& s) {
    return {{"FramesRendered", s.FramesRendered},
            {"ProbFreqs", std::vector<int32_t>(s.ProbFreqs, s.ProbFreqs + 256)},
            {"TotalSamples", s.TotalSamples},
            {"Mode", s.Mode},
            {"CalcTime", s.CalcTime},
            {"CalcRate", s.CalcRate},
            {"DotTarget", s.DotTarget},
            {"DotTotal", s.DotTotal},
            {"DotTime", s.DotTime}};
}

std::string Dump(const json& value, int indent) {
    return value.dump(indent, ' ', false, json::error_handler_t::replace);
}

}  // namespace vtjson
