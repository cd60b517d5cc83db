// cMemoryDCEx: row mapping, band copies, whole-picture copies, handles and scaling copies.
#include <algorithm>
#include <cstdint>
#include <set>
#include <thread>
#include <vector>

#include "support/cMemoryDCEx.h"
#include "test_support.h"

namespace {

using namespace veltara;

constexpr int32_t kMin32 = -2147483647 - 1;
constexpr int32_t kMax32 = 2147483647;

// A distinct pixel per label, alpha included; label 0 is the all-zero pixel of a new surface.
RGBA Px(int label) {
    if (label == 0) return RGBA{};
    return RGBA{static_cast<uint8_t>(label), static_cast<uint8_t>(label >> 8), 0x5A,
                static_cast<uint8_t>(200 - label)};
}

std::vector<RGBA> Pixels(std::initializer_list<int> labels) {
    std::vector<RGBA> v;
    for (const int l : labels) v.push_back(Px(l));
    return v;
}

// Labels 1..n in order.
std::vector<RGBA> Counting(int n) {
    std::vector<RGBA> v;
    for (int i = 1; i <= n; ++i) v.push_back(Px(i));
    return v;
}

// Every row from the top (including the spare row) as GetBits sees it.
std::vector<std::vector<RGBA>> Picture(const cMemoryDCEx& s) {
    std::vector<std::vector<RGBA>> rows;
    for (int32_t y = 0; y <= s.Height(); ++y) rows.push_back(s.GetBits(y));
    return rows;
}

std::vector<std::vector<RGBA>> Labels(std::initializer_list<std::initializer_list<int>> rows) {
    std::vector<std::vector<RGBA>> out;
    for (const auto& r : rows) out.push_back(Pixels(r));
    return out;
}

TEST(cMemoryDCEx, RowsMapBottomUpWithASpareRow) {
    cMemoryDCEx s;
    s.Create(375, 375);
    EXPECT_EQ(s.GetBits(0).size(), 375u);

    const std::vector<RGBA> row10 = Counting(375);
    s.SetBits(row10, 0, 10, 1);
    EXPECT_EQ(s.GetBits(10), row10);
    // Row 10 from the top is scan line 375 - 10 = 365 of the bottom-up bitmap.
    EXPECT_TRUE(std::equal(row10.begin(), row10.end(), s.ScanLine(365)));

    // Row 375 is the spare row: scan line 0.
    const std::vector<RGBA> spare(375, Px(77));
    s.SetBits(spare, 0, 375, 1);
    EXPECT_EQ(s.GetBits(375), spare);
    EXPECT_EQ(s.ScanLine(0)[374], Px(77));

    // Rows the bitmap does not have come back zero, still 375 wide.
    for (const int32_t y : {376, -1, 100000}) {
        EXPECT_EQ(s.GetBits(y), std::vector<RGBA>(375)) << y;
    }
    EXPECT_EQ(s.ScanLine(376), nullptr);
    EXPECT_EQ(s.ScanLine(-1), nullptr);
}

TEST(cMemoryDCEx, SetBitsWritesBandsUpwardsClippedToTheSurfaceAndTheArray) {
    // A 5 x 4 picture plus its spare row (row 4). Expected pictures worked out by hand.
    const struct {
        const char* what;
        int n;  // source elements, labelled 1..n
        int32_t x, y, scanLines, length;
        std::vector<std::vector<RGBA>> expected;
    } cases[] = {
        {"band written upwards", 15, 0, 3, 3, 0,
         Labels({{0, 0, 0, 0, 0},
                 {11, 12, 13, 14, 15},
                 {6, 7, 8, 9, 10},
                 {1, 2, 3, 4, 5},
                 {0, 0, 0, 0, 0}})},
        {"source rows are the full width apart", 10, 1, 2, 2, 3,
         Labels({{0, 0, 0, 0, 0},
                 {0, 6, 7, 8, 0},
                 {0, 1, 2, 3, 0},
                 {0, 0, 0, 0, 0},
                 {0, 0, 0, 0, 0}})},
        {"left edge: columns -2..1 keep source 3, 4", 5, -2, 1, 1, 4,
         Labels({{0, 0, 0, 0, 0},
                 {3, 4, 0, 0, 0},
                 {0, 0, 0, 0, 0},
                 {0, 0, 0, 0, 0},
                 {0, 0, 0, 0, 0}})},
        {"Length 0 from column 3 is 2 pixels", 5, 3, 2, 1, 0,
         Labels({{0, 0, 0, 0, 0},
                 {0, 0, 0, 0, 0},
                 {0, 0, 0, 1, 2},
                 {0, 0, 0, 0, 0},
                 {0, 0, 0, 0, 0}})},
        {"right edge: Length 5 from column 3", 5, 3, 0, 1, 5,
         Labels({{0, 0, 0, 1, 2},
                 {0, 0, 0, 0, 0},
                 {0, 0, 0, 0, 0},
                 {0, 0, 0, 0, 0},
                 {0, 0, 0, 0, 0}})},
        {"band above the top: rows 1, 0 kept of 1..-2", 20, 0, 1, 4, 0,
         Labels({{6, 7, 8, 9, 10},
                 {1, 2, 3, 4, 5},
                 {0, 0, 0, 0, 0},
                 {0, 0, 0, 0, 0},
                 {0, 0, 0, 0, 0}})},
        {"band from below the spare row: rows 4, 3 kept of 6..3", 20, 0, 6, 4, 0,
         Labels({{0, 0, 0, 0, 0},
                 {0, 0, 0, 0, 0},
                 {0, 0, 0, 0, 0},
                 {16, 17, 18, 19, 20},
                 {11, 12, 13, 14, 15}})},
        {"array shorter than the band", 7, 0, 3, 3, 0,
         Labels({{0, 0, 0, 0, 0},
                 {0, 0, 0, 0, 0},
                 {6, 7, 0, 0, 0},
                 {1, 2, 3, 4, 5},
                 {0, 0, 0, 0, 0}})},
        {"Length beyond the row does not read the next row", 10, 0, 2, 1, 9,
         Labels({{0, 0, 0, 0, 0},
                 {0, 0, 0, 0, 0},
                 {1, 2, 3, 4, 5},
                 {0, 0, 0, 0, 0},
                 {0, 0, 0, 0, 0}})},
    };
    for (const auto& c : cases) {
        cMemoryDCEx s;
        s.Create(5, 4);
        s.SetBits(Counting(c.n), c.x, c.y, c.scanLines, c.length);
        EXPECT_EQ(Picture(s), c.expected) << c.what;
    }
}

TEST(cMemoryDCEx, WholePictureCopiesRoundTripStayInsideShortArraysAndLeaveSpareRow) {
    cMemoryDCEx s;
    s.Create(7, 5);
    const std::vector<RGBA> spare(7, Px(300));
    s.SetBits(spare, 0, 5, 1);
    RgbaArray2D in(7, 5);
    for (int32_t j = 0; j < 5; ++j)
        for (int32_t x = 0; x < 7; ++x) in(x, j) = Px(10 * j + x + 1);
    s.SetAllBits(in);

    // Bits(x, j) is column x of row Height - 1 - j from the top.
    EXPECT_EQ(s.GetBits(4), Pixels({1, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(s.GetBits(0), Pixels({41, 42, 43, 44, 45, 46, 47}));
    RgbaArray2D out(7, 5);
    s.GetAllBits(out);
    EXPECT_EQ(out, in);

    // A 3 x 2 array holds 6 elements: the first 6 pixels of the bottom picture row.
    RgbaArray2D small(3, 2);
    s.GetAllBits(small);
    EXPECT_EQ(small(0, 0), Px(1));
    EXPECT_EQ(small(2, 1), Px(6));
    RgbaArray2D patch(3, 2);
    for (int32_t i = 0; i < 6; ++i) patch(i % 3, i / 3) = Px(500 + i);
    s.SetAllBits(patch);
    EXPECT_EQ(s.GetBits(4), Pixels({500, 501, 502, 503, 504, 505, 7}));
    EXPECT_EQ(s.GetBits(3), Pixels({11, 12, 13, 14, 15, 16, 17}));
    EXPECT_EQ(s.GetBits(5), spare);
}

TEST(cMemoryDCEx, EmptyArraysRaise9) {
    cMemoryDCEx s;
    s.Create(4, 4);
    RgbaArray2D none;
    RgbaArray2D noColumns(0, 3);
    EXPECT_VT_ERROR(s.GetAllBits(none), 9);
    EXPECT_VT_ERROR(s.GetAllBits(noColumns), 9);
    EXPECT_VT_ERROR(s.SetAllBits(none), 9);
    EXPECT_VT_ERROR(s.SetBits({}, 0, 0, 1), 9);
}

TEST(cMemoryDCEx, CreateAgainReplacesHandles) {
    cMemoryDCEx s;
    const int32_t first = s.Create(4, 4);
    EXPECT_NE(first, 0);
    EXPECT_EQ(s.hdc(), first);
    EXPECT_EQ(SurfaceFromHandle(first), &s);
    const int32_t firstBmp = s.hBmp();
    EXPECT_NE(firstBmp, 0);
    EXPECT_NE(firstBmp, first);
    s.SetBits(Counting(4), 0, 0, 1);

    const int32_t second = s.Create(8, 2);
    EXPECT_NE(second, first);
    EXPECT_EQ(s.hdc(), second);
    EXPECT_EQ(SurfaceFromHandle(first), nullptr);
    EXPECT_EQ(SurfaceFromHandle(second), &s);
    EXPECT_NE(s.hBmp(), firstBmp);
    EXPECT_EQ(s.GetBits(0), std::vector<RGBA>(8));  // a new bitmap starts at zero
}

TEST(cMemoryDCEx, DeleteKeepsHandleValuesAndIsHarmlessTwice) {
    cMemoryDCEx never;
    never.Delete();
    EXPECT_EQ(never.hdc(), 0);
    EXPECT_EQ(SurfaceFromHandle(0), nullptr);

    cMemoryDCEx s;
    const int32_t dc = s.Create(3, 3);
    const int32_t bmp = s.hBmp();
    s.Delete();
    EXPECT_FALSE(s.Created());
    EXPECT_EQ(s.hdc(), dc);
    EXPECT_EQ(s.hBmp(), bmp);
    EXPECT_EQ(SurfaceFromHandle(dc), nullptr);
    s.Delete();
    EXPECT_EQ(s.hdc(), dc);

    // Copies into a deleted surface do nothing; its rows read as zero.
    s.SetBits(Counting(3), 0, 1, 1);
    EXPECT_EQ(s.GetBits(1), std::vector<RGBA>(3));

    // Another surface's live handle is not freed by a stale Delete.
    cMemoryDCEx other;
    const int32_t live = other.Create(2, 2);
    s.Delete();
    EXPECT_EQ(SurfaceFromHandle(live), &other);
}

TEST(cMemoryDCEx, SizesWithoutABitmapBehaveAsFailedBitmaps) {
    const struct {
        int32_t width, height;
        bool bitmap;
    } cases[] = {
        {0, 5, false},    {-3, 5, false},    {5, -1, false},     // Height + 1 = 0 rows
        {5, -2, false},   {16385, 1, false}, {1, 16384, false},  // 16385 rows
        {16384, 0, true}, {1, 16383, true},  {1, 0, true},
    };
    for (const auto& c : cases) {
        cMemoryDCEx s;
        const int32_t dc = s.Create(c.width, c.height);
        EXPECT_NE(dc, 0);
        EXPECT_EQ(SurfaceFromHandle(dc), &s);
        EXPECT_TRUE(s.Created());
        EXPECT_EQ(s.hBmp() != 0, c.bitmap) << c.width << " x " << c.height;

        const size_t rowSize = c.width > 0 ? static_cast<size_t>(c.width) : 0;
        const std::vector<RGBA> marks(rowSize + 1, Px(9));
        s.SetBits(marks, 0, 0, 1);
        const std::vector<RGBA> row = s.GetBits(0);
        EXPECT_EQ(row.size(), rowSize);
        const bool written = !row.empty() && row[0] == Px(9);
        EXPECT_EQ(written, c.bitmap) << c.width << " x " << c.height;
    }
}

TEST(cMemoryDCEx, HeightOverflowRaises6AfterTheDeviceContext) {
    cMemoryDCEx s;
    EXPECT_VT_ERROR(s.Create(10, kMax32), 6);
    EXPECT_NE(s.hdc(), 0);
    EXPECT_EQ(SurfaceFromHandle(s.hdc()), &s);
    EXPECT_EQ(s.hBmp(), 0);
    EXPECT_FALSE(s.Created());
    const int32_t dc = s.hdc();
    s.Delete();
    EXPECT_EQ(SurfaceFromHandle(dc), nullptr);
}

// Extreme rows on a 4 x 3 surface (spare row 3): a scan line of (3 + 1) - Y - 1.
TEST(cMemoryDCEx, GetBitsExtremeRows) {
    cMemoryDCEx s;
    s.Create(4, 3);
    s.SetBits(Counting(16), 0, 3, 4);  // every row, labels 1..16 from the bottom up
    const struct {
        int32_t y;
        int32_t error;   // 0: no error
        int firstLabel;  // label of column 0, 0 for a zero row
    } cases[] = {
        {0, 0, 13},          {3, 0, 1},      {4, 0, 0},
        {-1, 0, 0},          {kMax32, 0, 0}, {kMin32, 6, 0},  // 4 + 2^31 overflows
        {-2147483644, 6, 0},                                  // 4 + 2147483644 = 2^31
        {-2147483643, 0, 0},                                  // 4 + 2147483643 = 2^31 - 1, then - 1
    };
    for (const auto& c : cases) {
        if (c.error != 0) {
            EXPECT_VT_ERROR(s.GetBits(c.y), c.error);
            continue;
        }
        const std::vector<RGBA> row = s.GetBits(c.y);
        ASSERT_EQ(row.size(), 4u) << c.y;
        EXPECT_EQ(row[0], Px(c.firstLabel)) << c.y;
    }
}

TEST(cMemoryDCEx, SetBitsExtremeArguments) {
    const struct {
        int32_t x, y, scanLines, length;
        int32_t error;
        int written;  // pixels changed, counted by hand
    } cases[] = {
        {0, 3, kMax32, 0, 0, 16},  // rows 3..0, then the 16 elements run out
        {0, 3, kMin32, 0, 0, 0},
        {0, kMax32, kMax32, 0, 0, 0},  // the band's rows on the
                                       // bitmap lie past the array
        {0, kMin32, 1, 0, 6, 0},       // (3 + 1) - Y overflows
        {kMax32, 0, 1, 0, 0, 0},       // Length = 4 - X is negative
        {kMin32, 0, 1, 0, 6, 0},       // Length = 4 - X overflows
        {-2147483647, 0, 1, 0, 6, 0},
        {kMin32, 0, 1, 5, 0, 0},  // all columns far to the left
        {kMax32, 0, 1, kMax32, 0, 0},
        {0, 0, 1, kMax32, 0, 4},
        {0, 0, 1, kMin32, 0, 0},
        {-3, 1, 2, kMax32, 0, 2},  // columns 0 of rows 1 and 0: source 4 and 8
    };
    for (const auto& c : cases) {
        cMemoryDCEx s;
        s.Create(4, 3);
        const std::vector<RGBA> data = Counting(16);
        if (c.error != 0) {
            EXPECT_VT_ERROR(s.SetBits(data, c.x, c.y, c.scanLines, c.length), c.error);
        } else {
            s.SetBits(data, c.x, c.y, c.scanLines, c.length);
        }
        int changed = 0;
        for (const auto& row : Picture(s))
            for (const RGBA& p : row) changed += p == RGBA{} ? 0 : 1;
        EXPECT_EQ(changed, c.written) << c.x << " " << c.y << " " << c.scanLines << " " << c.length;
    }
}

TEST(cMemoryDCEx, ExtremeSizesRaiseOnlyTheStatedErrors) {
    {
        cMemoryDCEx s;
        s.Create(kMin32, kMin32);  // no bitmap; Width - 1 overflows when a row is made
        EXPECT_VT_ERROR(s.GetBits(0), 6);
        EXPECT_VT_ERROR(s.SetBits(Counting(2), 1, 0, 1), 6);  // Width - X
        s.SetBits(Counting(2), 0, 0, 1, 1);
    }
    {
        cMemoryDCEx s;
        s.Create(kMax32, 2147483646);  // no bitmap: a row of 2^31 - 1 pixels is refused
        EXPECT_VT_ERROR(s.GetBits(0), 7);
        RgbaArray2D a(2, 2);
        s.GetAllBits(a);
        s.SetAllBits(a);
        EXPECT_EQ(a, RgbaArray2D(2, 2));
    }
    {
        cMemoryDCEx never;  // not created: a row has no elements
        EXPECT_TRUE(never.GetBits(kMax32).empty());
        never.SetBits(Counting(2), 0, 0, 1);
    }
}

// Nearest neighbour: destination (x, y) takes source (x * srcW / dstW, y * srcH / dstH).
TEST(StretchBlt, NearestNeighbourMappingWorkedByHand) {
    cMemoryDCEx src;
    src.Create(5, 2);
    src.SetBits(Pixels({1, 2, 3, 4, 5}), 0, 0, 1);
    src.SetBits(Pixels({6, 7, 8, 9, 10}), 0, 1, 1);

    const struct {
        const char* what;
        int32_t dstW, dstH;  // destination surface is dstW x dstH
        int32_t dx, dy, dw, dh, sx, sy, sw, sh;
        std::vector<std::vector<RGBA>> expected;  // rows from the top, spare row last
    } cases[] = {
        // x * 5 / 3: 0, 1, 3; y * 2 / 1: 0.
        {"shrink 5 to 3", 3, 1, 0, 0, 3, 1, 0, 0, 5, 2, Labels({{1, 2, 4}, {0, 0, 0}})},
        // x * 2 / 4: 0, 0, 1, 1 from column 1; y * 2 / 4: 0, 0, 1, 1.
        {"enlarge 2 x 2 to 4 x 4", 4, 4, 0, 0, 4, 4, 1, 0, 2, 2,
         Labels({{2, 2, 3, 3}, {2, 2, 3, 3}, {7, 7, 8, 8}, {7, 7, 8, 8}, {0, 0, 0, 0}})},
        {"equal sizes copy with offsets", 4, 2, 1, 1, 2, 1, 3, 1, 2, 1,
         Labels({{0, 0, 0, 0}, {0, 9, 10, 0}, {0, 0, 0, 0}})},
        // Column -1 falls off the destination; source column 5 does not exist.
        {"clipped on both surfaces", 3, 2, -1, 1, 4, 2, 2, 0, 4, 2,
         Labels({{0, 0, 0}, {4, 5, 0}, {9, 10, 0}})},
    };
    for (const auto& c : cases) {
        cMemoryDCEx dst;
        dst.Create(c.dstW, c.dstH);
        StretchBlt(dst, c.dx, c.dy, c.dw, c.dh, src, c.sx, c.sy, c.sw, c.sh);
        EXPECT_EQ(Picture(dst), c.expected) << c.what;
    }
}

TEST(StretchBlt, OntoItselfReadsTheOriginalPixels) {
    cMemoryDCEx s;
    s.Create(4, 1);
    s.SetBits(Pixels({1, 2, 3, 4}), 0, 0, 1);
    StretchBlt(s, 1, 0, 3, 1, s, 0, 0, 3, 1);
    EXPECT_EQ(s.GetBits(0), Pixels({1, 1, 2, 3}));
}

TEST(StretchBlt, ExtremeRectanglesTouchNothingOutside) {
    cMemoryDCEx src;
    src.Create(3, 3);
    src.SetBits(std::vector<RGBA>(12, Px(5)), 0, 3, 4);
    cMemoryDCEx dst;
    dst.Create(3, 3);
    StretchBlt(dst, kMin32, kMin32, kMax32, kMax32, src, 0, 0, 3, 3);
    StretchBlt(dst, 0, 0, 3, 3, src, kMax32, kMin32, kMax32, kMax32);
    StretchBlt(dst, 0, 0, -3, 3, src, 0, 0, 3, 3);
    EXPECT_EQ(dst.GetBits(0), std::vector<RGBA>(3));
    // A destination far larger than the surface still fills just the surface.
    StretchBlt(dst, 0, 0, kMax32, kMax32, src, 0, 0, 1, 1);
    EXPECT_EQ(dst.GetBits(3), std::vector<RGBA>(3, Px(5)));
}

TEST(cMemoryDCEx, HandlesAreUniqueAcrossThreads) {
    constexpr int kThreads = 4;
    constexpr int kEach = 100;
    std::vector<std::vector<int32_t>> seen(kThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&seen, t] {
            std::vector<cMemoryDCEx> surfaces(kEach);
            for (auto& s : surfaces) {
                s.Create(2, 2);
                seen[t].push_back(s.hdc());
                seen[t].push_back(s.hBmp());
                if (SurfaceFromHandle(s.hdc()) != &s) seen[t].push_back(0);
            }
        });
    }
    for (auto& th : threads) th.join();
    std::set<int32_t> all;
    size_t count = 0;
    for (const auto& v : seen) {
        all.insert(v.begin(), v.end());
        count += v.size();
    }
    EXPECT_EQ(count, size_t{2 * kThreads * kEach});
    EXPECT_EQ(all.size(), count);
    EXPECT_EQ(all.count(0), 0u);
}

}  // namespace
