// The C interface of pixel surfaces: pictures behind device handles, and the public cMemoryDCEx.
#include <algorithm>
#include <bit>
#include <cstring>
#include <vector>

#include "host/c_guard.h"
#include "host/c_objects.h"
#include "support/cMemoryDCEx.h"
#include "support/error.h"
#include "support/rgba_array.h"

using veltara::host::Guard;
using veltara::host::kNullArgument;
using veltara::host::kNullObject;

namespace {

/// The surface behind a live handle; 9 for 0, an unknown or a freed handle.
const veltara::cMemoryDCEx& Resolve(int32_t handle) {
    const veltara::cMemoryDCEx* s = veltara::SurfaceFromHandle(handle);
    if (s == nullptr) veltara::Raise(veltara::kErrSubscript);
    return *s;
}

veltara::RGBA ToEngine(const vt_RGBA& p) { return std::bit_cast<veltara::RGBA>(p); }

}  // namespace

extern "C" {

int32_t vt_surface_info(int32_t handle, int32_t* width, int32_t* height) {
    if (width == nullptr || height == nullptr) return kNullArgument;
    return Guard([&] {
        const veltara::cMemoryDCEx& s = Resolve(handle);
        *width = std::max(s.Width(), 0);
        *height = std::max(s.Height(), 0);
    });
}

int32_t vt_surface_read(int32_t handle, uint8_t* bgra, size_t size) {
    if (bgra == nullptr) return kNullArgument;
    return Guard([&]() -> int32_t {
        const veltara::cMemoryDCEx& s = Resolve(handle);
        const size_t width = static_cast<size_t>(std::max(s.Width(), 0));
        const size_t height = static_cast<size_t>(std::max(s.Height(), 0));
        const size_t rowBytes = width * sizeof(veltara::RGBA);
        if (size < rowBytes * height) return veltara::kErrSubscript;
        // Row y from the top is scan line Height - y of the bottom-up bitmap; a surface without
        // a bitmap reads as zeros.
        for (size_t y = 0; y < height; ++y) {
            const veltara::RGBA* line = s.ScanLine(static_cast<int32_t>(height - y));
            uint8_t* dst = bgra + y * rowBytes;
            if (line == nullptr) {
                std::memset(dst, 0, rowBytes);
            } else {
                std::memcpy(dst, line, rowBytes);
            }
        }
        return 0;
    });
}

int32_t vt_render_to_buffer(vt_engine* e, int16_t index, const vt_RenderRequest* req, uint8_t* bgra,
                            size_t capacity, int32_t* width, int32_t* height) {
    if (bgra == nullptr || width == nullptr || height == nullptr) return kNullArgument;
    vt_RenderDCinfo dc{};
    if (const int32_t rc = vt_get_render(e, index, req, &dc)) return rc;
    // The handle of the size just drawn; the other one is whatever an earlier picture left.
    const int32_t handle = req->Size == VT_MAIN ? dc.MainHDC : dc.NanoHDC;
    if (const int32_t rc = vt_surface_info(handle, width, height)) return rc;
    return vt_surface_read(handle, bgra, capacity);
}

int32_t vt_memdc_new(vt_memdc** out) {
    if (out == nullptr) return kNullArgument;
    *out = nullptr;
    return Guard([&] { *out = new vt_memdc; });
}

int32_t vt_memdc_free(vt_memdc* m) {
    return Guard([&] { delete m; });
}

int32_t vt_memdc_create(vt_memdc* m, int32_t width, int32_t height, int32_t* hdc) {
    if (m == nullptr) return kNullObject;
    return Guard([&] {
        const int32_t h = m->surface.Create(width, height);
        if (hdc != nullptr) *hdc = h;
    });
}

int32_t vt_memdc_get_all_bits(vt_memdc* m, vt_RGBA* bits, int32_t cols, int32_t rows) {
    if (m == nullptr) return kNullObject;
    if (bits == nullptr) return kNullArgument;
    return Guard([&] {
        veltara::RgbaArray2D array(cols, rows);
        m->surface.GetAllBits(array);
        std::memcpy(bits, array.Data(), array.Size() * sizeof(vt_RGBA));
    });
}

int32_t vt_memdc_set_all_bits(vt_memdc* m, const vt_RGBA* bits, int32_t cols, int32_t rows) {
    if (m == nullptr) return kNullObject;
    if (bits == nullptr) return kNullArgument;
    return Guard([&] {
        veltara::RgbaArray2D array(cols, rows);
        std::transform(bits, bits + array.Size(), array.Data(), ToEngine);
        m->surface.SetAllBits(array);
    });
}

int32_t vt_memdc_get_bits(vt_memdc* m, int32_t y, vt_RGBA* out, int32_t count, int32_t* written) {
    if (m == nullptr) return kNullObject;
    if (written == nullptr || count < 0 || (out == nullptr && count > 0)) return kNullArgument;
    return Guard([&] {
        const std::vector<veltara::RGBA> row = m->surface.GetBits(y);
        const size_t n = std::min(row.size(), static_cast<size_t>(count));
        if (n > 0) std::memcpy(out, row.data(), n * sizeof(vt_RGBA));
        *written = static_cast<int32_t>(n);
    });
}

int32_t vt_memdc_set_bits(vt_memdc* m, const vt_RGBA* data, int32_t count, int32_t x, int32_t y,
                          int32_t scan_lines, int32_t length) {
    if (m == nullptr) return kNullObject;
    if (count < 0 || (data == nullptr && count > 0)) return kNullArgument;
    return Guard([&] {
        std::vector<veltara::RGBA> source(static_cast<size_t>(count));
        std::transform(data, data + source.size(), source.begin(), ToEngine);
        m->surface.SetBits(source, x, y, scan_lines, length);
    });
}

int32_t vt_memdc_handles(vt_memdc* m, int32_t* hdc, int32_t* hbmp) {
    if (m == nullptr) return kNullObject;
    if (hdc == nullptr || hbmp == nullptr) return kNullArgument;
    *hdc = m->surface.hdc();
    *hbmp = m->surface.hBmp();
    return 0;
}

int32_t vt_memdc_size(vt_memdc* m, int32_t* width, int32_t* height) {
    if (m == nullptr) return kNullObject;
    if (width == nullptr || height == nullptr) return kNullArgument;
    *width = m->surface.Width();
    *height = m->surface.Height();
    return 0;
}

int32_t vt_memdc_delete(vt_memdc* m) {
    if (m == nullptr) return kNullObject;
    return Guard([&] { m->surface.Delete(); });
}

}  // extern "C"
