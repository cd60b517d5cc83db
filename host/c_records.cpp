// Layout checks of the C records against the engine's records, and the catalogue entry's
// conversion (its name is the one field whose representation differs).
#include "host/c_records.h"

#include <cstddef>
#include <mutex>
#include <set>
#include <string>

namespace veltara::host {

// A C record and the engine's record of the same name must agree in size, alignment and the
// offset of every field, or the byte copies in c_records.h would scramble them.
#define VT_SAME_RECORD(C, Cpp) \
    static_assert(sizeof(C) == sizeof(Cpp) && alignof(C) == alignof(Cpp), #C " layout")
#define VT_SAME_FIELD(C, Cpp, field) \
    static_assert(offsetof(C, field) == offsetof(Cpp, field), #C "." #field " offset")

VT_SAME_RECORD(vt_RenderRequest, RenderRequest);
VT_SAME_FIELD(vt_RenderRequest, RenderRequest, Theta);
VT_SAME_FIELD(vt_RenderRequest, RenderRequest, Phi);
VT_SAME_FIELD(vt_RenderRequest, RenderRequest, CameraPos);
VT_SAME_FIELD(vt_RenderRequest, RenderRequest, ProjectionPlane);
VT_SAME_FIELD(vt_RenderRequest, RenderRequest, TransectNo);
VT_SAME_FIELD(vt_RenderRequest, RenderRequest, Transector);
VT_SAME_FIELD(vt_RenderRequest, RenderRequest, TransectDir);
VT_SAME_FIELD(vt_RenderRequest, RenderRequest, Size);
VT_SAME_FIELD(vt_RenderRequest, RenderRequest, Mode);
VT_SAME_FIELD(vt_RenderRequest, RenderRequest, VolQuality);
VT_SAME_FIELD(vt_RenderRequest, RenderRequest, VolFinal);
VT_SAME_FIELD(vt_RenderRequest, RenderRequest, ShowProbLevelOnDots);
VT_SAME_FIELD(vt_RenderRequest, RenderRequest, ShowProbLevelOnTrans);
VT_SAME_FIELD(vt_RenderRequest, RenderRequest, UseColouredTransector);
VT_SAME_FIELD(vt_RenderRequest, RenderRequest, StereoFactor);
static_assert(sizeof(vt_RenderRequest) == 48);

VT_SAME_RECORD(vt_RenderDCinfo, RenderDCinfo);
VT_SAME_FIELD(vt_RenderDCinfo, RenderDCinfo, MainHDC);
VT_SAME_FIELD(vt_RenderDCinfo, RenderDCinfo, NanoHDC);

VT_SAME_RECORD(vt_OrbitalSetup, OrbitalSetup);
VT_SAME_FIELD(vt_OrbitalSetup, OrbitalSetup, AtomRadius);
VT_SAME_FIELD(vt_OrbitalSetup, OrbitalSetup, DotTarget);
VT_SAME_FIELD(vt_OrbitalSetup, OrbitalSetup, DotThreshold);
VT_SAME_FIELD(vt_OrbitalSetup, OrbitalSetup, Reserved);
VT_SAME_FIELD(vt_OrbitalSetup, OrbitalSetup, OrbitalIndex);
VT_SAME_FIELD(vt_OrbitalSetup, OrbitalSetup, OrbitalViewMode);
static_assert(sizeof(vt_OrbitalSetup) == 12);

VT_SAME_RECORD(vt_OrbitalStats, OrbitalStats);
VT_SAME_FIELD(vt_OrbitalStats, OrbitalStats, FramesRendered);
VT_SAME_FIELD(vt_OrbitalStats, OrbitalStats, ProbFreqs);
VT_SAME_FIELD(vt_OrbitalStats, OrbitalStats, TotalSamples);
VT_SAME_FIELD(vt_OrbitalStats, OrbitalStats, Mode);
VT_SAME_FIELD(vt_OrbitalStats, OrbitalStats, Reserved);
VT_SAME_FIELD(vt_OrbitalStats, OrbitalStats, CalcTime);
VT_SAME_FIELD(vt_OrbitalStats, OrbitalStats, CalcRate);
VT_SAME_FIELD(vt_OrbitalStats, OrbitalStats, DotTarget);
VT_SAME_FIELD(vt_OrbitalStats, OrbitalStats, DotTotal);
VT_SAME_FIELD(vt_OrbitalStats, OrbitalStats, DotTime);
static_assert(sizeof(vt_OrbitalStats) == 1056);

VT_SAME_RECORD(vt_PointArray, PointArray);
VT_SAME_FIELD(vt_PointArray, PointArray, X);
VT_SAME_FIELD(vt_PointArray, PointArray, Y);
VT_SAME_FIELD(vt_PointArray, PointArray, Z);
VT_SAME_FIELD(vt_PointArray, PointArray, P);
VT_SAME_FIELD(vt_PointArray, PointArray, Reserved);

VT_SAME_RECORD(vt_RGBA, RGBA);
VT_SAME_FIELD(vt_RGBA, RGBA, B);
VT_SAME_FIELD(vt_RGBA, RGBA, G);
VT_SAME_FIELD(vt_RGBA, RGBA, R);
VT_SAME_FIELD(vt_RGBA, RGBA, A);

// vt_OrbInfo holds a pointer where OrbInfo holds a string, so it has a layout of its own: the
// engine's field order with the 16-bit fields after the pointer, two reserved bytes, then the
// three 32-bit enumerations.
constexpr size_t kPtr = sizeof(const char*);
static_assert(offsetof(vt_OrbInfo, Name) == 0);
static_assert(offsetof(vt_OrbInfo, DefaultPDFAtomRadius) == kPtr + 0);
static_assert(offsetof(vt_OrbInfo, DefaultDRPDFAtomRadius) == kPtr + 2);
static_assert(offsetof(vt_OrbInfo, DefaultPDFDotThreshold) == kPtr + 4);
static_assert(offsetof(vt_OrbInfo, DefaultDRPDFDotThreshold) == kPtr + 6);
static_assert(offsetof(vt_OrbInfo, n) == kPtr + 8);
static_assert(offsetof(vt_OrbInfo, l) == kPtr + 10);
static_assert(offsetof(vt_OrbInfo, M) == kPtr + 12);
static_assert(offsetof(vt_OrbInfo, Reserved) == kPtr + 14);
static_assert(offsetof(vt_OrbInfo, OrbType) == kPtr + 16);
static_assert(offsetof(vt_OrbInfo, PDFOptFactor) == kPtr + 20);
static_assert(offsetof(vt_OrbInfo, DRPDFOptFactor) == kPtr + 24);
static_assert(sizeof(vt_OrbInfo) == (kPtr == 8 ? 40 : 32));

namespace {

std::string ToUtf8(const std::u16string& text) {
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        uint32_t c = text[i];
        // A surrogate pair makes one code point; a lone surrogate becomes U+FFFD.
        if (c >= 0xD800 && c <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
            text[i + 1] <= 0xDFFF) {
            c = 0x10000 + ((c - 0xD800) << 10) + (text[i + 1] - 0xDC00u);
            ++i;
        } else if (c >= 0xD800 && c <= 0xDFFF) {
            c = 0xFFFD;
        }
        if (c < 0x80) {
            out += static_cast<char>(c);
        } else if (c < 0x800) {
            out += static_cast<char>(0xC0 | (c >> 6));
            out += static_cast<char>(0x80 | (c & 0x3F));
        } else if (c < 0x10000) {
            out += static_cast<char>(0xE0 | (c >> 12));
            out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (c & 0x3F));
        } else {
            out += static_cast<char>(0xF0 | (c >> 18));
            out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
            out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (c & 0x3F));
        }
    }
    return out;
}

/// One copy of each name for the life of the process: set nodes never move, so the pointers
/// handed out stay valid.
const char* Intern(const std::string& text) {
    static std::mutex mutex;
    static auto* names = new std::set<std::string>;
    std::lock_guard<std::mutex> lock(mutex);
    return names->insert(text).first->c_str();
}

}  // namespace

vt_OrbInfo ToC(const OrbInfo& info) {
    vt_OrbInfo out{};
    out.Name = Intern(ToUtf8(info.Name));
    out.DefaultPDFAtomRadius = info.DefaultPDFAtomRadius;
    out.DefaultDRPDFAtomRadius = info.DefaultDRPDFAtomRadius;
    out.DefaultPDFDotThreshold = info.DefaultPDFDotThreshold;
    out.DefaultDRPDFDotThreshold = info.DefaultDRPDFDotThreshold;
    out.n = info.n;
    out.l = info.l;
    out.M = info.M;
    out.OrbType = static_cast<int32_t>(info.OrbType);
    out.PDFOptFactor = static_cast<int32_t>(info.PDFOptFactor);
    out.DRPDFOptFactor = static_cast<int32_t>(info.DRPDFOptFactor);
    return out;
}

}  // namespace veltara::host
