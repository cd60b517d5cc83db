// Small stand-in electrons for renderer tests: a density given as a function, with a counter.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "electron/cElectron.h"
#include "support/convert.h"

namespace vt_test {

/// An electron whose unscaled value in both views is `density` (called with the squares of
/// the coordinates). Bytes are the value times the view's scale factor, rounded half to even,
/// 6 outside 0..255. Counts evaluations and can record the points asked for.
class FakeElectron : public veltara::cElectron {
  public:
    using Density = std::function<double(const veltara::COORDdoubleParams&)>;

    explicit FakeElectron(Density density, veltara::OrbInfo info = {})
        : mDensity(std::move(density)), mInfo(std::move(info)) {}

    void SetPDFScaleFactor(const double& f) override { pdfScale = f; }
    void SetDRPDFScaleFactor(const double& f) override { drpdfScale = f; }
    veltara::OrbInfo GetInfo() override { return mInfo; }

    uint8_t GetPDF(const veltara::COORDdoubleParams& p) override {
        return veltara::ToByte(Eval(p) * pdfScale);
    }
    double GetRealPDF(const veltara::COORDdoubleParams& p) override { return Eval(p); }
    double GetNonScaledPDF(const veltara::COORDdoubleParams& p) override { return Eval(p); }
    uint8_t GetDRPDF(const veltara::COORDdoubleParams& p) override {
        return veltara::ToByte(Eval(p) * drpdfScale);
    }
    double GetRealDRPDF(const veltara::COORDdoubleParams& p) override { return Eval(p); }
    double GetNonScaledDRPDF(const veltara::COORDdoubleParams& p) override { return Eval(p); }

    void NonScaledBatch(veltara::ViewMode view, const veltara::COORDdoubleParams* pts, double* out,
                        size_t count) override {
        for (size_t i = 0; i < count; ++i) {
            out[i] = view == veltara::ViewMode::PDF ? GetNonScaledPDF(pts[i])
                                                    : GetNonScaledDRPDF(pts[i]);
        }
    }
    void ScaledBatch(veltara::ViewMode view, const veltara::COORDdoubleParams* pts, uint8_t* out,
                     size_t count) override {
        for (size_t i = 0; i < count; ++i) {
            out[i] = view == veltara::ViewMode::PDF ? GetPDF(pts[i]) : GetDRPDF(pts[i]);
        }
    }

    double pdfScale = 0;
    double drpdfScale = 0;
    int64_t evaluations = 0;
    bool record = false;
    std::vector<veltara::COORDdoubleParams> points;

  private:
    double Eval(const veltara::COORDdoubleParams& p) {
        ++evaluations;
        if (record) points.push_back(p);
        return mDensity(p);
    }

    Density mDensity;
    veltara::OrbInfo mInfo;
};

/// An OrbInfo with the given optimisation factors.
inline veltara::OrbInfo InfoWith(veltara::OptFactor pdf, veltara::OptFactor drpdf) {
    veltara::OrbInfo info;
    info.PDFOptFactor = pdf;
    info.DRPDFOptFactor = drpdf;
    return info;
}

}  // namespace vt_test
