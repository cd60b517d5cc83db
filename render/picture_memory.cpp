// PictureMemory: the surfaces and where the last picture's frame lives.
#include "render/picture_memory.h"

#include <algorithm>
#include <cstring>

namespace veltara {

namespace {

int32_t EdgeOf(RenderSize size) { return IsMainSize(size) ? 375 : 127; }

}  // namespace

FrameView PictureMemory::ViewOf(cMemoryDCEx& surface) {
    // The visible scan lines 1..Height follow each other in memory, bottom row first.
    RGBA* first = surface.ScanLine(1);
    if (first == nullptr) return {};
    return {first, surface.Width(), surface.Height()};
}

cMemoryDCEx& PictureMemory::SurfaceFor(RenderSize size) {
    std::unique_ptr<cMemoryDCEx>& surface = Slot(size);
    if (!surface) surface = std::make_unique<cMemoryDCEx>();
    if (!surface->Created()) surface->Create(EdgeOf(size), EdgeOf(size));
    return *surface;
}

cMemoryDCEx& PictureMemory::RecreatedSurface(RenderSize size, bool becomesFrame) {
    const Holder here = IsMainSize(size) ? Holder::Main : Holder::Nano;
    if (mHolder == here && !becomesFrame) SetAside();
    std::unique_ptr<cMemoryDCEx>& slot = Slot(size);
    if (!slot) slot = std::make_unique<cMemoryDCEx>();
    slot->Delete();
    slot->Create(EdgeOf(size), EdgeOf(size));
    return *slot;
}

FrameView PictureMemory::NewFrame(RenderSize size) {
    cMemoryDCEx& surface = SurfaceFor(size);
    const FrameView frame = ViewOf(surface);
    std::memset(static_cast<void*>(frame.data), 0, frame.Size() * sizeof(RGBA));
    mHolder = IsMainSize(size) ? Holder::Main : Holder::Nano;
    mMaxPixel = static_cast<int16_t>(EdgeOf(size) - 1);
    mKept = RgbaArray2D();
    return frame;
}

void PictureMemory::AdoptSurface(RenderSize size) {
    mHolder = IsMainSize(size) ? Holder::Main : Holder::Nano;
    mMaxPixel = static_cast<int16_t>(EdgeOf(size) - 1);
    mKept = RgbaArray2D();
}

FrameView PictureMemory::Frame() {
    switch (mHolder) {
        case Holder::Main:
            return ViewOf(*mMain);
        case Holder::Nano:
            return ViewOf(*mNano);
        case Holder::Kept:
            return {mKept.Data(), mKept.Cols(), mKept.Rows()};
        case Holder::None:
            break;
    }
    return {};
}

FrameView PictureMemory::SetAside() {
    if (mHolder == Holder::Main || mHolder == Holder::Nano) {
        const FrameView held = Frame();
        mKept.Resize(held.cols, held.rows);
        std::copy_n(held.data, held.Size(), mKept.Data());
        mHolder = Holder::Kept;
    }
    return Frame();
}

FrameView PictureMemory::FrameToShowOn(RenderSize size) {
    const Holder here = IsMainSize(size) ? Holder::Main : Holder::Nano;
    return mHolder == here ? Frame() : SetAside();
}

cMemoryDCEx& PictureMemory::ShowFrame(RenderSize size) {
    cMemoryDCEx& surface = SurfaceFor(size);
    const Holder here = IsMainSize(size) ? Holder::Main : Holder::Nano;
    if (mHolder == here) return surface;  // drawn in place
    const FrameView frame = Frame();
    if (frame.data == nullptr) Raise(kErrSubscript);
    // An array shorter than the picture fills only as many pixels as it holds, from the bottom
    // row up; a longer one gives only as many as the surface shows.
    const FrameView shown = ViewOf(surface);
    if (shown.data != nullptr)
        std::copy_n(frame.data, std::min(frame.Size(), shown.Size()), shown.data);
    return surface;
}

}  // namespace veltara
