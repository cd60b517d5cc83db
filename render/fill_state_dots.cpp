// FillStateDots: a state's dot cloud from exact samples of its view, placed on the grid.
#include <cmath>
#include <vector>

#include "electron/sampling.h"
#include "render/orbital_renderer.h"
#include "support/convert.h"
#include "support/modRand.h"

namespace veltara {

void OrbitalRenderer::FillStateDots() {
    // No dots wanted: a single dot at the origin stands in for the cloud, as for a catalogue
    // orbital.
    const int32_t target = mSetup.DotTarget;
    if (target <= 0) {
        mDots.assign(1, PointArray{});
        return;
    }

    // The samples follow the view the renderer shows; their seed comes from the shared
    // generator, which Setup seeded from the clock, so a fixed clock fixes the cloud.
    const StateElectron& e = *mStateElectron;
    const SampleWeight weight =
        mView == ViewMode::PDF ? SampleWeight::Density : SampleWeight::RadialView;
    const uint64_t seed = static_cast<uint64_t>(modRand::NextRandom());
    const double step = static_cast<double>(mSetup.AtomRadius) / 127.0;

    // Points outside the cube are dropped and more drawn, up to sixteen times the target in
    // all: a cube that holds little of the probability gives a smaller cloud, not a long wait.
    std::vector<PointArray> dots;
    dots.reserve(static_cast<size_t>(target));
    std::vector<double> xyz;
    const int64_t budget = 16 * int64_t{target} + 1024;
    int64_t drawn = 0;
    for (uint64_t round = 0; static_cast<int32_t>(dots.size()) < target && drawn < budget;
         ++round) {
        const int64_t missing = target - static_cast<int64_t>(dots.size());
        const auto count =
            static_cast<size_t>(std::min(budget - drawn, missing + missing / 8 + 64));
        xyz.resize(3 * count);
        Sample(e.State(), e.Time(), seed + round, count, weight, xyz.data(), nullptr);
        drawn += static_cast<int64_t>(count);
        for (size_t i = 0; i < count && static_cast<int32_t>(dots.size()) < target; ++i) {
            // Grid units; a point beyond the atom radius on any axis lies outside the cube.
            const double gx = xyz[3 * i] / step;
            const double gy = xyz[3 * i + 1] / step;
            const double gz = xyz[3 * i + 2] / step;
            if (!(std::fabs(gx) <= 127.0 && std::fabs(gy) <= 127.0 && std::fabs(gz) <= 127.0)) {
                continue;
            }
            PointArray d;
            d.X = ToInt16(gx);
            d.Y = ToInt16(gy);
            d.Z = ToInt16(gz);
            d.P = mProbMatrix.Level(d.X, d.Y, d.Z);
            dots.push_back(d);
        }
    }

    // A cube that caught no sample keeps a single dot at the origin.
    if (dots.empty()) {
        mDots.assign(1, PointArray{});
        return;
    }
    mDots = std::move(dots);
    FinishCloud();
}

}  // namespace veltara
