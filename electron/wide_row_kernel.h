// The grid-row and batch kernels of the catalogue's orbitals over a lane type L, for the files
// compiled for one wider instruction set (electron/wide_rows_avx2.cpp, wide_rows_avx512.cpp) and
// for them only.
//
// Everything here is a template over L, and each file declares its L in an anonymous namespace:
// every function made from these templates is then local to its file, so the linker can never
// keep a wide copy of it for baseline code. The kernel calls no shared inline code on the way;
// a point that is faulty or gives no byte is handed back to the caller (baseline code).
//
// L supplies the operations of the exponential's common sequence (support/exact_math_table.h)
// and: kLanes; Load (unaligned), LoadRecords (the coordinates of kLanes records of three
// doubles) and Store; Sqrt; Neg; Within(a,
// limit), the lanes with |a| <= limit as bits; Finite(a, b), the lanes with |a| <= max and |b| <=
// max; and ToBytes(a, out), which writes the lanes rounded as std::nearbyint does (when they fit)
// and returns the lanes that give no byte 0..255; SignedRoot(d, f), the square root of d with
// the sign of f, and +0 where d is 0.
#pragma once

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "electron/orbital_list.h"
#include "electron/wave_sign.h"
#include "electron/wide_rows.h"
#include "support/exact_math.h"
#include "support/exact_math_table.h"

namespace veltara::wide {

/// kLanes doubles with the operators of density::Pair, each the same IEEE operation lane by lane.
template <class L>
struct Num {
    typename L::D v;
};

template <class L>
Num<L> operator+(Num<L> a, Num<L> b) {
    return {L::Add(a.v, b.v)};
}
template <class L>
Num<L> operator-(Num<L> a, Num<L> b) {
    return {L::Sub(a.v, b.v)};
}
template <class L>
Num<L> operator*(Num<L> a, Num<L> b) {
    return {L::Mul(a.v, b.v)};
}
template <class L>
Num<L> operator+(Num<L> a, double b) {
    return {L::Add(a.v, L::Set(b))};
}
template <class L>
Num<L> operator-(Num<L> a, double b) {
    return {L::Sub(a.v, L::Set(b))};
}
template <class L>
Num<L> operator*(Num<L> a, double b) {
    return {L::Mul(a.v, L::Set(b))};
}
template <class L>
Num<L> operator-(double a, Num<L> b) {
    return {L::Sub(L::Set(a), b.v)};
}
template <class L>
Num<L> operator*(double a, Num<L> b) {
    return {L::Mul(L::Set(a), b.v)};
}
template <class L>
Num<L> operator-(Num<L> a) {
    return {L::Neg(a.v)};
}
template <class L>
Num<L> Sqrt(Num<L> a) {
    return {L::Sqrt(a.v)};
}

/// The engine's exponential lane by lane: the common sequence inline, the rare lanes beyond its
/// range through the scalar Exp (an out-of-line function of the baseline).
template <class L>
[[gnu::always_inline]] inline Num<L> Exp(Num<L> a) {
    constexpr uint32_t kAll = (1u << L::kLanes) - 1;
    if (L::Within(a.v, exact::table::kMainLimit) == kAll) [[likely]] {
        return {exact::table::ExpMain<L>(a.v)};
    }
    alignas(64) double lanes[L::kLanes];
    L::Store(lanes, a.v);
    for (double& x : lanes) x = exact::Exp(x);
    return {L::Load(lanes)};
}

/// The unscaled value of Orb's view V at kLanes points, as OrbitalScheme<Orb, W>::Evaluate and
/// Finish compute it (the same operations in the same order); r2 receives r². InRange: every
/// exponent is known to lie in the exponential's common range, whose test is then left out.
template <class L, class Orb, ViewMode V, bool InRange = false>
[[gnu::always_inline]] inline Num<L> Value(Num<L> x, Num<L> y, Num<L> z, Num<L>& r2) {
    using N = Num<L>;
    const N rho2 = y + x;
    r2 = rho2 + z;
    const N r{L::Sqrt(r2.v)};
    const N exponent = Orb::MinusK() == -1.0 ? -r : r * Orb::MinusK();
    N e;
    if constexpr (InRange) {
        e = N{exact::table::ExpMain<L>(exponent.v)};
    } else {
        e = Exp(exponent);
    }
    const N f = Orb::template Formula<N>(e, Terms<N>{x, y, z, rho2, r2, r});
    if constexpr (V == ViewMode::PDF) {
        return f;
    } else if constexpr (Orb::kWeight == RadialWeight::kRhoTimesR) {
        return f * N{L::Sqrt(rho2.v)} * r;
    } else {
        return f * r2;
    }
}

/// How many of the m lanes of the step at i to write, given the lanes `bad` that failed: all,
/// or those before the first failure; then redo marks every point from that one to the end (n)
/// and the kernel stops, so that the per-point path writes the points in order and raises at
/// the failing one with nothing after it written.
template <class L>
inline int32_t Keep(uint32_t bad, int32_t m, int32_t i, int32_t n, uint64_t* redo) {
    bad &= (1u << m) - 1;
    if (bad == 0) [[likely]] {
        return m;
    }
    const int32_t first = __builtin_ctz(bad);
    for (int32_t k = i + first; k < n; ++k) redo[k / 64] |= uint64_t{1} << (k % 64);
    return first;
}

/// The points of a grid row, kLanes a step; Plain: every r² of the row is finite and not
/// negative and every exponent lies in the exponential's common range (see GridRow).
template <class L, class Orb, ViewMode V, bool Plain>
[[gnu::always_inline]] inline void RowPoints(const double* X, int32_t n, Num<L> Y, Num<L> Z,
                                             uint8_t* out, double scale, uint64_t* redo) {
    using N = Num<L>;
    constexpr int32_t kLanes = L::kLanes;
    for (int32_t i = 0; i < n; i += kLanes) {
        const int32_t m = n - i < kLanes ? n - i : kLanes;
        N x;
        if (m == kLanes) [[likely]] {
            x = {L::Load(X + i)};
        } else {
            // The row's last few, the spare lanes repeating its last point.
            alignas(64) double tail[kLanes];
            for (int32_t j = 0; j < kLanes; ++j) tail[j] = X[i + (j < m ? j : m - 1)];
            x = {L::Load(tail)};
        }
        N r2;
        const N v = Value<L, Orb, V, Plain>(x, Y, Z, r2);
        alignas(16) uint8_t bytes[kLanes];
        // A value that is not finite gives no byte either, so with every r² finite the byte's
        // test alone finds the points to redo.
        uint32_t bad = L::ToBytes((v * scale).v, bytes);
        if constexpr (!Plain) bad |= ~L::Finite(v.v, r2.v);
        const int32_t keep = Keep<L>(bad, m, i, n, redo);
        if (keep == kLanes) [[likely]] {
            std::memcpy(out + i, bytes, kLanes);  // a constant size: one store
        } else {
            std::memcpy(out + i, bytes, static_cast<size_t>(keep));
            if (keep < m) return;
        }
    }
}

/// The grid row of Orb's view V, as OrbitalScheme<Orb, W>::GridRow computes it, kLanes points a
/// step (see WideGridRow).
template <class L, class Orb, ViewMode V>
void GridRow(const GridRows& grid, int32_t xFirst, int32_t xLast, int32_t y, int32_t z,
             uint8_t* out, double scale, uint64_t* redo) {
    using N = Num<L>;
    const double* X = grid.squares + xFirst;
    const int32_t n = xLast - xFirst + 1;
    const double y2 = grid.squares[y], z2 = grid.squares[z];
    redo[0] = redo[1] = 0;
    // The squares grow along a row, and rounding keeps their order, so the row's first and last
    // r² (the same doubles as their lanes') are its least and largest: when the first is not
    // negative and the last's r times k stays well inside the exponential's common range, every
    // point's does, and the tests of both drop out.
    constexpr double kRMax =
        0.99 * exact::table::kMainLimit / (Orb::MinusK() < 0 ? -Orb::MinusK() : Orb::MinusK());
    const double first = (y2 + X[0]) + z2, last = (y2 + X[n - 1]) + z2;
    const N Y{L::Set(y2)}, Z{L::Set(z2)};
    if (first >= 0 && last <= kRMax * kRMax) {
        RowPoints<L, Orb, V, true>(X, n, Y, Z, out, scale, redo);
    } else {
        RowPoints<L, Orb, V, false>(X, n, Y, Z, out, scale, redo);
    }
}

/// The values or bytes of count <= 128 points, kLanes a step: load(i, m, x, y, z) gives the
/// squares of points i..i+m (m < kLanes: the spare lanes at the origin); out gets the value
/// times factor as a double, or its byte.
template <class L, class Orb, ViewMode V, class Out, class Load>
[[gnu::always_inline]] inline void Points(Load load, size_t count, double factor, Out* out,
                                          uint64_t* redo) {
    using N = Num<L>;
    constexpr int32_t kLanes = L::kLanes;
    const auto n = static_cast<int32_t>(count);
    redo[0] = redo[1] = 0;
    for (int32_t i = 0; i < n; i += kLanes) {
        const int32_t m = n - i < kLanes ? n - i : kLanes;
        N x, y, z, r2;
        load(i, m, x.v, y.v, z.v);
        const N v = Value<L, Orb, V>(x, y, z, r2);
        if constexpr (std::is_same_v<Out, uint8_t>) {
            alignas(16) uint8_t bytes[kLanes];
            const uint32_t bad = ~L::Finite(v.v, r2.v) | L::ToBytes((v * factor).v, bytes);
            const int32_t keep = Keep<L>(bad, m, i, n, redo);
            if (keep == kLanes) [[likely]] {
                std::memcpy(out + i, bytes, kLanes);  // a constant size: one store
            } else {
                std::memcpy(out + i, bytes, static_cast<size_t>(keep));
                if (keep < m) return;
            }
        } else {
            // A finite product needs a finite value: the check of the per-point path.
            const N scaled = v * factor;
            const int32_t keep = Keep<L>(~L::Finite(scaled.v, r2.v), m, i, n, redo);
            if (keep == kLanes) [[likely]] {
                L::Store(out + i, scaled.v);
            } else {
                alignas(64) double values[kLanes];
                L::Store(values, scaled.v);
                std::memcpy(out + i, values, sizeof(double) * static_cast<size_t>(keep));
                if (keep < m) return;
            }
        }
    }
}

/// The points p[0..count) as the batch path computes them (see WideValues, WideBytes).
template <class L, class Orb, ViewMode V, class Out>
void Batch(const COORDdoubleParams* p, size_t count, double factor, Out* out, uint64_t* redo) {
    using D = typename L::D;
    const auto load = [p](int32_t i, int32_t m, D& x, D& y, D& z) {
        if (m == L::kLanes) [[likely]] {
            L::LoadRecords(&p[i].Xs, x, y, z);
        } else {
            COORDdoubleParams tail[L::kLanes] = {};
            for (int32_t j = 0; j < m; ++j) tail[j] = p[i + j];
            L::LoadRecords(&tail[0].Xs, x, y, z);
        }
    };
    Points<L, Orb, V>(load, count, factor, out, redo);
}

/// The coordinates of points i..i+m of three columns (m < kLanes: the spare lanes at the
/// origin).
template <class L>
[[gnu::always_inline]] inline void LoadColumns(const double* x, const double* y, const double* z,
                                               int32_t i, int32_t m, typename L::D& a,
                                               typename L::D& b, typename L::D& c) {
    if (m == L::kLanes) [[likely]] {
        a = L::Load(x + i), b = L::Load(y + i), c = L::Load(z + i);
    } else {
        alignas(64) double t[3][L::kLanes] = {};
        for (int32_t j = 0; j < m; ++j) t[0][j] = x[i + j], t[1][j] = y[i + j], t[2][j] = z[i + j];
        a = L::Load(t[0]), b = L::Load(t[1]), c = L::Load(t[2]);
    }
}

/// The real values of the points (x[i], y[i], z[i]), i < count <= 128 (see WideReal).
template <class L, class Orb, ViewMode V>
void Real(const double* x, const double* y, const double* z, size_t count, double* out,
          uint64_t* redo) {
    using D = typename L::D;
    const auto load = [x, y, z](int32_t i, int32_t m, D& X, D& Y, D& Z) {
        D a, b, c;
        LoadColumns<L>(x, y, z, i, m, a, b, c);
        // The squares as Coordinates::Squares forms them.
        X = L::Mul(a, a), Y = L::Mul(b, b), Z = L::Mul(c, c);
    };
    Points<L, Orb, V>(load, count, Orb::RealFactor(V), out, redo);
}

/// The wavefunction of the single orbital Orb at the points (x[i], y[i], z[i]), i < count <=
/// 128, as the per-point Wavefunction gives it: the real density, its square root, the sign of
/// SignFactor (see WidePsi).
template <class L, class Orb>
void Psi(const double* x, const double* y, const double* z, size_t count, double* out,
         uint64_t* redo) {
    using N = Num<L>;
    constexpr int32_t kLanes = L::kLanes;
    const auto n = static_cast<int32_t>(count);
    redo[0] = redo[1] = 0;
    for (int32_t i = 0; i < n; i += kLanes) {
        const int32_t m = n - i < kLanes ? n - i : kLanes;
        N a, b, c, r2;
        LoadColumns<L>(x, y, z, i, m, a.v, b.v, c.v);
        const N density =
            Value<L, Orb, ViewMode::PDF>(a * a, b * b, c * c, r2) * Orb::RealFactor(ViewMode::PDF);
        const int32_t keep = Keep<L>(~L::Finite(density.v, r2.v), m, i, n, redo);
        const N psi{L::SignedRoot(density.v, SignFactor(Orb::CatalogueRow(), a, b, c).v)};
        if (keep == kLanes) [[likely]] {
            L::Store(out + i, psi.v);
        } else {
            alignas(64) double values[kLanes];
            L::Store(values, psi.v);
            std::memcpy(out + i, values, sizeof(double) * static_cast<size_t>(keep));
            if (keep < m) return;
        }
    }
}

/// Orb's kernels in the table on lane type L.
template <class L, class Orb>
constexpr void AddKernels(WideTable& table) {
    constexpr auto row = static_cast<size_t>(Orb::CatalogueRow());
    table.rows[row][0] = &GridRow<L, Orb, ViewMode::PDF>;
    table.rows[row][1] = &GridRow<L, Orb, ViewMode::DRPDF>;
    table.values[row][0] = &Batch<L, Orb, ViewMode::PDF, double>;
    table.values[row][1] = &Batch<L, Orb, ViewMode::DRPDF, double>;
    table.bytes[row][0] = &Batch<L, Orb, ViewMode::PDF, uint8_t>;
    table.bytes[row][1] = &Batch<L, Orb, ViewMode::DRPDF, uint8_t>;
    table.real[row][0] = &Real<L, Orb, ViewMode::PDF>;
    table.real[row][1] = &Real<L, Orb, ViewMode::DRPDF>;
    if constexpr (Orb::CatalogueRow() < kCatalogueSingleCount) table.psi[row] = &Psi<L, Orb>;
}

/// The table of every class's kernels on lane type L.
template <class L, class... Orb>
constexpr WideTable KernelTable(OrbitalList<Orb...>) {
    WideTable table{};
    (AddKernels<L, Orb>(table), ...);
    return table;
}

}  // namespace veltara::wide
