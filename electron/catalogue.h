// The catalogue: the 40 fixed rows, each naming a state (or a shell average) with the
// defaults an orbital of it is drawn with. The one table every count, index and name reads.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "electron/state.h"
#include "records/PublicTypes.h"

namespace veltara {

/// One catalogue row: the display name, the state (hydrogen, real basis; the averaged rows
/// are shell averages), and the defaults of the two views.
struct CatalogueRow {
    const char16_t* name;  ///< display name, UTF-16 (the averaged S shells share the S names)
    int16_t n, l, m;
    bool shellAverage;
    int16_t pdfRadius, drpdfRadius;        ///< default half edge of the cube, Bohr radii
    int16_t pdfThreshold, drpdfThreshold;  ///< default lowest level of a dot
    OptFactor pdfOpt, drpdfOpt;            ///< symmetry of each view's grid
};

// Intended quirks kept as rows: the averaged 1S has threshold 50 where 1S has 30; 4Fxyz has
// the S orbitals' optimisation factors; 4Fx(x²-3y²) declares none, so both read as F8.
inline constexpr CatalogueRow kCatalogueRows[] = {
    {u"1S", 1, 0, 0, false, 2, 3, 30, 50, OptFactor::F32, OptFactor::F16xy},
    {u"2S", 2, 0, 0, false, 8, 10, 30, 50, OptFactor::F32, OptFactor::F16xy},
    {u"2Px", 2, 1, 1, false, 8, 10, 50, 50, OptFactor::F16yz, OptFactor::F8},
    {u"2Py", 2, 1, -1, false, 8, 10, 50, 50, OptFactor::F16xz, OptFactor::F8},
    {u"2Pz", 2, 1, 0, false, 8, 10, 50, 50, OptFactor::F16xy, OptFactor::F16xy},
    {u"3S", 3, 0, 0, false, 18, 20, 50, 50, OptFactor::F32, OptFactor::F16xy},
    {u"3Px", 3, 1, 1, false, 18, 20, 50, 50, OptFactor::F16yz, OptFactor::F8},
    {u"3Py", 3, 1, -1, false, 18, 20, 50, 50, OptFactor::F16xz, OptFactor::F8},
    {u"3Pz", 3, 1, 0, false, 18, 20, 50, 50, OptFactor::F16xy, OptFactor::F16xy},
    {u"3Dz\u00B2", 3, 2, 0, false, 18, 20, 30, 50, OptFactor::F16xy, OptFactor::F16xy},
    {u"3Dx\u00B2-y\u00B2", 3, 2, 2, false, 18, 20, 50, 50, OptFactor::F8, OptFactor::F8},
    {u"3Dxy", 3, 2, -2, false, 18, 20, 50, 50, OptFactor::F16xy, OptFactor::F16xy},
    {u"3Dxz", 3, 2, 1, false, 18, 20, 50, 50, OptFactor::F16xz, OptFactor::F8},
    {u"3Dyz", 3, 2, -1, false, 18, 20, 50, 50, OptFactor::F16yz, OptFactor::F8},
    {u"4S", 4, 0, 0, false, 28, 32, 50, 50, OptFactor::F32, OptFactor::F16xy},
    {u"4Px", 4, 1, 1, false, 28, 32, 50, 50, OptFactor::F16yz, OptFactor::F8},
    {u"4Py", 4, 1, -1, false, 28, 32, 50, 50, OptFactor::F16xz, OptFactor::F8},
    {u"4Pz", 4, 1, 0, false, 28, 32, 50, 50, OptFactor::F16xy, OptFactor::F16xy},
    {u"4Dz\u00B2", 4, 2, 0, false, 28, 32, 30, 50, OptFactor::F16xy, OptFactor::F16xy},
    {u"4Dx\u00B2-y\u00B2", 4, 2, 2, false, 28, 32, 50, 50, OptFactor::F8, OptFactor::F8},
    {u"4Dxy", 4, 2, -2, false, 28, 32, 50, 50, OptFactor::F16xy, OptFactor::F16xy},
    {u"4Dxz", 4, 2, 1, false, 28, 32, 50, 50, OptFactor::F16xz, OptFactor::F8},
    {u"4Dyz", 4, 2, -1, false, 28, 32, 50, 50, OptFactor::F16yz, OptFactor::F8},
    {u"4Fz\u00B3", 4, 3, 0, false, 28, 32, 30, 50, OptFactor::F16xy, OptFactor::F16xy},
    {u"4Fxz\u00B2", 4, 3, 1, false, 28, 32, 50, 50, OptFactor::F8, OptFactor::F8},
    {u"4Fyz\u00B2", 4, 3, -1, false, 28, 32, 50, 50, OptFactor::F8, OptFactor::F8},
    {u"4Fz(x\u00B2-y\u00B2)", 4, 3, 2, false, 28, 32, 50, 50, OptFactor::F8, OptFactor::F8},
    {u"4Fxyz", 4, 3, -2, false, 28, 32, 50, 50, OptFactor::F32, OptFactor::F16xy},
    {u"4Fx(x\u00B2-3y\u00B2)", 4, 3, 3, false, 28, 32, 50, 50, OptFactor::F8, OptFactor::F8},
    {u"4Fy(3x\u00B2-y\u00B2)", 4, 3, -3, false, 28, 32, 50, 50, OptFactor::F8, OptFactor::F8},
    {u"1S", 1, 0, 0, true, 2, 3, 50, 50, OptFactor::F32, OptFactor::F32},
    {u"2S", 2, 0, 0, true, 8, 10, 30, 50, OptFactor::F32, OptFactor::F32},
    {u"2P", 2, 1, 0, true, 8, 10, 50, 50, OptFactor::F32, OptFactor::F32},
    {u"3S", 3, 0, 0, true, 18, 20, 50, 50, OptFactor::F32, OptFactor::F32},
    {u"3P", 3, 1, 0, true, 18, 20, 50, 50, OptFactor::F32, OptFactor::F32},
    {u"3D", 3, 2, 0, true, 18, 20, 50, 50, OptFactor::F32, OptFactor::F32},
    {u"4S", 4, 0, 0, true, 28, 32, 50, 50, OptFactor::F32, OptFactor::F32},
    {u"4P", 4, 1, 0, true, 28, 32, 50, 50, OptFactor::F32, OptFactor::F32},
    {u"4D", 4, 2, 0, true, 28, 32, 50, 50, OptFactor::F32, OptFactor::F32},
    {u"4F", 4, 3, 0, true, 28, 32, 50, 50, OptFactor::F32, OptFactor::F32},
};

/// Number of catalogue rows; indices run 0 .. kCatalogueSize - 1.
inline constexpr int16_t kCatalogueSize = static_cast<int16_t>(std::size(kCatalogueRows));
/// The last catalogue index.
inline constexpr int16_t kCatalogueLastIndex = kCatalogueSize - 1;
/// The highest principal quantum number among the rows.
inline constexpr int16_t kCatalogueHighestN = 4;

/// Number of single-orbital rows; they come first, the averaged shells after them.
inline constexpr int16_t kCatalogueSingleCount = [] {
    int16_t count = 0;
    while (count < kCatalogueSize && !kCatalogueRows[count].shellAverage) ++count;
    return count;
}();

/// Whether `index` names a catalogue row.
constexpr bool IsCatalogueIndex(int32_t index) { return index >= 0 && index < kCatalogueSize; }

/// The index of the row of hydrogen's real state n, l, m (or its shell average n, l);
/// -1 when no row names it. Usable at compile time, so an orbital class can name its row.
constexpr int16_t CatalogueRowOf(int32_t n, int32_t l, int32_t m, bool shellAverage) {
    for (int16_t i = 0; i < kCatalogueSize; ++i) {
        const CatalogueRow& r = kCatalogueRows[i];
        if (r.n == n && r.l == l && r.m == m && r.shellAverage == shellAverage) return i;
    }
    return -1;
}

/// The catalogue entry of row `index` as the engine hands it out. Raises 9 outside the rows.
OrbInfo CatalogueInfo(int16_t index);

/// The state row `index` names: hydrogen (Z 1), real basis; a shell average for the averaged
/// rows. Raises 9 outside the rows.
State CatalogueState(int16_t index);

/// The row naming `s` (Z 1, real basis, the same n, l, m and kind), or nothing.
std::optional<int16_t> CatalogueIndexOf(const State& s);

/// The row's name as the text form reads it: lower case ASCII (² as 2, ³ as 3), the averaged
/// shells with "av" before it ("3dz2", "4fz(x2-y2)", "av3d"). Raises 9 outside the rows.
std::string CatalogueKey(int16_t index);

}  // namespace veltara
