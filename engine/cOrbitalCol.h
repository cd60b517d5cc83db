// cOrbitalCol: the orbital collection, one renderer per slot, addressed by the index Add gave.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "../electron/state.h"
#include "../records/PublicTypes.h"
#include "../render/cOrbital.h"

namespace veltara {

/// The untyped index of ReFillDotMatrix: a 16-bit or 32-bit integer, a double or a numeric
/// string, converted to a 32-bit integer with round-half-to-even before use.
using OrbitalIndexValue = std::variant<int16_t, int32_t, double, std::string>;

/// Converts an untyped index to 32 bits: doubles (and numeric strings) round half to even.
/// A string must be a decimal number (sign, digits, fraction, exponent), optionally padded
/// with spaces or tabs. Raises 13 for a string that is not a number, 6 for a value outside the
/// 32-bit range or not finite.
int32_t ConvertOrbitalIndex(const OrbitalIndexValue& index);

/// Slots 0..UBound(); a slot is empty until Add fills it and again after Delete. Indices are
/// stable: deleting one orbital never renumbers another, and Add reuses the lowest empty slot.
class cOrbitalCol {
  public:
    /// One empty slot (bounds 0 to 0); the next Add fills slot 0.
    cOrbitalCol();
    ~cOrbitalCol();
    cOrbitalCol(const cOrbitalCol&) = delete;
    cOrbitalCol& operator=(const cOrbitalCol&) = delete;

    /// Renders a picture of orbital `index`. Raises 9 outside the bounds, 91 for an empty slot,
    /// and passes on the renderer's errors.
    RenderDCinfo GetRender(const int16_t& index, const RenderRequest& RenderInfo);

    /// A new dot cloud for orbital `index` with Target dots above Threshold; returns the
    /// renderer's result (0). Raises 13 / 6 when `index` does not convert (before anything
    /// else), 9 outside the bounds, 91 for an empty slot, 6 for a Target outside 16 bits.
    int32_t ReFillDotMatrix(const OrbitalIndexValue& index, const uint8_t& Threshold,
                            const int32_t& Target);

    /// A copy of orbital `index`'s statistics. Raises 9 outside the bounds, 91 for an empty
    /// slot.
    OrbitalStats GetStats(const int16_t& index);

    /// Adds an orbital (grid and first dot cloud computed before returning) and returns its
    /// index. A view other than PDF and DRPDF grows the slots but creates nothing: 91.
    /// Setup's errors pass on with the renderer left in its slot. Raises 6 when no index is left
    /// for the next Add (slot 32767 filled and none empty); the orbital is in place regardless.
    int16_t Add(const OrbitalSetup& Info);

    /// Adds a state or superposition at time t (hbar/E_h) like a catalogue orbital: grid, dots,
    /// statistics, every mode and size. Info gives the view, AtomRadius, DotTarget and
    /// DotThreshold (OrbitalIndex is not read); a field of 0 takes its default: the radius that
    /// holds 99.9 % of the probability, 5000 dots, threshold 0. A single state the catalogue
    /// lists (real, Z = 1, or a shell average) is added as that catalogue row, with the row's
    /// radius and threshold as defaults, so it gives the row's bytes, dots and pictures. Any
    /// other state's dots are exact samples of the view inside the cube (the threshold does
    /// not thin them); a superposition of several states is sampled over the whole cube.
    /// Returns the index. Raises as Add does, 5 (with a sentence) for a non-finite t, and 6
    /// when the default radius exceeds 16 bits.
    int16_t AddState(const Superposition& s, double t, const OrbitalSetup& Info);

    /// Empties slot OrbIndex (an empty slot is fine). Only the last slot is removed, and only
    /// when it is not slot 0. Raises 9 outside the bounds.
    void Delete(const int16_t& OrbIndex);

    // Read-only access for hosts that export data.

    /// The upper bound of the slots (0 for a new collection).
    int16_t UBound() const;
    /// The slot that the next Add fills.
    int16_t NextOrbIndex() const { return mNextOrbIndex; }
    /// The orbital in slot `index`, read-only: its setup, dots and grid. Raises 9 outside the
    /// bounds, 91 for an empty slot.
    const cOrbital& Orbital(int16_t index) const;

  private:
    /// The slot the next Add fills, grown when every slot is taken, holding a new renderer of
    /// the view (empty for any other view: 91).
    cOrbital& NewRenderer(ViewMode view);
    /// The index just filled; moves on to the next free slot (6 when none is left).
    int16_t Filled();
    void FindNextOrbIndex();
    /// Raises 9 outside the bounds.
    void CheckBounds(int32_t index) const;
    /// The renderer of a slot within bounds; 91 for an empty slot.
    cOrbital& Occupant(int32_t index);

    std::vector<std::unique_ptr<cOrbital>> mOrbitals;
    int16_t mNextOrbIndex = 0;
};

}  // namespace veltara
