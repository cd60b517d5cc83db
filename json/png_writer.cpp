// PNG writing through libpng's simplified interface (no setjmp error handling to get wrong).
#include "png_writer.h"

#include <png.h>

#include <algorithm>
#include <cstring>

namespace vtjson {

RgbImage FromBgra(const std::vector<uint8_t>& bgra, int32_t width, int32_t height) {
    RgbImage out(width, height);
    const size_t pixels = static_cast<size_t>(width) * static_cast<size_t>(height);
    for (size_t i = 0; i < pixels; ++i) {
        out.rgb[3 * i + 0] = bgra[4 * i + 2];
        out.rgb[3 * i + 1] = bgra[4 * i + 1];
        out.rgb[3 * i + 2] = bgra[4 * i + 0];
    }
    return out;
}

void Blit(RgbImage& dst, const RgbImage& src, int32_t x, int32_t y) {
    for (int32_t row = 0; row < src.height; ++row) {
        const int32_t dy = y + row;
        if (dy < 0 || dy >= dst.height) continue;
        const int32_t from = std::max(0, -x);
        const int32_t to = std::min(src.width, dst.width - x);
        if (from >= to) continue;
        std::memcpy(dst.At(x + from, dy),
                    src.rgb.data() + (static_cast<size_t>(row) * src.width + from) * 3,
                    static_cast<size_t>(to - from) * 3);
    }
}

std::string EncodePng(const RgbImage& image, std::vector<uint8_t>& out) {
    png_image png;
    std::memset(&png, 0, sizeof png);
    png.version = PNG_IMAGE_VERSION;
    png.width = static_cast<png_uint_32>(image.width);
    png.height = static_cast<png_uint_32>(image.height);
    png.format = PNG_FORMAT_RGB;
    // The first call measures, the second writes.
    png_alloc_size_t size = 0;
    int ok = png_image_write_to_memory(&png, nullptr, &size, 0, image.rgb.data(), image.width * 3,
                                       nullptr);
    if (ok) {
        out.resize(size);
        ok = png_image_write_to_memory(&png, out.data(), &size, 0, image.rgb.data(),
                                       image.width * 3, nullptr);
        out.resize(size);
    }
    std::string problem = ok ? "" : png.message;
    png_image_free(&png);
    return problem;
}

}  // namespace vtjson
