// The batch path of every orbital against its per-point operations, bit for bit, over the
// renderer's 128³ sampling grid, in both views, unscaled and as bytes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <map>
#include <vector>

#include "electron/modOrbitals.h"
#include "test_support.h"

namespace {

using veltara::cElectron;
using veltara::COORDdoubleParams;
using veltara::ViewMode;
using veltara::modOrbitals::CreateElectron;

#if defined(__SANITIZE_ADDRESS__)
constexpr int kPlaneStride = 9;  // instrumented builds check every ninth plane
#else
constexpr int kPlaneStride = 1;
#endif

/// The sampling grid of one view: points (x, y, z) x step, step = radius / 127, the squares
/// formed as (x * step) * (x * step).
std::vector<COORDdoubleParams> Grid(double radius) {
    const double step = radius / 127.0;
    std::vector<COORDdoubleParams> points;
    points.reserve(128u * 128u * 128u / kPlaneStride + 128u * 128u);
    for (int z = 0; z < 128; z += kPlaneStride) {
        for (int y = 0; y < 128; ++y) {
            for (int x = 0; x < 128; ++x) {
                points.push_back(
                    {(x * step) * (x * step), (y * step) * (y * step), (z * step) * (z * step)});
            }
        }
    }
    return points;
}

uint64_t Bits(double v) {
    uint64_t b;
    std::memcpy(&b, &v, sizeof b);
    return b;
}

TEST(OrbitalBatch, BatchEqualsPerPointOverWholeGrids) {
    std::map<int, std::vector<COORDdoubleParams>> grids;  // one grid per radius
    std::vector<double> single, batch;
    std::vector<uint8_t> singleBytes, batchBytes;
    for (int16_t index = 0; index < 40; ++index) {
        auto e = CreateElectron(index);
        const veltara::OrbInfo info = e->GetInfo();
        for (ViewMode view : {ViewMode::PDF, ViewMode::DRPDF}) {
            const bool pdf = view == ViewMode::PDF;
            SCOPED_TRACE(testing::Message() << "orbital " << index << (pdf ? " PDF" : " DRPDF"));
            const int radius = pdf ? info.DefaultPDFAtomRadius : info.DefaultDRPDFAtomRadius;
            if (!grids.contains(radius)) grids[radius] = Grid(radius);
            const std::vector<COORDdoubleParams>& points = grids[radius];
            const size_t n = points.size();

            // Unscaled.
            single.assign(n, 0.0);
            batch.assign(n, 0.0);
            for (size_t i = 0; i < n; ++i) {
                single[i] = pdf ? e->GetNonScaledPDF(points[i]) : e->GetNonScaledDRPDF(points[i]);
            }
            e->NonScaledBatch(view, points.data(), batch.data(), n);
            size_t mismatches = 0;
            for (size_t i = 0; i < n; ++i) mismatches += Bits(single[i]) != Bits(batch[i]);
            EXPECT_EQ(mismatches, 0u);

            // Bytes, scaled so that the grid maximum maps to 255.
            const double factor = 255.0 / *std::max_element(single.begin(), single.end());
            if (pdf) {
                e->SetPDFScaleFactor(factor);
            } else {
                e->SetDRPDFScaleFactor(factor);
            }
            singleBytes.assign(n, 0);
            batchBytes.assign(n, 0);
            for (size_t i = 0; i < n; ++i) {
                singleBytes[i] = pdf ? e->GetPDF(points[i]) : e->GetDRPDF(points[i]);
            }
            e->ScaledBatch(view, points.data(), batchBytes.data(), n);
            EXPECT_TRUE(singleBytes == batchBytes);
            EXPECT_EQ(*std::max_element(batchBytes.begin(), batchBytes.end()), 255);
        }
    }
}

TEST(OrbitalBatch, RunsOfAnyLengthAndAlignment) {
    // Odd lengths and odd starts: the tail of a run takes the per-point path.
    const std::vector<COORDdoubleParams> grid = Grid(28);
    const std::vector<COORDdoubleParams> points(grid.begin() + 5000, grid.begin() + 5300);
    for (int16_t index : {int16_t{0}, int16_t{18}, int16_t{28}, int16_t{39}}) {
        auto e = CreateElectron(index);
        double max = 0;
        for (const COORDdoubleParams& p : points) max = std::max(max, e->GetNonScaledPDF(p));
        e->SetPDFScaleFactor(255.0 / max);
        for (size_t start : {size_t{0}, size_t{1}, size_t{7}}) {
            for (size_t len : {size_t{0}, size_t{1}, size_t{2}, size_t{3}, size_t{63}, size_t{64},
                               size_t{65}, size_t{129}}) {
                std::vector<double> v(len + 1, -1.0);
                std::vector<uint8_t> b(len + 1, 77);
                e->NonScaledBatch(ViewMode::DRPDF, points.data() + start, v.data(), len);
                e->ScaledBatch(ViewMode::PDF, points.data() + start, b.data(), len);
                for (size_t i = 0; i < len; ++i) {
                    EXPECT_EQ(Bits(v[i]), Bits(e->GetNonScaledDRPDF(points[start + i])));
                    EXPECT_EQ(b[i], e->GetPDF(points[start + i]));
                }
                EXPECT_EQ(v[len], -1.0) << "nothing written past the run";
                EXPECT_EQ(b[len], 77);
            }
        }
    }
}

TEST(OrbitalBatch, FaultStopsTheRunAfterTheValuesBeforeIt) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    struct Case {
        size_t at;
        COORDdoubleParams bad;
        int error;
    };
    const Case cases[] = {{5, {-2, 1, 0}, 5}, {4, {nan, 0, 0}, 5}, {6, {1e308, 1e308, 0}, 6}};
    for (const Case& c : cases) {
        std::vector<COORDdoubleParams> points(10, COORDdoubleParams{0.5, 0.25, 1});
        points[c.at] = c.bad;
        auto e = CreateElectron(7);
        e->SetPDFScaleFactor(200.0 / e->GetNonScaledPDF(points[0]));
        std::vector<double> v(10, -1.0);
        std::vector<uint8_t> b(10, 77);
        EXPECT_VT_ERROR(e->NonScaledBatch(ViewMode::PDF, points.data(), v.data(), 10), c.error);
        EXPECT_VT_ERROR(e->ScaledBatch(ViewMode::PDF, points.data(), b.data(), 10), c.error);
        const double good = e->GetNonScaledPDF(points[0]);
        for (size_t i = 0; i < 10; ++i) {
            EXPECT_EQ(v[i], i < c.at ? good : -1.0) << i;
            EXPECT_EQ(b[i], i < c.at ? e->GetPDF(points[0]) : 77) << i;
        }
    }
    // A byte out of range in the middle of a run: error 6, the bytes before it written.
    std::vector<COORDdoubleParams> points(6, COORDdoubleParams{4, 4, 4});
    points[3] = {0, 0, 0};
    auto e = CreateElectron(0);
    e->SetPDFScaleFactor(255.0 / std::exp(-2.0 * std::sqrt(12.0)));
    std::vector<uint8_t> b(6, 77);
    EXPECT_VT_ERROR(e->ScaledBatch(ViewMode::PDF, points.data(), b.data(), 6), 6);
    EXPECT_EQ(b, (std::vector<uint8_t>{255, 255, 255, 77, 77, 77}));
}

}  // namespace
