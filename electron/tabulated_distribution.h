// A one-dimensional distribution drawn by inverting its cumulative distribution: the density is
// followed by piecewise polynomials of degree 7 through its values, split until they agree
// with it to 1e-12 of its peak, and the cumulative distribution is their exact integral.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace veltara {

class TabulatedDistribution {
  public:
    /// The distribution of the non-negative density `f` over [breaks.front(), breaks.back()];
    /// `breaks` (ascending, at least two) is the first partition, which is split further where
    /// the density needs it. `f` is called a few thousand times, here only.
    TabulatedDistribution(const std::function<double(double)>& f,
                          const std::vector<double>& breaks);

    /// The integral of the density over the whole range.
    double Total() const noexcept { return mCumulative.back(); }

    /// The integral of the density from the lower end to x (x clamped to the range).
    double MassBelow(double x) const noexcept;

    /// The x at which MassBelow(x) = u * Total(), for u in [0, 1].
    double Quantile(double u) const noexcept;

    double Lower() const noexcept { return mPieces.front().lo; }
    double Upper() const noexcept { return mUpper; }

  private:
    static constexpr int kNodes = 8;  ///< equally spaced nodes per piece, both ends included
    struct Piece {
        double lo, halfWidth;
        double mass[kNodes + 1];      ///< Q(s) = sum mass[j] s^j: the mass from the piece's start
        double slope[kNodes];         ///< Q'(s) = sum slope[j] s^j, s in [-1, 1] across the piece
        double slopeStart, slopeEnd;  ///< Q'(-1), Q'(1)
    };
    double PieceMass(const Piece& p, double s) const noexcept;
    size_t PieceOf(double x) const noexcept;

    std::vector<Piece> mPieces;
    std::vector<double> mCumulative;  ///< mass before piece i; back() is the total
    std::vector<uint32_t> mGuide;     ///< the piece holding mass g * Total / guide size
    double mUpper = 0;
};

}  // namespace veltara
