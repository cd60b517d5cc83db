// cMemoryDCEx: the off-screen picture buffer, its copy operations and the handle registry.
#include "support/cMemoryDCEx.h"

#include <algorithm>
#include <limits>
#include <mutex>
#include <unordered_map>

#include "support/convert.h"

namespace veltara {

namespace {

// Device-context and bitmap handles. Both kinds share one numbering so a value never means two
// things at once; only device contexts resolve to a surface.
class HandleRegistry {
  public:
    enum class Kind { DeviceContext, Bitmap };

    int32_t Issue(cMemoryDCEx* owner, Kind kind) {
        std::lock_guard lock(mMutex);
        for (;;) {
            const int32_t h = mNext;
            mNext = mNext == std::numeric_limits<int32_t>::max() ? 1 : mNext + 1;
            if (mLive.try_emplace(h, Entry{owner, kind}).second) return h;
        }
    }

    // Frees `h` only while `owner` holds it: a stale value kept after Delete may since have
    // been issued to another surface, and freeing it again must not touch that one.
    void Free(int32_t h, const cMemoryDCEx* owner) {
        if (h == 0) return;
        std::lock_guard lock(mMutex);
        const auto it = mLive.find(h);
        if (it != mLive.end() && it->second.owner == owner) mLive.erase(it);
    }

    cMemoryDCEx* Resolve(int32_t h) {
        std::lock_guard lock(mMutex);
        const auto it = mLive.find(h);
        if (it == mLive.end() || it->second.kind != Kind::DeviceContext) return nullptr;
        return it->second.owner;
    }

  private:
    struct Entry {
        cMemoryDCEx* owner;
        Kind kind;
    };
    std::mutex mMutex;
    std::unordered_map<int32_t, Entry> mLive;
    int32_t mNext = 1;
};

// Never destroyed, so surfaces with static lifetime can still free their handles at exit.
HandleRegistry& Registry() {
    static auto* registry = new HandleRegistry;
    return *registry;
}

// The longest row GetBits hands out. Only a surface without a bitmap can be wider than
// kMaxEdge; a row of billions of pixels is refused the way a failed allocation would be.
constexpr int32_t kMaxRowPixels = 1 << 24;

}  // namespace

cMemoryDCEx::~cMemoryDCEx() { Delete(); }

int32_t cMemoryDCEx::Create(const int32_t& Width, const int32_t& Height) {
    const int32_t width = Width;
    const int32_t height = Height;

    // A created surface is deleted first. Delete is also what releases a device context left
    // behind by an earlier Create that stopped at the height overflow.
    Delete();

    mDC = Registry().Issue(this, HandleRegistry::Kind::DeviceContext);

    // The bitmap's description: width, then Height + 1 rows stored bottom-up. The overflow
    // stops here with the device context already made and no bitmap.
    mWidth = width;
    const int32_t bitmapRows = Add32(height, 1);
    mHeight = height;

    // A size the platform cannot make leaves hBmp at 0; the surface still counts as created
    // and every copy then has no effect.
    mBmp = 0;
    if (width >= 1 && width <= kMaxEdge && bitmapRows >= 1 && bitmapRows <= kMaxEdge) {
        mBits.assign(static_cast<size_t>(width) * static_cast<size_t>(bitmapRows), RGBA{});
        mBmp = Registry().Issue(this, HandleRegistry::Kind::Bitmap);
    }
    // A new memory device context holds no bitmap of ours before mBmp is selected into it.
    mOldBmp = 0;
    mCreated = true;
    return mDC;
}

void cMemoryDCEx::GetAllBits(RgbaArray2D& Bits) const {
    if (Bits.Empty()) Raise(kErrSubscript);
    if (mBits.empty()) return;

    // Height scan lines from scan line 1, each Width pixels, laid one after another into the
    // array's memory from element (0, 0). Nothing is written past the array's storage.
    const size_t width = static_cast<size_t>(mWidth);
    const size_t room = Bits.Size();
    RGBA* out = Bits.Data();
    for (int32_t j = 0; j < mHeight; ++j) {
        const size_t at = static_cast<size_t>(j) * width;
        if (at >= room) break;
        const RGBA* line = ScanLine(j + 1);
        std::copy_n(line, std::min(width, room - at), out + at);
    }
}

std::vector<RGBA> cMemoryDCEx::GetBits(const int32_t& Y) const {
    const int32_t scanLine = Sub32(Sub32(Add32(mHeight, 1), Y), 1);
    const int32_t upper = Sub32(mWidth, 1);
    if (upper < 0) return {};
    if (mWidth > kMaxRowPixels) Raise(kErrOutOfMemory);

    std::vector<RGBA> row(static_cast<size_t>(mWidth));
    // A scan line the bitmap does not have (or no bitmap at all) leaves the row zero.
    if (const RGBA* line = ScanLine(scanLine)) std::copy_n(line, row.size(), row.begin());
    return row;
}

void cMemoryDCEx::SetAllBits(const RgbaArray2D& ColourData) {
    if (ColourData.Empty()) Raise(kErrSubscript);
    if (mBits.empty()) return;

    // The inverse of GetAllBits; scan line 0, the spare row, is not among the lines copied.
    // An array shorter than the picture fills only as many pixels as it holds.
    const size_t width = static_cast<size_t>(mWidth);
    const size_t room = ColourData.Size();
    const RGBA* in = ColourData.Data();
    for (int32_t j = 0; j < mHeight; ++j) {
        const size_t at = static_cast<size_t>(j) * width;
        if (at >= room) break;
        std::copy_n(in + at, std::min(width, room - at), ScanLine(j + 1));
    }
}

void cMemoryDCEx::SetBits(const std::vector<RGBA>& ColourData, const int32_t& X, const int32_t& Y,
                          const int32_t& ScanLines, int32_t Length) {
    if (Length == 0) Length = Sub32(mWidth, X);
    const int32_t firstLine = Sub32(Sub32(Add32(mHeight, 1), Y), 1);
    if (ColourData.empty()) Raise(kErrSubscript);
    if (mBits.empty() || ScanLines <= 0 || Length <= 0) return;

    // Source row k is scan line firstLine + k, i.e. row Y - k from the top: the band grows
    // upwards. Only the rows that exist on the bitmap are visited, so any ScanLines is cheap.
    const int64_t width = mWidth;
    const int64_t x0 = X;
    const int64_t first = firstLine;
    const int64_t kBegin = std::max<int64_t>(0, -first);
    const int64_t kEnd = std::min<int64_t>(ScanLines, int64_t{mHeight} + 1 - first);

    // Source column i goes to column X + i. It must lie within the Length asked for, within the
    // source row (always Width elements, whatever Length is) and land on the bitmap.
    const int64_t iBegin = std::max<int64_t>(0, -x0);
    const int64_t iEnd = std::min({int64_t{Length}, width, width - x0});
    if (iBegin >= iEnd) return;

    const int64_t room = static_cast<int64_t>(ColourData.size());
    for (int64_t k = kBegin; k < kEnd; ++k) {
        const int64_t rowStart = k * width;
        if (rowStart >= room) break;
        const int64_t iStop = std::min(iEnd, room - rowStart);
        if (iBegin >= iStop) break;
        RGBA* line = ScanLine(static_cast<int32_t>(first + k));
        std::copy(ColourData.begin() + (rowStart + iBegin), ColourData.begin() + (rowStart + iStop),
                  line + (x0 + iBegin));
    }
}

void cMemoryDCEx::Delete() {
    // The bitmap and the device context are freed; the handle values stay readable through hdc
    // and hBmp but no longer resolve. Calling this on a surface never created, or twice, frees
    // nothing more: the registry only frees a handle this surface still holds.
    Registry().Free(mBmp, this);
    Registry().Free(mDC, this);
    mBits.clear();
    mBits.shrink_to_fit();
    mCreated = false;
}

const RGBA* cMemoryDCEx::ScanLine(int32_t s) const {
    if (mBits.empty() || s < 0 || s > mHeight) return nullptr;
    return mBits.data() + static_cast<size_t>(s) * static_cast<size_t>(mWidth);
}

RGBA* cMemoryDCEx::ScanLine(int32_t s) {
    return const_cast<RGBA*>(static_cast<const cMemoryDCEx&>(*this).ScanLine(s));
}

cMemoryDCEx* SurfaceFromHandle(int32_t hdc) {
    if (hdc == 0) return nullptr;
    return Registry().Resolve(hdc);
}

void StretchBlt(cMemoryDCEx& dst, int32_t dstX, int32_t dstY, int32_t dstW, int32_t dstH,
                const cMemoryDCEx& src, int32_t srcX, int32_t srcY, int32_t srcW, int32_t srcH) {
    if (dst.ScanLine(0) == nullptr || src.ScanLine(0) == nullptr) return;
    if (dstW <= 0 || dstH <= 0) return;

    // Both surfaces are addressed in rows from the top, the spare row being the last one.
    const int64_t srcCols = src.Width();
    const int64_t srcRows = int64_t{src.Height()} + 1;
    const int64_t dstCols = dst.Width();
    const int64_t dstRows = int64_t{dst.Height()} + 1;

    // Copying a surface onto itself reads from a snapshot, so no pixel is read after it was
    // overwritten.
    std::vector<RGBA> snapshot;
    const RGBA* srcBits = src.ScanLine(0);
    if (&dst == &src) {
        snapshot.assign(srcBits, srcBits + srcCols * srcRows);
        srcBits = snapshot.data();
    }

    // Only destination pixels on the destination bitmap are visited.
    const int64_t yBegin = std::max<int64_t>(0, -int64_t{dstY});
    const int64_t yEnd = std::min<int64_t>(dstH, dstRows - dstY);
    const int64_t xBegin = std::max<int64_t>(0, -int64_t{dstX});
    const int64_t xEnd = std::min<int64_t>(dstW, dstCols - dstX);
    for (int64_t y = yBegin; y < yEnd; ++y) {
        const int64_t sy = srcY + y * srcH / dstH;
        if (sy < 0 || sy >= srcRows) continue;
        const RGBA* srcLine = srcBits + (srcRows - 1 - sy) * srcCols;
        RGBA* dstLine = dst.ScanLine(static_cast<int32_t>(dstRows - 1 - (dstY + y)));
        for (int64_t x = xBegin; x < xEnd; ++x) {
            const int64_t sx = srcX + x * srcW / dstW;
            if (sx < 0 || sx >= srcCols) continue;
            dstLine[dstX + x] = srcLine[sx];
        }
    }
}

}  // namespace veltara
