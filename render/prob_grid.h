// The byte probability grid: one octant, indices 0..127 on each axis, index 0 at the nucleus;
// or, for a density without mirror symmetry, the whole cube, indices -127..127 on each axis.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "support/error.h"

namespace veltara {

class ProbGrid {
  public:
    static constexpr int32_t kSize = 128;  ///< points per axis; index 127 lies at the atom radius
    static constexpr int32_t kCubeSize = 2 * kSize - 1;  ///< points per axis of the whole cube

    bool Empty() const { return mData.empty(); }
    /// Sized afresh as one octant, every element 0.
    void Reset() {
        mWhole = false;
        mData.assign(static_cast<size_t>(kSize) * kSize * kSize, 0);
    }
    /// Sized afresh as the whole cube, every element 0.
    void ResetCube() {
        mWhole = true;
        mData.assign(static_cast<size_t>(kCubeSize) * kCubeSize * kCubeSize, 0);
    }
    /// Whether the grid holds the whole cube rather than one octant.
    bool Whole() const { return mWhole; }
    /// Points per edge: 128 for an octant, 255 for the whole cube.
    int32_t Edge() const { return mWhole ? kCubeSize : kSize; }
    size_t Count() const { return mData.size(); }

    /// Element (X, Y, Z) of the whole cube, each -127..127; X varies fastest in memory.
    static size_t CubeIndex(int32_t x, int32_t y, int32_t z) {
        constexpr int32_t c = kSize - 1;
        return (static_cast<size_t>(z + c) * kCubeSize + static_cast<size_t>(y + c)) * kCubeSize +
               static_cast<size_t>(x + c);
    }
    /// The level at the grid point (X, Y, Z), each -127..127: read from the octant by the
    /// coordinates' magnitudes, or from the whole cube.
    uint8_t Level(int32_t x, int32_t y, int32_t z) const {
        if (mWhole) return mData[CubeIndex(x, y, z)];
        return mData[Index(x < 0 ? -x : x, y < 0 ? -y : y, z < 0 ? -z : z)];
    }

    /// Element (X, Y, Z); X varies fastest in memory.
    static size_t Index(int32_t x, int32_t y, int32_t z) {
        return (static_cast<size_t>(z) * kSize + static_cast<size_t>(y)) * kSize +
               static_cast<size_t>(x);
    }
    uint8_t& operator()(int32_t x, int32_t y, int32_t z) { return mData[Index(x, y, z)]; }
    uint8_t operator()(int32_t x, int32_t y, int32_t z) const { return mData[Index(x, y, z)]; }

    /// Checked read: error 9 for an index outside 0..127 (or a grid never sized).
    uint8_t At(int32_t x, int32_t y, int32_t z) const {
        if (mData.empty() || x < 0 || y < 0 || z < 0 || x >= kSize || y >= kSize || z >= kSize) {
            Raise(kErrSubscript);
        }
        return (*this)(x, y, z);
    }

    uint8_t* Data() { return mData.data(); }
    const uint8_t* Data() const { return mData.data(); }

  private:
    std::vector<uint8_t> mData;
    bool mWhole = false;
};

}  // namespace veltara
