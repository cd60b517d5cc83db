// cMemoryDCEx: row mapping, band copies, whole-picture copies, handles and scaling copies.
#include <cstdint>
#include <string>
#include <vector>

#include "support/cMemoryDCEx.h"
#include "test_support.h"

namespace {

using namespace veltara;

constexpr int32_t kMin32 = -2147483647 - 1, kMax32 = 2147483647;

// Source element k is the pixel 'a' + k, its four bytes all different (alpha included).
RGBA Px(char c) {
    const auto b = static_cast<uint8_t>(c);
    return {b, uint8_t(b + 1), uint8_t(b + 2), uint8_t(b + 3)};
}
std::vector<RGBA> Source(int n) {
    std::vector<RGBA> v;
    for (int k = 0; k < n; ++k) v.push_back(Px(char('a' + k)));
    return v;
}

// Every row from the top as GetBits gives it, the spare row last: '.' for a zero pixel.
std::string Picture(const cMemoryDCEx& s) {
    std::string out;
    for (int32_t y = 0; y <= s.Height(); ++y) {
        for (const RGBA& p : s.GetBits(y))
            out += p == RGBA{} ? '.' : p == Px(char(p.B)) ? char(p.B) : '?';
        if (y < s.Height()) out += '/';
    }
    return out;
}

TEST(cMemoryDCEx, SetBitsWritesBandsUpwardsWithTheFullWidthAsStride) {
    // A 5 x 4 picture and its spare row; pictures worked by hand.
    const struct {
        int n;  // source elements
        int32_t x, y, scanLines, length, error;
        const char* picture;
    } cases[] = {
        {15, 0, 3, 3, 0, 0, "...../klmno/fghij/abcde/....."},
        {10, 1, 2, 2, 3, 0, "...../.fgh./.abc./...../....."},  // source rows 5 apart
        {5, -2, 1, 1, 4, 0, "...../cd.../...../...../....."},
        {5, 3, 2, 1, 0, 0, "...../...../...ab/...../....."},   // Length 0: Width - X
        {10, 0, 2, 1, 9, 0, "...../...../abcde/...../....."},  // never past the row
        {20, 0, 1, 4, 0, 0, "fghij/abcde/...../...../....."},
        {20, 0, 6, 4, 0, 0, "...../...../...../pqrst/klmno"},  // into the spare row
        {7, 0, 3, 3, 0, 0, "...../...../fg.../abcde/....."},   // the array runs out
        {20, 0, 3, kMax32, 0, 0, "pqrst/klmno/fghij/abcde/....."},
        {20, -3, 1, 2, kMax32, 0, "ij.../de.../...../...../....."},
        {20, kMin32, 0, 1, 0, 6, "...../...../...../...../....."},  // Width - X overflows
        {20, 0, kMin32, 1, 0, 6, "...../...../...../...../....."},  // Height + 1 - Y
        {0, 0, 0, 1, 0, 9, "...../...../...../...../....."},
    };
    for (const auto& c : cases) {
        cMemoryDCEx s;
        s.Create(5, 4);
        if (c.error != 0) {
            EXPECT_VT_ERROR(s.SetBits(Source(c.n), c.x, c.y, c.scanLines, c.length), c.error);
        } else {
            s.SetBits(Source(c.n), c.x, c.y, c.scanLines, c.length);
        }
        EXPECT_EQ(Picture(s), c.picture) << c.n << " " << c.x << " " << c.y << " " << c.scanLines;
    }
}

TEST(cMemoryDCEx, WholePictureCopiesRunBottomUpAndLeaveTheSpareRow) {
    cMemoryDCEx s;
    s.Create(3, 2);
    s.SetBits(Source(3), 0, 2, 1);  // the spare row
    RgbaArray2D in(3, 2), out(3, 2), small(2, 1);
    for (int32_t i = 0; i < 6; ++i) in(i % 3, i / 3) = Px(static_cast<char>('m' + i));
    s.SetAllBits(in);
    EXPECT_EQ(Picture(s), "pqr/mno/abc");  // (x, j) is row Height - 1 - j
    s.GetAllBits(out);
    EXPECT_EQ(out, in);
    s.GetAllBits(small);  // an array smaller than the picture takes what it holds
    small(0, 0) = small(1, 0) = Px('x');
    s.SetAllBits(small);
    EXPECT_EQ(Picture(s), "pqr/xxo/abc");
}

TEST(cMemoryDCEx, EdgeCasesAndErrors) {
    cMemoryDCEx s, never, failed;
    const int32_t first = s.Create(4, 3), firstBmp = s.hBmp();
    const int32_t second = s.Create(375, 375);
    RgbaArray2D none;
    vt_test::CheckEdges({
        VT_GIVES(true, first != 0 && firstBmp != 0 && firstBmp != first),
        VT_GIVES(true, second != first && s.hdc() == second && s.hBmp() != firstBmp),
        VT_GIVES(true, SurfaceFromHandle(first) == nullptr && SurfaceFromHandle(second) == &s),
        VT_GIVES(375, s.GetBits(0).size()), VT_GIVES(375, s.GetBits(375).size()),  // the spare row
        VT_GIVES(true, s.GetBits(376) == std::vector<RGBA>(375)),  // rows it lacks are zero
        VT_GIVES(true, s.GetBits(-2147483647 + 376) == std::vector<RGBA>(375)),
        VT_RAISES(6, s.GetBits(-2147483647 + 375)),  // Height + 1 - Y overflows
        VT_RAISES(9, s.GetAllBits(none)), VT_RAISES(9, s.SetAllBits(none)),
        VT_GIVES(0, never.hdc()), VT_GIVES(true, (never.Delete(), never.GetBits(kMax32).empty())),
        VT_RAISES(6, failed.Create(10, kMax32)),  // after the device context was made
        VT_GIVES(true, failed.hdc() != 0 && failed.hBmp() == 0),
        VT_GIVES(true, (s.Delete(), s.hdc() == second && SurfaceFromHandle(second) == nullptr)),
        VT_GIVES(true, s.GetBits(0) == std::vector<RGBA>(375)),  // deleted: nothing to read
        VT_GIVES(0, (s.Create(0, 5), s.hBmp())),                 // no bitmap without columns
    });
}

// Nearest neighbour: destination (x, y) takes source (x * srcW / dstW, y * srcH / dstH).
TEST(StretchBlt, NearestNeighbourWorkedByHand) {
    const struct {
        int32_t dstW, dstH, dx, dy, dw, dh, sx, sy, sw, sh;
        const char* picture;
    } cases[] = {
        {3, 1, 0, 0, 3, 1, 0, 0, 5, 2, "fgi/..."},                   // columns 0, 1, 3
        {4, 4, 0, 0, 4, 4, 1, 0, 2, 2, "gghh/gghh/bbcc/bbcc/...."},  // doubled
        {4, 2, 1, 1, 2, 1, 3, 1, 2, 1, "..../.de./...."},            // same size: a copy
        {3, 2, -1, 1, 4, 2, 2, 0, 4, 2, ".../ij./de."},              // clipped on both
    };
    cMemoryDCEx src;
    src.Create(5, 2);
    src.SetBits(Source(10), 0, 1, 2);  // "fghij/abcde/....."
    for (const auto& c : cases) {
        cMemoryDCEx dst;
        dst.Create(c.dstW, c.dstH);
        StretchBlt(dst, c.dx, c.dy, c.dw, c.dh, src, c.sx, c.sy, c.sw, c.sh);
        EXPECT_EQ(Picture(dst), c.picture) << c.dstW << " x " << c.dstH;
    }
}

}  // namespace
