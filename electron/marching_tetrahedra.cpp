// Marching tetrahedra over a lattice, one slab of cells at a time.
#include "electron/marching_tetrahedra.h"

#include <array>
#include <vector>

namespace veltara {

namespace {

constexpr uint32_t kNone = UINT32_MAX;

// Cell corners and lattice edges are named by bit masks: bit 0 +x, bit 1 +y, bit 2 +z. An edge
// runs from a lower corner along one of the seven non-zero masks; the six tetrahedra follow
// the paths 0 -> a -> a|b -> 7 over the orders (a, b, c) of the axes, with the orientation
// (sign of det) of that order.
struct Tetrahedron {
    std::array<int, 4> corner;
    int orientation;
};
constexpr std::array<Tetrahedron, 6> kTetrahedra{{
    {{0, 1, 3, 7}, +1},  // x y z
    {{0, 1, 5, 7}, -1},  // x z y
    {{0, 2, 3, 7}, -1},  // y x z
    {{0, 2, 6, 7}, +1},  // y z x
    {{0, 4, 5, 7}, +1},  // z x y
    {{0, 4, 6, 7}, -1},  // z y x
}};

class Slab {
  public:
    Slab(const Lattice& lattice, const std::function<float(double, double, double)>& phaseAt,
         SurfaceMesh& mesh)
        : mL(lattice),
          mSide(lattice.cells + 1),
          mPhaseAt(phaseAt),
          mMesh(mesh),
          mLow(static_cast<size_t>(mSide) * mSide * 8, kNone),
          mHigh(mLow.size(), kNone) {}

    // The surface in the cells between planes k and k + 1, whose field values are given.
    void March(int32_t k, const double* low, const double* high) {
        mK = k;
        mField[0] = low;
        mField[1] = high;
        for (int32_t j = 0; j < mL.cells; ++j)
            for (int32_t i = 0; i < mL.cells; ++i) Cell(i, j);
        // The upper plane becomes the lower one; its upward edges are not yet cut.
        std::swap(mLow, mHigh);
        std::fill(mHigh.begin(), mHigh.end(), kNone);
        for (size_t e = 0; e < mLow.size(); e += 8) std::fill(&mLow[e + 4], &mLow[e + 8], kNone);
    }

  private:
    double Field(int32_t i, int32_t j, int corner) const {
        return mField[corner >> 2][(j + (corner >> 1 & 1)) * mSide + i + (corner & 1)];
    }

    void Cell(int32_t i, int32_t j) {
        std::array<double, 8> f;
        int inside = 0;
        for (int c = 0; c < 8; ++c) inside += (f[c] = Field(i, j, c)) >= 0;
        if (inside == 0 || inside == 8) return;
        for (const Tetrahedron& t : kTetrahedra) Tet(i, j, t, f);
    }

    void Tet(int32_t i, int32_t j, const Tetrahedron& t, const std::array<double, 8>& f) {
        // Order the corners as (lone or inside ones first, then the rest) and track the
        // permutation's parity: it decides which way round the triangles go.
        std::array<int, 4> in{}, out{};
        int nIn = 0, nOut = 0;
        for (int v = 0; v < 4; ++v) (f[t.corner[v]] >= 0 ? in[nIn++] : out[nOut++]) = v;
        if (nIn == 0 || nIn == 4) return;
        std::array<int, 4> order;
        if (nIn == 3) {
            order = {out[0], in[0], in[1], in[2]};
        } else {
            int n = 0;
            for (int v = 0; v < nIn; ++v) order[n++] = in[v];
            for (int v = 0; v < nOut; ++v) order[n++] = out[v];
        }
        int parity = 0;
        for (int a = 0; a < 4; ++a)
            for (int b = a + 1; b < 4; ++b) parity ^= order[a] > order[b];
        const bool flip = (t.orientation < 0) != (parity == 1);
        auto vertex = [&](int a, int b) {
            return Vertex(i, j, t.corner[order[a]], t.corner[order[b]], f);
        };
        if (nIn == 2) {
            const uint32_t ac = vertex(0, 2), ad = vertex(0, 3), bd = vertex(1, 3),
                           bc = vertex(1, 2);
            Emit(ac, ad, bd, flip);
            Emit(ac, bd, bc, flip);
        } else {
            // One corner alone: inside (its cap points away from it) or outside (towards it).
            Emit(vertex(0, 1), vertex(0, 2), vertex(0, 3), flip != (nIn == 3));
        }
    }

    void Emit(uint32_t a, uint32_t b, uint32_t c, bool flip) {
        mMesh.triangles.insert(mMesh.triangles.end(), {a, flip ? c : b, flip ? b : c});
    }

    // The vertex on the edge between corners a and b of cell (i, j): made once per edge.
    uint32_t Vertex(int32_t i, int32_t j, int a, int b, const std::array<double, 8>& f) {
        const int lower = a & b, dir = a ^ b;  // corners along a path are nested masks
        const int32_t pi = i + (lower & 1), pj = j + (lower >> 1 & 1);
        std::vector<uint32_t>& plane = (lower & 4) ? mHigh : mLow;
        uint32_t& slot = plane[(static_cast<size_t>(pj) * mSide + pi) * 8 + dir];
        if (slot != kNone) return slot;
        const double f0 = f[lower], f1 = f[lower | dir];
        const double s = f0 / (f0 - f1);
        const double x = mL.origin + mL.step * (pi + s * (dir & 1));
        const double y = mL.origin + mL.step * (pj + s * (dir >> 1 & 1));
        const double z = mL.origin + mL.step * (mK + (lower >> 2) + s * (dir >> 2));
        slot = static_cast<uint32_t>(mMesh.phase.size());
        mMesh.xyz.insert(mMesh.xyz.end(),
                         {static_cast<float>(x), static_cast<float>(y), static_cast<float>(z)});
        mMesh.phase.push_back(mPhaseAt(x, y, z));
        return slot;
    }

    const Lattice mL;
    const int32_t mSide;
    const std::function<float(double, double, double)>& mPhaseAt;
    SurfaceMesh& mMesh;
    std::vector<uint32_t> mLow, mHigh;  // vertex of each edge leaving a point of plane k, k + 1
    const double* mField[2] = {nullptr, nullptr};
    int32_t mK = 0;
};

}  // namespace

void MarchTetrahedra(const Lattice& lattice, const std::function<void(int32_t, double*)>& layer,
                     const std::function<float(double, double, double)>& phaseAt,
                     SurfaceMesh& mesh) {
    const size_t plane = static_cast<size_t>(lattice.cells + 1) * (lattice.cells + 1);
    std::vector<double> low(plane), high(plane);
    layer(0, low.data());
    Slab slab(lattice, phaseAt, mesh);
    for (int32_t k = 0; k < lattice.cells; ++k) {
        layer(k + 1, high.data());
        slab.March(k, low.data(), high.data());
        std::swap(low, high);
    }
}

}  // namespace veltara
