// The engine's public enumerations and records: every value that crosses its interface.
//
// Layouts are part of the interface (hosts in other languages allocate these records), so each
// record's size and field offsets are checked at compile time below.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace veltara {

/// 16-bit truth value: true is -1 (all bits set), false is 0.
using VbBool = int16_t;
inline constexpr VbBool kTrue = -1;
inline constexpr VbBool kFalse = 0;

// Enumerations are 32-bit signed; a field of one may hold any 32-bit value, and the code that
// reads it says what happens to values outside the enumeration.

enum class RenderMode : int32_t {
    Orthographic = 0,
    Perspective = 1,
    Anaglyph = 2,
    Volumetric = 3,
    Transect = 4,
};

/// Edge length in pixels: the value itself is the pixel count.
enum class RenderSize : int32_t {
    Main = 375,
    Nano = 128,
};

/// The axis across which a transect is cut (the lower-case y and z are the interface's own).
enum class TransectDirection : int32_t {
    AlongX = 0,
    Alongy = 1,
    Alongz = 2,
};

enum class OrbitalType : int32_t {
    SingleOrb = 0,
    AverageOrbs = 1,
};

/// The quantity shown: the probability density or the radially weighted density.
enum class ViewMode : int32_t {
    PDF = 0,
    DRPDF = 1,
};

/// Symmetry class of a view, used to shorten the sampling of the probability grid.
enum class OptFactor : int32_t {
    F8 = 0,
    F16xy = 1,
    F16yz = 2,
    F16xz = 3,
    F32 = 4,
};

/// One picture that the caller asks for (48 bytes).
struct RenderRequest {
    double Theta = 0;             ///< first viewing angle, radians
    double Phi = 0;               ///< second viewing angle, radians
    int16_t CameraPos = 0;        ///< camera distance for central projections
    int16_t ProjectionPlane = 0;  ///< Y of the plane central projections draw onto
    int16_t TransectNo = 0;       ///< slice index (taken by absolute value)
    VbBool Transector = kFalse;   ///< draw the slice outline on dot and volume pictures
    TransectDirection TransectDir = TransectDirection::AlongX;
    RenderSize Size = RenderSize::Main;  ///< 375 selects the main surface, anything else the small
    RenderMode Mode = RenderMode::Orthographic;
    int16_t VolQuality = 0;    ///< volume samples per ray: 0 (means 5) or 5..10
    VbBool VolFinal = kFalse;  ///< a finished volume picture, not a preview
    VbBool ShowProbLevelOnDots = kFalse;
    VbBool ShowProbLevelOnTrans = kFalse;
    VbBool UseColouredTransector = kFalse;
    int16_t StereoFactor = 0;  ///< divisor of the eye separation of anaglyphs
};

/// The request a host starts from: the main picture, orthographic, seen from angles 0, camera
/// 400, projection plane 200, stereo factor 20, volume quality 10, finished. Every host (the C
/// interface, the command, the server, the page) takes its defaults from here.
inline constexpr RenderRequest DefaultRenderRequest() {
    RenderRequest r;
    r.CameraPos = 400;
    r.ProjectionPlane = 200;
    r.StereoFactor = 20;
    r.VolQuality = 10;
    r.VolFinal = kTrue;
    return r;
}

/// Device handles of a renderer's two surfaces as last drawn (0 before the first picture).
struct RenderDCinfo {
    int32_t MainHDC = 0;
    int32_t NanoHDC = 0;
};

/// How to add an orbital.
struct OrbitalSetup {
    int16_t AtomRadius = 0;    ///< half the edge of the sampled cube, Bohr radii
    int16_t DotTarget = 0;     ///< dots wanted
    uint8_t DotThreshold = 0;  ///< lowest scaled probability a dot may have (unsigned)
    uint8_t Reserved = 0;
    int16_t OrbitalIndex = 0;  ///< catalogue index, 0 .. the catalogue size - 1
    ViewMode OrbitalViewMode = ViewMode::PDF;
};

/// Statistics of one orbital's renderer (1056 bytes).
struct OrbitalStats {
    int32_t FramesRendered = 0;   ///< GetRender calls served, saturating at 2147483647
    int32_t ProbFreqs[256] = {};  ///< grid samples (with mirror images) per probability level
    int32_t TotalSamples = 0;     ///< always 2097152
    uint8_t Mode = 0;             ///< the most frequent level (lowest on a tie)
    uint8_t Reserved[3] = {};
    int32_t CalcTime = 0;   ///< ms spent on the probability grid (at least 1)
    int32_t CalcRate = 0;   ///< samples per ms
    int32_t DotTarget = 0;  ///< dots asked for
    int32_t DotTotal = 0;   ///< dots held
    int32_t DotTime = 0;    ///< ms spent filling the dot cloud
};

/// One catalogue entry. Name is UTF-16 here; the C interface hands out UTF-8.
struct OrbInfo {
    std::u16string Name;
    int16_t DefaultPDFAtomRadius = 0;
    int16_t DefaultDRPDFAtomRadius = 0;
    int16_t DefaultPDFDotThreshold = 0;
    int16_t DefaultDRPDFDotThreshold = 0;
    int16_t n = 0;
    int16_t l = 0;
    int16_t M = 0;
    OrbitalType OrbType = OrbitalType::SingleOrb;
    OptFactor PDFOptFactor = OptFactor::F8;
    OptFactor DRPDFOptFactor = OptFactor::F8;

    bool operator==(const OrbInfo&) const = default;
};

/// A point in space, Bohr radii.
struct COORDdouble {
    double X = 0, Y = 0, Z = 0;
};

/// Squares of a point's coordinates: what the wavefunctions are evaluated at.
struct COORDdoubleParams {
    double Xs = 0, Ys = 0, Zs = 0;
};

/// An integer point (camera and projected points).
struct COORDlong {
    int32_t X = 0, Y = 0, Z = 0;
};

/// One dot of a dot cloud: grid coordinates -127..127 and its probability level.
struct PointArray {
    int16_t X = 0, Y = 0, Z = 0;
    uint8_t P = 0;
    uint8_t Reserved = 0;

    bool operator==(const PointArray&) const = default;
};

/// One pixel in the byte order of a 32-bit device-independent bitmap.
struct RGBA {
    uint8_t B = 0, G = 0, R = 0, A = 0;

    bool operator==(const RGBA&) const = default;
};

// Layout checks: hosts rely on these sizes and offsets.
static_assert(sizeof(RenderRequest) == 48);
static_assert(offsetof(RenderRequest, CameraPos) == 16);
static_assert(offsetof(RenderRequest, Transector) == 22);
static_assert(offsetof(RenderRequest, TransectDir) == 24);
static_assert(offsetof(RenderRequest, Size) == 28);
static_assert(offsetof(RenderRequest, Mode) == 32);
static_assert(offsetof(RenderRequest, VolQuality) == 36);
static_assert(offsetof(RenderRequest, StereoFactor) == 46);
static_assert(sizeof(RenderDCinfo) == 8 && offsetof(RenderDCinfo, NanoHDC) == 4);
static_assert(sizeof(OrbitalSetup) == 12);
static_assert(offsetof(OrbitalSetup, DotThreshold) == 4);
static_assert(offsetof(OrbitalSetup, OrbitalIndex) == 6);
static_assert(offsetof(OrbitalSetup, OrbitalViewMode) == 8);
static_assert(sizeof(OrbitalStats) == 1056);
static_assert(offsetof(OrbitalStats, ProbFreqs) == 4);
static_assert(offsetof(OrbitalStats, TotalSamples) == 1028);
static_assert(offsetof(OrbitalStats, Mode) == 1032);
static_assert(offsetof(OrbitalStats, CalcTime) == 1036);
static_assert(offsetof(OrbitalStats, DotTime) == 1052);
static_assert(sizeof(COORDdouble) == 24 && sizeof(COORDdoubleParams) == 24);
static_assert(sizeof(COORDlong) == 12);
static_assert(sizeof(PointArray) == 8 && alignof(PointArray) == 2 && offsetof(PointArray, P) == 6);
static_assert(sizeof(RGBA) == 4 && alignof(RGBA) == 1 && offsetof(RGBA, A) == 3);

}  // namespace veltara
