// Transects of real orbitals against a reference read straight from the probability grid,
// compared pixel for pixel over whole pictures; and the transect's edge cases.
#include <cstdlib>
#include <span>

#include "picture_test_support.h"

namespace {

using namespace veltara;
using vt_test::Request;

/// The slice |TransectNo| across the request's axis, mirrored both ways about the centre:
/// Main one grid point per pixel in the middle 255 pixels, Nano every second point in 127.
std::vector<RGBA> ReferenceTransect(std::span<const uint8_t> grid, const RenderRequest& q,
                                    bool levels) {
    const bool nano = q.Size == RenderSize::Nano;
    const int32_t n = nano ? 127 : 375, c = n / 2, reach = nano ? 63 : 127, step = nano ? 2 : 1;
    const int32_t t = std::abs(q.TransectNo);
    std::vector<RGBA> img(static_cast<size_t>(n) * n);
    for (int32_t j = -reach; j <= reach; ++j) {
        for (int32_t i = -reach; i <= reach; ++i) {
            const int32_t a = std::abs(i) * step, b = std::abs(j) * step;
            int32_t x = a, y = b, z = t;  // Alongz: the X-Y plane
            if (q.TransectDir == TransectDirection::AlongX) x = t, y = a, z = b;
            if (q.TransectDir == TransectDirection::Alongy) x = a, y = t, z = b;
            const int32_t p = grid[(static_cast<size_t>(z) * 128 + y) * 128 + x];
            img[static_cast<size_t>(c + j) * n + c + i] =
                levels ? RGBA{0, static_cast<uint8_t>(p * p / 255),
                              static_cast<uint8_t>((255 - p) * p / 255), 0}
                       : vt_test::Grey(static_cast<uint8_t>(p));
        }
    }
    return img;
}

TEST(RenderTransect, WholePicturesMatchTheGridSlice) {
    vt_test::FixedClock clock(100000);
    cOrbitalCol col;
    // Companion: the picture of the other size shown before; levels only beside a plain
    // projection, and only when both flags are set.
    struct Case {
        int16_t orbital;
        ViewMode view;
        TransectDirection dir;
        int16_t slice;
        RenderMode companion;
        VbBool onDots, onTrans;
        bool levels;
    };
    using D = TransectDirection;
    using M = RenderMode;
    const Case cases[] = {
        {10, ViewMode::PDF, D::AlongX, 0, M::Orthographic, kTrue, kTrue, true},
        {6, ViewMode::PDF, D::Alongy, 17, M::Perspective, kTrue, kTrue, true},
        {7, ViewMode::PDF, D::Alongz, -17, M::Anaglyph, kTrue, kTrue, false},
        {7, ViewMode::DRPDF, D::Alongy, 40, M::Orthographic, kFalse, kTrue, false},
        {35, ViewMode::DRPDF, D::AlongX, 127, M::Volumetric, kTrue, kTrue, false},
        {9, ViewMode::PDF, D::Alongz, 5, M::Orthographic, kTrue, kFalse, false},
    };
    for (const Case& c : cases) {
        const int16_t i = col.Add(vt_test::Defaults(c.orbital, c.view, 2000));
        for (const RenderSize size : {RenderSize::Main, RenderSize::Nano}) {
            const RenderSize other = size == RenderSize::Main ? RenderSize::Nano : RenderSize::Main;
            RenderRequest companion = Request(c.companion, other);
            companion.VolQuality = 5;
            col.GetRender(i, companion);
            RenderRequest q = Request(RenderMode::Transect, size);
            q.TransectDir = c.dir;
            q.TransectNo = c.slice;
            q.ShowProbLevelOnDots = c.onDots;
            q.ShowProbLevelOnTrans = c.onTrans;
            EXPECT_EQ(
                vt_test::Differences(vt_test::Render(col, i, q),
                                     ReferenceTransect(col.Orbital(i).ProbMatrix(), q, c.levels)),
                0u)
                << c.orbital << " size " << static_cast<int>(size);
        }
    }
}

TEST(RenderTransect, EdgeCases) {
    vt_test::FixedClock clock(100000);
    cOrbitalCol col;
    col.Add(vt_test::Defaults(0, ViewMode::PDF, 3000));
    const RenderDCinfo before =
        col.GetRender(0, Request(RenderMode::Orthographic, RenderSize::Main));
    RenderRequest q = Request(RenderMode::Transect, RenderSize::Main);
    q.TransectNo = -32768;  // no absolute value in 16 bits
    EXPECT_VT_ERROR(col.GetRender(0, q), 6);
    q.TransectNo = 128;  // beyond the grid
    EXPECT_VT_ERROR(col.GetRender(0, q), 9);
    q.TransectNo = 0;
    q.Size = static_cast<RenderSize>(200);  // nothing drawn, the old handles returned
    EXPECT_EQ(col.GetRender(0, q).MainHDC, before.MainHDC);
    // A direction outside the three axes: a fresh black surface with its handle.
    q.Size = RenderSize::Nano;
    q.TransectDir = static_cast<TransectDirection>(3);
    EXPECT_EQ(vt_test::Differences(vt_test::Render(col, 0, q), std::vector<RGBA>(127 * 127)), 0u);
}

}  // namespace
