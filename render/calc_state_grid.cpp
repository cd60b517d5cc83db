// CalcStateGrid: the probability grid of a state: one octant with its mirror images' weights for
// a mirror-symmetric state, every point of the whole cube (each counted once) for any other.
#include <algorithm>
#include <array>
#include <cstring>

#include "render/orbital_renderer.h"
#include "render/state_lattice.h"
#include "support/convert.h"

namespace veltara {

void OrbitalRenderer::CalcStateGrid() {
    const StateElectron& e = *mStateElectron;
    if (mWholeCube) {
        mProbMatrix.ResetCube();
    } else {
        mProbMatrix.Reset();
    }
    std::memset(mStats.ProbFreqs, 0, sizeof(mStats.ProbFreqs));

    constexpr int32_t kLast = StateLattice::kLast;
    const double step = static_cast<double>(mSetup.AtomRadius) / 127.0;
    StateLattice lattice(e.State(), e.Time(), step, mView);
    const double scale = e.ScaleFactor(mView);
    const int32_t images = mWholeCube ? 8 : 1;

    std::array<std::array<double, kLast + 1>, 8> values{};
    std::array<int32_t, 256> counts{};
    for (int32_t k = 0; k <= kLast; ++k) {
        for (int32_t j = 0; j <= kLast; ++j) {
            lattice.Row(j, k, images, values.data());
            for (int32_t p = 0; p < images; ++p) {
                // An image that reflects a zero coordinate is the point itself: skipped.
                if (((p & 2) != 0 && j == 0) || ((p & 4) != 0 && k == 0)) continue;
                const int32_t sy = (p & 2) != 0 ? -j : j;
                const int32_t sz = (p & 4) != 0 ? -k : k;
                for (int32_t i = (p & 1) != 0 ? 1 : 0; i <= kLast; ++i) {
                    const uint8_t level = StateElectron::Level(values[p][i], scale);
                    if (mWholeCube) {
                        mProbMatrix.Data()[ProbGrid::CubeIndex((p & 1) != 0 ? -i : i, sy, sz)] =
                            level;
                        ++counts[level];
                    } else {
                        // The octant point stands for its mirror images.
                        mProbMatrix(i, j, k) = level;
                        counts[level] += 1 << ((i != 0) + (j != 0) + (k != 0));
                    }
                }
            }
        }
    }
    for (int32_t v = 0; v <= 255; ++v) mStats.ProbFreqs[v] = counts[v];
}

}  // namespace veltara
