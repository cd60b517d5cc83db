// The catalogue's rows read as entries, states and names.
#include "electron/catalogue.h"

#include "support/error.h"

namespace veltara {

namespace {

const CatalogueRow& Row(int16_t index) {
    if (!IsCatalogueIndex(index)) Raise(kErrSubscript);
    return kCatalogueRows[index];
}

}  // namespace

OrbInfo CatalogueInfo(int16_t index) {
    const CatalogueRow& r = Row(index);
    OrbInfo info;
    info.Name = r.name;
    info.DefaultPDFAtomRadius = r.pdfRadius;
    info.DefaultDRPDFAtomRadius = r.drpdfRadius;
    info.DefaultPDFDotThreshold = r.pdfThreshold;
    info.DefaultDRPDFDotThreshold = r.drpdfThreshold;
    info.n = r.n;
    info.l = r.l;
    info.M = r.m;
    info.OrbType = r.shellAverage ? OrbitalType::AverageOrbs : OrbitalType::SingleOrb;
    info.PDFOptFactor = r.pdfOpt;
    info.DRPDFOptFactor = r.drpdfOpt;
    return info;
}

State CatalogueState(int16_t index) {
    const CatalogueRow& r = Row(index);
    State s;
    s.n = r.n;
    s.l = r.l;
    s.m = r.m;
    s.shellAverage = r.shellAverage;
    return s;
}

std::optional<int16_t> CatalogueIndexOf(const State& s) {
    if (s.Z != 1 || s.basis != Basis::Real) return std::nullopt;
    const int16_t row = CatalogueRowOf(s.n, s.l, s.m, s.shellAverage);
    if (row < 0) return std::nullopt;
    return row;
}

std::string CatalogueKey(int16_t index) {
    const CatalogueRow& r = Row(index);
    std::string key = r.shellAverage ? "av" : "";
    for (const char16_t* p = r.name; *p != 0; ++p) {
        const char16_t c = *p;
        if (c == u'\u00B2') {
            key += '2';
        } else if (c == u'\u00B3') {
            key += '3';
        } else if (c >= u'A' && c <= u'Z') {
            key += static_cast<char>(c - u'A' + u'a');
        } else {
            key += static_cast<char>(c);  // the names are ASCII apart from ² and ³
        }
    }
    return key;
}

}  // namespace veltara
