// The grid-row kernel of the catalogue's orbitals over a lane type L, for the files compiled for
// one wider instruction set (electron/wide_rows_avx2.cpp, wide_rows_avx512.cpp) and for them only.
//
// Everything here is a template over L, and each file declares its L in an anonymous namespace:
// every function made from these templates is then local to its file, so the linker can never
// keep a wide copy of it for baseline code. The kernel calls no shared inline code on the way;
// a point that is faulty or gives no byte is handed back to the caller (baseline code).
//
// L supplies the operations of the exponential's common sequence (support/exact_math_table.h)
// and: kLanes; Load (unaligned) and Store; Sqrt; Neg; Within(a, limit), the lanes with
// |a| <= limit as bits; Finite(a, b), the lanes with |a| <= max and |b| <= max; and
// ToBytes(a, out), which writes the lanes rounded as std::nearbyint does (when they fit) and
// returns the lanes that give no byte 0..255.
#pragma once

#include <cstdint>
#include <cstring>

#include "electron/orbital_list.h"
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

/// The grid row of Orb's view V, as OrbitalScheme<Orb, W>::GridRow computes it (the same
/// operations in the same order), kLanes points a step.
template <class L, class Orb, ViewMode V>
void GridRow(const GridRows& grid, int32_t xFirst, int32_t xLast, int32_t y, int32_t z,
             uint8_t* out, double scale, uint64_t* redo) {
    using N = Num<L>;
    constexpr int32_t kLanes = L::kLanes;
    const double* X = grid.squares + xFirst;
    const int32_t n = xLast - xFirst + 1;
    const N Y{L::Set(grid.squares[y])}, Z{L::Set(grid.squares[z])};
    redo[0] = redo[1] = 0;
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
        const N rho2 = Y + x;
        const N r2 = rho2 + Z;
        const N r{L::Sqrt(r2.v)};
        const N e = Exp(Orb::MinusK() == -1.0 ? -r : r * Orb::MinusK());
        const N f = Orb::template Formula<N>(e, Terms<N>{x, Y, Z, rho2, r2, r});
        N v = f;
        if constexpr (V == ViewMode::DRPDF) {
            if constexpr (Orb::kWeight == RadialWeight::kRhoTimesR) {
                v = f * N{L::Sqrt(rho2.v)} * r;
            } else {
                v = f * r2;
            }
        }
        alignas(16) uint8_t bytes[kLanes];
        uint32_t bad = ~L::Finite(v.v, r2.v) | L::ToBytes((v * scale).v, bytes);
        bad &= (1u << m) - 1;
        std::memcpy(out + i, bytes, static_cast<size_t>(m));
        if (bad != 0) [[unlikely]] {
            redo[i / 64] |= uint64_t{bad} << (i % 64);  // kLanes divides 64: no lane crosses
        }
    }
}

/// The table of every class's two rows on lane type L.
template <class L, class... Orb>
constexpr WideGridRowTable RowTable(OrbitalList<Orb...>) {
    WideGridRowTable table{};
    ((table.rows[Orb::CatalogueRow()][0] = &GridRow<L, Orb, ViewMode::PDF>,
      table.rows[Orb::CatalogueRow()][1] = &GridRow<L, Orb, ViewMode::DRPDF>),
     ...);
    return table;
}

}  // namespace veltara::wide
