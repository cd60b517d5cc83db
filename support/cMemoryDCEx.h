// cMemoryDCEx: an off-screen picture of 32-bit B, G, R, A pixels that a host copies to its screen.
//
// A surface made by Create(Width, Height) holds Width columns and Height + 1 rows, stored
// bottom-up like a device-independent bitmap: row Y counted from the top is scan line
// Height - Y, and scan line 0 (below the picture) is a spare row the whole-picture copies
// never touch. hdc and hBmp are non-zero 32-bit handles from a process-wide registry; a host
// resolves an hdc to its surface with SurfaceFromHandle.
#pragma once

#include <cstdint>
#include <vector>

#include "../records/PublicTypes.h"
#include "../support/rgba_array.h"

namespace veltara {

class cMemoryDCEx {
  public:
    /// The largest bitmap edge (Width, or Height + 1 rows) that is made; a larger one, or one
    /// below 1, fails like a platform bitmap that cannot be made (the surface counts as created,
    /// hBmp is 0, copies do nothing, GetBits returns zeros).
    static constexpr int32_t kMaxEdge = 16384;

    cMemoryDCEx() = default;
    ~cMemoryDCEx();  ///< calls Delete once
    cMemoryDCEx(const cMemoryDCEx&) = delete;
    cMemoryDCEx& operator=(const cMemoryDCEx&) = delete;

    /// Makes a new device context and a Width x (Height + 1) bitmap, all zero, deleting the old
    /// ones first when created. Returns the new hdc. Raises 6 when Height + 1 overflows (after the
    /// device context was made). A zero, negative or too large size gives no bitmap (hBmp 0).
    int32_t Create(const int32_t& Width, const int32_t& Height);

    /// Copies the visible picture into Bits: Bits(x, j) gets column x of row Height - 1 - j from
    /// the top. Raises 9 when Bits has no element (0, 0). Always returns nothing (the pixels come
    /// back only through Bits).
    void GetAllBits(RgbaArray2D& Bits) const;

    /// Row Y (from the top) as Width pixels; Y = Height is the spare row; a row the bitmap does
    /// not have comes back all zero. Raises 6 when Height - Y or Width - 1 overflows. A Width of
    /// 0 or below gives no elements; a row longer than 2^24 pixels (possible only on a surface
    /// without a bitmap) raises 7.
    std::vector<RGBA> GetBits(const int32_t& Y) const;

    /// The inverse of GetAllBits; the spare row is left alone. Raises 9 for an empty array.
    void SetAllBits(const RgbaArray2D& ColourData);

    /// Writes ScanLines rows starting at row Y and going upwards (source row k goes to row Y - k);
    /// each source row is Width elements of ColourData, of which the first Length (0: Width - X)
    /// go to columns X.. . Pixels outside the surface, or beyond the array's storage, are skipped;
    /// a negative Length writes nothing. Raises 9 for an empty array, 6 when Height - Y or
    /// Width - X overflows.
    void SetBits(const std::vector<RGBA>& ColourData, const int32_t& X, const int32_t& Y,
                 const int32_t& ScanLines, int32_t Length = 0);

    int32_t hdc() const { return mDC; }
    int32_t hBmp() const { return mBmp; }

    /// Frees the device context and bitmap; the handle values are kept but no longer resolve.
    void Delete();

    // Geometry of the last Create (0 before it), and whether the surface counts as created.
    int32_t Width() const { return mWidth; }
    int32_t Height() const { return mHeight; }
    bool Created() const { return mCreated; }

    /// Scan line s (0 = the spare bottom row) of the bitmap, Width pixels; nullptr when the
    /// bitmap does not exist or has no such line.
    const RGBA* ScanLine(int32_t s) const;
    RGBA* ScanLine(int32_t s);

  private:
    int32_t mDC = 0;
    int32_t mBmp = 0;
    int32_t mOldBmp = 0;
    int32_t mWidth = 0;
    int32_t mHeight = 0;
    bool mCreated = false;
    std::vector<RGBA> mBits;  // Width x (Height + 1), scan line 0 first; empty when no bitmap
};

/// The surface behind a live device-context handle, or nullptr for 0, an unknown or freed handle.
cMemoryDCEx* SurfaceFromHandle(int32_t hdc);

/// Nearest-neighbour scaling copy of a rectangle (rows counted from the top): destination pixel
/// (x, y) of the dstW x dstH rectangle takes source (x * srcW / dstW, y * srcH / dstH) of the
/// source rectangle, integer division. Pixels outside either surface are skipped.
void StretchBlt(cMemoryDCEx& dst, int32_t dstX, int32_t dstY, int32_t dstW, int32_t dstH,
                const cMemoryDCEx& src, int32_t srcX, int32_t srcY, int32_t srcW, int32_t srcH);

}  // namespace veltara
