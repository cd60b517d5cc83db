// The dot projections of real orbitals' clouds against a reference written from the description
// of the view transform and the projection, compared pixel for pixel over whole pictures; and
// the dot picture's edge cases.
#include <algorithm>
#include <cmath>
#include <span>

#include "picture_test_support.h"

namespace {

using namespace veltara;
using vt_test::Request;

/// Where the line from the camera (camX, camY, 0) through (x, y, z) meets the plane Y = plane,
/// as a rounded column and row; nothing is written when the point lies 0 to 1 before the camera.
void Project(double camX, double camY, double x, double y, double z, int32_t plane, int32_t* at) {
    const double dY = y - camY;
    if (std::floor(dY) == 0) return;
    const auto t = static_cast<float>((plane - camY) / dY);
    at[0] = static_cast<int32_t>(std::nearbyint((x - camX) * t + camX));
    at[1] = static_cast<int32_t>(std::nearbyint(z * t));
}

/// The dot picture of a request, rows from the top: the cloud turned about X by Theta, then
/// about Z by Phi; X across, Z up, Y the depth that darkens a dot.
std::vector<RGBA> ReferenceDots(std::span<const PointArray> dots, const RenderRequest& q) {
    const bool nano = q.Size == RenderSize::Nano;
    const int32_t n = nano ? 127 : 375;
    const int32_t c = n / 2;
    std::vector<RGBA> img(static_cast<size_t>(n) * n);
    double maxR2 = 0;
    for (const PointArray& d : dots)
        maxR2 = std::max(maxR2, 1.0 * (d.X * d.X + d.Y * d.Y + d.Z * d.Z));
    const double k = 127 / std::sqrt(maxR2);
    const double cT = std::cos(q.Theta), sT = std::sin(q.Theta);
    const double cP = std::cos(q.Phi), sP = std::sin(q.Phi);
    const double eye =
        std::nearbyint(std::abs(q.ProjectionPlane - q.CameraPos) / (-1.0 * q.StereoFactor));
    const double half = nano ? 2.0 : 1.0;
    int32_t at[3][2] = {};  // the last place of the centre camera and of each eye
    auto pixel = [&](const int32_t* place) -> RGBA* {
        if (std::abs(place[0]) > c || std::abs(place[1]) > c) return nullptr;
        return &img[static_cast<size_t>(c - place[1]) * n + (c + place[0])];
    };
    for (const PointArray& d : dots) {
        const double x = d.X, y = d.Y, z = d.Z;
        const double across = z * (sT * sP) + x * cP + y * (cT * sP);
        const double up = z * cT - y * sT;
        const double depth = z * (sT * cP) - sP * x + y * (cT * cP);
        const double shade = 128 - depth * k;
        if (q.Mode == RenderMode::Anaglyph) {
            const auto s = static_cast<uint8_t>(std::nearbyint(shade));
            Project(eye, q.CameraPos, across / half, depth / half, up / half, q.ProjectionPlane,
                    at[1]);
            Project(-eye, q.CameraPos, across / half, depth / half, up / half, q.ProjectionPlane,
                    at[2]);
            if (RGBA* p = pixel(at[1])) p->G |= s;
            if (RGBA* p = pixel(at[2])) p->R |= s;
            continue;
        }
        int32_t place[2] = {static_cast<int32_t>(std::floor(across)),
                            static_cast<int32_t>(std::floor(up))};
        if (q.Mode == RenderMode::Perspective) {
            Project(0, q.CameraPos, across / half, depth / half, up / half, q.ProjectionPlane,
                    at[0]);
            std::copy(at[0], at[0] + 2, place);
        } else if (nano) {
            place[0] /= 2;
            place[1] /= 2;
        }
        RGBA* p = pixel(place);
        if (p == nullptr) continue;
        if (q.ShowProbLevelOnDots != kFalse) {
            const auto s = static_cast<int32_t>(std::nearbyint(shade));
            p->G |= static_cast<uint8_t>(d.P * s / 255);
            p->R |= static_cast<uint8_t>((255 - d.P) * s / 255);
        } else {
            p->G |= static_cast<uint8_t>(std::nearbyint(shade));
            p->B = p->R = p->G;
        }
    }
    return img;
}

TEST(RenderDots, WholePicturesMatchTheReferenceProjection) {
    vt_test::FixedClock clock(100000);
    // One orbital of each symmetry class, both views.
    const std::pair<int16_t, ViewMode> orbitals[] = {{10, ViewMode::PDF},
                                                     {9, ViewMode::PDF},
                                                     {6, ViewMode::PDF},
                                                     {7, ViewMode::DRPDF},
                                                     {35, ViewMode::DRPDF}};
    const RenderMode modes[] = {RenderMode::Orthographic, RenderMode::Perspective,
                                RenderMode::Anaglyph};
    cOrbitalCol col;
    for (const auto& [index, view] : orbitals) {
        const int16_t i = col.Add(vt_test::Defaults(index, view));
        const auto dots = col.Orbital(i).Dots();
        for (const RenderMode mode : modes) {
            for (const RenderSize size : {RenderSize::Main, RenderSize::Nano}) {
                RenderRequest q = Request(mode, size, 0.3 * index, 1.1 - 0.1 * index);
                q.ShowProbLevelOnDots = index % 2 == 0 ? kTrue : kFalse;
                EXPECT_EQ(vt_test::Differences(vt_test::Render(col, i, q), ReferenceDots(dots, q)),
                          0u)
                    << index << " mode " << static_cast<int>(mode) << " size "
                    << static_cast<int>(size);
            }
        }
        // A camera 20 before the plane at square angles: dots at depth -20 are not projected and
        // take the place of the dot before them.
        RenderRequest near = Request(RenderMode::Perspective, RenderSize::Main, 0.0, 0.0);
        near.CameraPos = -20;
        EXPECT_EQ(vt_test::Differences(vt_test::Render(col, i, near), ReferenceDots(dots, near)),
                  0u);
    }
}

TEST(RenderDots, EdgeCases) {
    vt_test::FixedClock clock(100000);
    cOrbitalCol col;
    col.Add(vt_test::Defaults(0, ViewMode::PDF, 3000));
    const RenderDCinfo before =
        col.GetRender(0, Request(RenderMode::Orthographic, RenderSize::Nano));
    struct Case {
        const char* what;
        void (*edit)(RenderRequest&);
        int error;  // 0: renders
    };
    const Case cases[] = {
        {"anaglyph with no stereo factor divides by zero",
         [](RenderRequest& q) { q.Mode = RenderMode::Anaglyph, q.StereoFactor = 0; }, 11},
        {"an angle without a cosine", [](RenderRequest& q) { q.Theta = INFINITY; }, 5},
        {"size 200 draws nothing", [](RenderRequest& q) { q.Size = static_cast<RenderSize>(200); },
         0},
    };
    for (const Case& c : cases) {
        RenderRequest q = Request(RenderMode::Orthographic, RenderSize::Main);
        c.edit(q);
        if (c.error != 0) {
            EXPECT_VT_ERROR(col.GetRender(0, q), c.error);
        } else {
            const RenderDCinfo after = col.GetRender(0, q);
            EXPECT_EQ(after.NanoHDC, before.NanoHDC) << c.what;
            EXPECT_EQ(after.MainHDC, before.MainHDC) << c.what;
        }
    }
    // A mode outside the enumeration draws no dot: a black frame, and the outline when asked.
    // Square on, Alongy slice 0 spans columns and rows 60..314 at shade 128; the white outline
    // adds its shade, so the corners, where two edges meet, saturate at 255.
    RenderRequest q = Request(static_cast<RenderMode>(7), RenderSize::Main, 0.0, 0.0);
    EXPECT_EQ(vt_test::Differences(vt_test::Render(col, 0, q), std::vector<RGBA>(375 * 375)), 0u);
    q.Transector = kTrue;
    std::vector<RGBA> square(375 * 375);
    for (int32_t a = 60; a <= 314; ++a) {
        for (const int32_t b : {60, 314}) {
            square[a * 375 + b] = square[b * 375 + a] = vt_test::Grey(128);
        }
    }
    for (const int32_t corner : {60 * 375 + 60, 60 * 375 + 314, 314 * 375 + 60, 314 * 375 + 314}) {
        square[corner] = vt_test::Grey(255);
    }
    EXPECT_EQ(vt_test::Differences(vt_test::Render(col, 0, q), square), 0u);
}

}  // namespace
