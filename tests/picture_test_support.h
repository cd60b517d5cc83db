// Helpers of the renderer tests: real orbitals set up with the catalogue's defaults, requests,
// and the visible pixels behind a device handle.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "electron/modOrbitals.h"
#include "engine/cOrbitalCol.h"
#include "support/cMemoryDCEx.h"
#include "test_support.h"

namespace vt_test {

using namespace veltara;

/// Orbital `index` in `view` with the catalogue's radius and threshold for that view.
inline OrbitalSetup Defaults(int16_t index, ViewMode view, int16_t dots = 20000) {
    const OrbInfo info = modOrbitals::CreateElectron(index)->GetInfo();
    const bool pdf = view == ViewMode::PDF;
    OrbitalSetup s;
    s.OrbitalIndex = index;
    s.OrbitalViewMode = view;
    s.AtomRadius = pdf ? info.DefaultPDFAtomRadius : info.DefaultDRPDFAtomRadius;
    s.DotThreshold =
        static_cast<uint8_t>(pdf ? info.DefaultPDFDotThreshold : info.DefaultDRPDFDotThreshold);
    s.DotTarget = dots;
    return s;
}

/// A request of `mode` and `size` seen from (theta, phi), camera 450 before the plane.
inline RenderRequest Request(RenderMode mode, RenderSize size, double theta = 0.7,
                             double phi = 0.3) {
    RenderRequest q;
    q.Mode = mode;
    q.Size = size;
    q.Theta = theta;
    q.Phi = phi;
    q.CameraPos = -450;
    q.ProjectionPlane = 0;
    q.StereoFactor = 35;  // eyes 450 / 35 = 12.86 from the centre: 13 rounded, 12 truncated
    q.TransectDir = TransectDirection::Alongy;
    q.VolQuality = 10;
    return q;
}

/// The visible pixels of the surface behind a handle, rows from the top.
inline std::vector<RGBA> Pixels(int32_t hdc) {
    const cMemoryDCEx* s = SurfaceFromHandle(hdc);
    std::vector<RGBA> out;
    if (s == nullptr) {
        ADD_FAILURE() << "handle " << hdc << " does not resolve";
        return out;
    }
    for (int32_t row = 0; row < s->Height(); ++row) {
        const std::vector<RGBA> line = s->GetBits(row);
        out.insert(out.end(), line.begin(), line.end());
    }
    return out;
}

/// Renders `q` on orbital `index` and reads the picture of the request's size.
inline std::vector<RGBA> Render(cOrbitalCol& col, int16_t index, const RenderRequest& q) {
    const RenderDCinfo dc = col.GetRender(index, q);
    return Pixels(q.Size == RenderSize::Main ? dc.MainHDC : dc.NanoHDC);
}

/// The number of pixels in which two pictures differ (every pixel when the sizes differ).
inline size_t Differences(const std::vector<RGBA>& a, const std::vector<RGBA>& b) {
    if (a.size() != b.size()) return a.size() + b.size();
    size_t n = 0;
    for (size_t i = 0; i < a.size(); ++i) n += a[i] == b[i] ? 0 : 1;
    return n;
}

inline RGBA Grey(uint8_t v) { return RGBA{v, v, v, 0}; }

}  // namespace vt_test
