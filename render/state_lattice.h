// StateLattice: a state's view at the points of the sampling lattice, fast: R_nl tabulated once
// per squared distance (at most 48,388 of them), each term's angular function evaluated once per
// octant point and carried to the seven mirror images by its sign and conjugation.
#pragma once

#include <array>
#include <complex>
#include <cstdint>
#include <vector>

#include "electron/angular.h"
#include "electron/state.h"
#include "records/PublicTypes.h"

namespace veltara {

class StateLattice {
  public:
    static constexpr int32_t kLast = 127;  ///< the largest index on an axis

    /// The view of `s` at time t on the lattice of spacing `step` (Bohr): point (i, j, k) lies
    /// at (i, j, k) x step. Raises 5 (with a sentence) for a non-finite t.
    StateLattice(const Superposition& s, double t, double step, ViewMode view);

    /// The unscaled view along the row (j, k), j, k >= 0, at i = 0..127, for each of the eight
    /// mirror images: out[p][i] is the value at (sx i, sy j, sz k) with sx = -1 when bit 0 of
    /// p is set, sy when bit 1, sz when bit 2. `images` 1 asks for p = 0 alone.
    void Row(int32_t j, int32_t k, int32_t images, std::array<double, kLast + 1>* out);

  private:
    struct Part {
        std::complex<double> c;  // coefficient times e^(-i E t)
        size_t radial, angular;
    };
    /// How an angular function changes under reflection in one coordinate plane: a sign, and
    /// whether it turns into its complex conjugate.
    struct Mirror {
        double sign[3];
        bool conj[3];
    };

    double mStep;
    ViewMode mView;
    bool mShellAverage;
    bool mRealAngular = true;   // every angular function real: Y has no imaginary part
    std::vector<double> mRoot;  // sqrt(n2) for n2 = i² + j² + k²
    std::vector<std::vector<double>> mRadial;  // R(step sqrt(n2)) per distinct (n, l)
    std::vector<AngularFunction> mAngular;     // per distinct (l, m)
    std::vector<Mirror> mMirror;               // per angular function
    std::vector<Part> mParts;
    std::vector<std::complex<double>> mValues;  // per angular function: Y at the row's points
    std::vector<double> mRe, mIm;               // per part: R Y at the row's points
    std::vector<double> mSumRe, mSumIm;         // psi of one image along the row
};

}  // namespace veltara
