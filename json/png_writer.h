// PNG pictures: 8-bit RGB, rows top first, encoded to bytes.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vtjson {

/// An RGB picture, 3 bytes a pixel, rows top first.
struct RgbImage {
    int32_t width = 0;
    int32_t height = 0;
    std::vector<uint8_t> rgb;

    RgbImage() = default;
    RgbImage(int32_t w, int32_t h, uint8_t fill = 0)
        : width(w), height(h), rgb(static_cast<size_t>(w) * static_cast<size_t>(h) * 3, fill) {}

    uint8_t* At(int32_t x, int32_t y) {
        return rgb.data() + (static_cast<size_t>(y) * static_cast<size_t>(width) + x) * 3;
    }
    void Set(int32_t x, int32_t y, uint8_t r, uint8_t g, uint8_t b) {
        uint8_t* p = At(x, y);
        p[0] = r;
        p[1] = g;
        p[2] = b;
    }
};

/// The RGB picture of width x height pixels of B, G, R, A bytes (rows top first); alpha is
/// dropped, since the engine uses it as scratch storage, not as transparency.
RgbImage FromBgra(const std::vector<uint8_t>& bgra, int32_t width, int32_t height);

/// Copies `src` into `dst` with its top left corner at (x, y), clipped at dst's edges.
void Blit(RgbImage& dst, const RgbImage& src, int32_t x, int32_t y);

/// Encodes the picture as PNG bytes into `out`; an empty string on success, else libpng's reason.
std::string EncodePng(const RgbImage& image, std::vector<uint8_t>& out);

}  // namespace vtjson
