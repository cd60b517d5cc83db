// The byte probability grid: one octant, indices 0..127 on each axis, index 0 at the nucleus.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "support/error.h"

namespace veltara {

class ProbGrid {
  public:
    static constexpr int32_t kSize = 128;  ///< points per axis; index 127 lies at the atom radius

    bool Empty() const { return mData.empty(); }
    /// Sized afresh, every element 0.
    void Reset() { mData.assign(static_cast<size_t>(kSize) * kSize * kSize, 0); }

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
};

}  // namespace veltara
