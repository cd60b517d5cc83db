// veltara list: the orbital catalogue as a table or as JSON.
#include <cstdio>
#include <nlohmann/json.hpp>

#include "commands.h"
#include "orbital_names.h"
#include "session.h"

namespace vtcli {

const char* OptFactorName(int32_t factor) {
    static const char* const kNames[] = {"F8", "F16xy", "F16yz", "F16xz", "F32"};
    return factor >= 0 && factor < 5 ? kNames[factor] : "?";
}

namespace {

/// Pads UTF-8 text to `width` columns (one column per code point).
std::string Pad(const std::string& text, size_t width) {
    size_t columns = 0;
    for (unsigned char c : text) columns += (c & 0xC0) != 0x80;
    return text + std::string(columns < width ? width - columns : 0, ' ');
}

nlohmann::json ViewJson(int radius, int threshold, int32_t factor) {
    return {{"radius", radius}, {"threshold", threshold}, {"opt_factor", OptFactorName(factor)}};
}

}  // namespace

int RunList(const ListArgs& args) {
    Session session;
    if (const int rc = OpenSession(session)) return rc;
    const auto& entries = session.catalogue.entries;

    if (args.json) {
        nlohmann::json list = nlohmann::json::array();
        for (size_t i = 0; i < entries.size(); ++i) {
            const vt_OrbInfo& e = entries[i];
            list.push_back({
                {"index", i},
                {"name", e.Name},
                {"key", CommandName(e)},
                {"n", e.n},
                {"l", e.l},
                {"M", e.M},
                {"type", e.OrbType == VT_AVERAGE_ORBS ? "average" : "single"},
                {NameKey(VT_NAMES_VIEW, VT_PDF),
                 ViewJson(e.DefaultPDFAtomRadius, e.DefaultPDFDotThreshold, e.PDFOptFactor)},
                {NameKey(VT_NAMES_VIEW, VT_DRPDF),
                 ViewJson(e.DefaultDRPDFAtomRadius, e.DefaultDRPDFDotThreshold, e.DRPDFOptFactor)},
            });
        }
        std::printf("%s\n", list.dump(2).c_str());
        return kExitOk;
    }

    std::printf(
        "index  name          n  l   M  type     pdf radius/threshold  "
        "drpdf radius/threshold  pdf opt  drpdf opt\n");
    for (size_t i = 0; i < entries.size(); ++i) {
        const vt_OrbInfo& e = entries[i];
        std::printf("%5zu  %s %2d %2d %3d  %-7s  %10d/%-9d  %12d/%-9d  %-7s  %s\n", i,
                    Pad(CommandName(e), 12).c_str(), e.n, e.l, e.M,
                    e.OrbType == VT_AVERAGE_ORBS ? "average" : "single", e.DefaultPDFAtomRadius,
                    e.DefaultPDFDotThreshold, e.DefaultDRPDFAtomRadius, e.DefaultDRPDFDotThreshold,
                    OptFactorName(e.PDFOptFactor), OptFactorName(e.DRPDFOptFactor));
    }
    return kExitOk;
}

}  // namespace vtcli
