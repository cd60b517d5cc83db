// A two-dimensional array of pixels indexed (column, row), lower bounds 0, column fastest in
// memory.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "../records/PublicTypes.h"
#include "../support/error.h"

namespace veltara {

class RgbaArray2D {
  public:
    RgbaArray2D() = default;
    RgbaArray2D(int32_t cols, int32_t rows) { Resize(cols, rows); }

    /// An array never sized has no element (0, 0): copies from or into it raise 9.
    bool Empty() const { return mData.empty(); }
    int32_t Cols() const { return mCols; }
    int32_t Rows() const { return mRows; }

    /// Bounds 0..cols-1 and 0..rows-1, every byte zero.
    void Resize(int32_t cols, int32_t rows) {
        mCols = cols > 0 ? cols : 0;
        mRows = rows > 0 ? rows : 0;
        mData.assign(static_cast<size_t>(mCols) * static_cast<size_t>(mRows), RGBA{});
    }
    /// Every byte back to zero, bounds kept.
    void Clear() { std::fill(mData.begin(), mData.end(), RGBA{}); }

    RGBA& operator()(int32_t c, int32_t r) { return mData[Offset(c, r)]; }
    const RGBA& operator()(int32_t c, int32_t r) const { return mData[Offset(c, r)]; }

    /// Checked element access: error 9 outside the bounds.
    RGBA& At(int32_t c, int32_t r) {
        if (c < 0 || r < 0 || c >= mCols || r >= mRows) Raise(kErrSubscript);
        return (*this)(c, r);
    }

    RGBA* Data() { return mData.data(); }
    const RGBA* Data() const { return mData.data(); }
    size_t Size() const { return mData.size(); }

    bool operator==(const RgbaArray2D&) const = default;

  private:
    size_t Offset(int32_t c, int32_t r) const {
        return static_cast<size_t>(r) * static_cast<size_t>(mCols) + static_cast<size_t>(c);
    }

    int32_t mCols = 0;
    int32_t mRows = 0;
    std::vector<RGBA> mData;
};

}  // namespace veltara
