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
    std::array<uint8_t, kLast + 1> levels{};
    // Counts in four interleaved tables, so that runs of one level do not wait on each other.
    std::array<std::array<int32_t, 256>, 4> counts{};
    uint8_t* const grid = mProbMatrix.Data();
    for (int32_t k = 0; k <= kLast; ++k) {
        for (int32_t j = 0; j <= kLast; ++j) {
            lattice.Row(j, k, images, values.data());
            for (int32_t p = 0; p < images; ++p) {
                // An image that reflects a zero coordinate is the point itself: skipped.
                if (((p & 2) != 0 && j == 0) || ((p & 4) != 0 && k == 0)) continue;
                for (int32_t i = 0; i <= kLast; ++i) {
                    levels[i] = StateElectron::Level(values[p][i], scale);
                }
                if (!mWholeCube) {
                    // The octant point stands for its mirror images.
                    std::copy(levels.begin(), levels.end(), grid + ProbGrid::Index(0, j, k));
                    const int32_t shift = (j != 0) + (k != 0);
                    counts[0][levels[0]] += 1 << shift;
                    for (int32_t i = 1; i <= kLast; ++i) counts[i & 3][levels[i]] += 2 << shift;
                    continue;
                }
                const int32_t y = (p & 2) != 0 ? -j : j;
                const int32_t z = (p & 4) != 0 ? -k : k;
                uint8_t* const row = grid + ProbGrid::CubeIndex(0, y, z);
                if ((p & 1) != 0) {
                    for (int32_t i = 1; i <= kLast; ++i) row[-i] = levels[i];
                    for (int32_t i = 1; i <= kLast; ++i) ++counts[i & 3][levels[i]];
                } else {
                    std::copy(levels.begin(), levels.end(), row);
                    for (int32_t i = 0; i <= kLast; ++i) ++counts[i & 3][levels[i]];
                }
            }
        }
    }
    for (int32_t v = 0; v <= 255; ++v) {
        mStats.ProbFreqs[v] = counts[0][v] + counts[1][v] + counts[2][v] + counts[3][v];
    }
}

}  // namespace veltara
