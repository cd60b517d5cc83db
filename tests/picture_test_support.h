// Test helpers for the picture renders: a fake electron with an analytic density, renderers
// with hand-made dot clouds and grids, and pixel readers for surfaces.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "electron/cElectron.h"
#include "render/orbital_renderer.h"
#include "renderer_test_access.h"
#include "support/cMemoryDCEx.h"

namespace vt_test {

using veltara::COORDdoubleParams;
using veltara::RGBA;

/// An electron whose unscaled density is a function the test chooses (by default the 1S shape
/// e^(-2r), written here from the formula, not taken from the engine). Counts its evaluations.
class PictureElectron : public veltara::cElectron {
  public:
    using Density = std::function<double(double x2, double y2, double z2)>;

    static double OneS(double x2, double y2, double z2) {
        return std::exp(-2.0 * std::sqrt(x2 + y2 + z2));
    }

    explicit PictureElectron(Density pdf = OneS, Density drpdf = nullptr)
        : mPdf(std::move(pdf)), mDrpdf(drpdf ? std::move(drpdf) : mPdf) {}

    void SetPDFScaleFactor(const double&) override {}
    void SetDRPDFScaleFactor(const double&) override {}
    veltara::OrbInfo GetInfo() override { return {}; }
    uint8_t GetPDF(const COORDdoubleParams&) override { return 0; }
    double GetRealPDF(const COORDdoubleParams& p) override { return GetNonScaledPDF(p); }
    double GetNonScaledPDF(const COORDdoubleParams& p) override {
        ++calls;
        return mPdf(p.Xs, p.Ys, p.Zs);
    }
    uint8_t GetDRPDF(const COORDdoubleParams&) override { return 0; }
    double GetRealDRPDF(const COORDdoubleParams& p) override { return GetNonScaledDRPDF(p); }
    double GetNonScaledDRPDF(const COORDdoubleParams& p) override {
        ++calls;
        return mDrpdf(p.Xs, p.Ys, p.Zs);
    }
    void NonScaledBatch(veltara::ViewMode view, const COORDdoubleParams* points, double* out,
                        size_t count) override {
        if (onBatch) onBatch();
        for (size_t i = 0; i < count; ++i) {
            out[i] = view == veltara::ViewMode::PDF ? GetNonScaledPDF(points[i])
                                                    : GetNonScaledDRPDF(points[i]);
        }
    }
    void ScaledBatch(veltara::ViewMode, const COORDdoubleParams*, uint8_t* out,
                     size_t count) override {
        for (size_t i = 0; i < count; ++i) out[i] = 0;
    }

    int64_t calls = 0;
    std::function<void()> onBatch;  ///< runs before every batch (e.g. to move the clock)
    Density mPdf;
    Density mDrpdf;
};

using Access = veltara::RendererTestAccess;

/// A density-view renderer holding `electron` (owned) and, if given, a dot cloud.
inline std::unique_ptr<veltara::cOrbitalPDF> MakeRenderer(
    PictureElectron* electron = nullptr, std::vector<veltara::PointArray> dots = {},
    double depthScale = 0.5, int16_t atomRadius = 10) {
    auto r = std::make_unique<veltara::cOrbitalPDF>();
    if (electron) Access::Electron(*r).reset(electron);
    Access::SetupRec(*r).AtomRadius = atomRadius;
    if (!dots.empty()) {
        Access::LastDot(*r) = static_cast<int32_t>(dots.size()) - 1;
        Access::Dots(*r) = std::move(dots);
    }
    Access::DotDepthScale(*r) = depthScale;
    return r;
}

/// A request with the engine's field defaults and the given mode and size.
inline veltara::RenderRequest Request(veltara::RenderMode mode,
                                      veltara::RenderSize size = veltara::RenderSize::Main) {
    veltara::RenderRequest q{};
    q.Mode = mode;
    q.Size = size;
    return q;
}

/// The live surface behind a device handle (fails the test when there is none).
inline veltara::cMemoryDCEx& Surface(int32_t hdc) {
    veltara::cMemoryDCEx* s = veltara::SurfaceFromHandle(hdc);
    EXPECT_NE(s, nullptr) << "handle " << hdc << " does not resolve";
    static veltara::cMemoryDCEx empty;
    return s ? *s : empty;
}

/// Pixel (column, row counted from the top) of a surface.
inline RGBA PixelAt(const veltara::cMemoryDCEx& s, int32_t col, int32_t row) {
    return s.GetBits(row)[static_cast<size_t>(col)];
}

inline RGBA Grey(uint8_t v) { return RGBA{v, v, v, 0}; }

}  // namespace vt_test
