// PictureMemory: a renderer's two surfaces, the frame of its last picture and the requests it
// remembers. A picture is drawn once, into the surface its host reads: the frame of a dot
// picture or kept volume lives in that surface's own pixels, and is set aside in a copy of its
// own only when that surface is about to show something else.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "records/PublicTypes.h"
#include "support/cMemoryDCEx.h"
#include "support/error.h"
#include "support/rgba_array.h"

namespace veltara {

/// The two picture sizes: 375 is Main; 128 draws a Nano picture. Where a size must be chosen
/// whatever the request says (a surface, the remembered request, the outline's scale), every
/// value other than 375 counts as Nano.
inline bool IsMainSize(RenderSize size) { return static_cast<int32_t>(size) == 375; }
/// Whether pictures of this size are drawn at all (375 or 128); other sizes draw nothing.
inline bool IsPictureSize(RenderSize size) {
    return IsMainSize(size) || static_cast<int32_t>(size) == 128;
}

/// The pixels of a frame indexed (column, row), column fastest, row 0 at the bottom: the
/// layout of a surface's visible scan lines, so a frame can be a surface's own pixels.
struct FrameView {
    RGBA* data = nullptr;
    int32_t cols = 0;
    int32_t rows = 0;

    RGBA& operator()(int32_t c, int32_t r) const {
        return data[static_cast<size_t>(r) * static_cast<size_t>(cols) + static_cast<size_t>(c)];
    }
    /// Checked element access: error 9 outside the frame (or for no frame at all).
    RGBA& At(int32_t c, int32_t r) const {
        if (c < 0 || r < 0 || c >= cols || r >= rows) Raise(kErrSubscript);
        return (*this)(c, r);
    }
    size_t Size() const { return static_cast<size_t>(cols) * static_cast<size_t>(rows); }
};

/// What one picture leaves for the next. Three behaviours rely on it: the volumetric cache of
/// GetRender hands the frame back when the cached request (CachedReq) asked for the same view of
/// a finished picture; a transect takes its colour scheme from the last request of the other
/// size; EraseTransector removes the outline that the cached request drew. The frame is one for
/// every mode and size, so the cache hands back whatever the last picture left.
class PictureMemory {
  public:
    RenderRequest mLastNanoReq{};
    RenderRequest mLastMainReq{};
    int16_t mMaxPixel = 0;  ///< 374 while the frame is Main-sized, 126 for Nano

    /// The request the cached picture belongs to: the last Main request, or the last Nano one
    /// when the last Main request was a transect, whatever size is asked for now.
    const RenderRequest& CachedReq() const {
        return mLastMainReq.Mode == RenderMode::Transect ? mLastNanoReq : mLastMainReq;
    }
    /// The last request of the other size (the picture a host shows beside this one).
    const RenderRequest& OtherSizeReq(RenderSize size) const {
        return IsMainSize(size) ? mLastNanoReq : mLastMainReq;
    }
    /// Remembers a served request as the last one of its size.
    void Remember(const RenderRequest& req) {
        (IsMainSize(req.Size) ? mLastMainReq : mLastNanoReq) = req;
    }

    /// The surface for a size (375: Main, anything else: Nano), created on first use at its
    /// full size (375 or 127).
    cMemoryDCEx& SurfaceFor(RenderSize size);
    /// The surface for a picture size deleted and made anew; a frame it held is set aside,
    /// unless the picture about to be drawn there becomes the frame (`becomesFrame`).
    cMemoryDCEx& RecreatedSurface(RenderSize size, bool becomesFrame = false);

    /// A frame all zero in the surface of a picture size, which becomes the last picture.
    FrameView NewFrame(RenderSize size);
    /// The surface of `size`, just drawn, becomes the frame of the last picture.
    void AdoptSurface(RenderSize size);
    /// The frame of the last picture, wherever it lives; empty before the first.
    FrameView Frame();
    /// The frame as a copy of its own, out of any surface (so it can change unseen).
    FrameView SetAside();
    /// The frame to change and then show on the surface of `size`: in place when that surface
    /// holds it, else set aside first (the surface it lives in keeps what it shows).
    FrameView FrameToShowOn(RenderSize size);
    /// Shows the frame on the surface of `size` (its pixels, in order, from the surface's first
    /// visible scan line) and returns that surface. Raises 9 when there is no frame yet.
    cMemoryDCEx& ShowFrame(RenderSize size);

  private:
    enum class Holder : uint8_t { None, Main, Nano, Kept };
    std::unique_ptr<cMemoryDCEx>& Slot(RenderSize size) { return IsMainSize(size) ? mMain : mNano; }
    static FrameView ViewOf(cMemoryDCEx& surface);

    std::unique_ptr<cMemoryDCEx> mMain;
    std::unique_ptr<cMemoryDCEx> mNano;
    Holder mHolder = Holder::None;
    RgbaArray2D mKept;  ///< the frame while no surface holds it
};

}  // namespace veltara
