// The glyphs of the label font and the drawing of a label.
#include "label_font.h"

#include <array>

namespace vtcli {

namespace {

/// One character: its rows top first, '#' for a lit pixel; superscripts are narrower and
/// shorter, and sit at the top of the line.
struct Glyph {
    const char* name;  // UTF-8 of the character
    std::array<const char*, 7> rows;
};

constexpr Glyph kGlyphs[] = {
    {"0", {".###.", "#...#", "#..##", "#.#.#", "##..#", "#...#", ".###."}},
    {"1", {"..#..", ".##..", "..#..", "..#..", "..#..", "..#..", ".###."}},
    {"2", {".###.", "#...#", "....#", "...#.", "..#..", ".#...", "#####"}},
    {"3", {"#####", "...#.", "..#..", "...#.", "....#", "#...#", ".###."}},
    {"4", {"...#.", "..##.", ".#.#.", "#..#.", "#####", "...#.", "...#."}},
    {"5", {"#####", "#....", "####.", "....#", "....#", "#...#", ".###."}},
    {"6", {"..##.", ".#...", "#....", "####.", "#...#", "#...#", ".###."}},
    {"7", {"#####", "....#", "...#.", "..#..", ".#...", ".#...", ".#..."}},
    {"8", {".###.", "#...#", "#...#", ".###.", "#...#", "#...#", ".###."}},
    {"9", {".###.", "#...#", "#...#", ".####", "....#", "...#.", ".##.."}},
    {"D", {"####.", "#...#", "#...#", "#...#", "#...#", "#...#", "####."}},
    {"F", {"#####", "#....", "#....", "####.", "#....", "#....", "#...."}},
    {"P", {"####.", "#...#", "#...#", "####.", "#....", "#....", "#...."}},
    {"S", {".####", "#....", "#....", ".###.", "....#", "....#", "####."}},
    {"a", {".....", ".....", ".###.", "....#", ".####", "#...#", ".####"}},
    {"v", {".....", ".....", "#...#", "#...#", "#...#", ".#.#.", "..#.."}},
    {"x", {".....", ".....", "#...#", ".#.#.", "..#..", ".#.#.", "#...#"}},
    {"y", {".....", ".....", "#...#", "#...#", ".####", "....#", ".###."}},
    {"z", {".....", ".....", "#####", "...#.", "..#..", ".#...", "#####"}},
    {"(", {"...#.", "..#..", ".#...", ".#...", ".#...", "..#..", "...#."}},
    {")", {".#...", "..#..", "...#.", "...#.", "...#.", "..#..", ".#..."}},
    {"-", {".....", ".....", ".....", ".###.", ".....", ".....", "....."}},
    {" ", {".....", ".....", ".....", ".....", ".....", ".....", "....."}},
    {"\xC2\xB2", {"##.", "..#", ".#.", "#..", "###", "...", "..."}},
    {"\xC2\xB3", {"##.", "..#", ".#.", "..#", "##.", "...", "..."}},
};

/// The glyph of the character starting at text[i], and its length in bytes.
const Glyph& GlyphAt(const std::string& text, size_t i, size_t& length) {
    for (const Glyph& g : kGlyphs) {
        const std::string name = g.name;
        if (text.compare(i, name.size(), name) == 0) {
            length = name.size();
            return g;
        }
    }
    // Another character: skip its UTF-8 continuation bytes and leave a blank.
    length = 1;
    while (i + length < text.size() &&
           (static_cast<unsigned char>(text[i + length]) & 0xC0) == 0x80) {
        ++length;
    }
    return kGlyphs[22];
}

int32_t Advance(const Glyph& g) {
    return static_cast<int32_t>(std::char_traits<char>::length(g.rows[0])) + 1;
}

void Fill(RgbImage& image, int32_t x, int32_t y, uint8_t v) {
    if (x >= 0 && y >= 0 && x < image.width && y < image.height) image.Set(x, y, v, v, v);
}

}  // namespace

int32_t LabelWidth(const std::string& text) {
    int32_t width = 0;
    for (size_t i = 0, length = 0; i < text.size(); i += length) {
        width += Advance(GlyphAt(text, i, length));
    }
    return width > 0 ? width - 1 : 0;
}

void DrawLabel(RgbImage& image, int32_t x, int32_t y, const std::string& text) {
    constexpr int32_t kMargin = 2;
    const int32_t boxWidth = LabelWidth(text) + 2 * kMargin;
    for (int32_t row = 0; row < kLabelTextHeight + 2 * kMargin; ++row) {
        for (int32_t col = 0; col < boxWidth; ++col) Fill(image, x + col, y + row, 0);
    }
    int32_t penX = x + kMargin;
    for (size_t i = 0, length = 0; i < text.size(); i += length) {
        const Glyph& g = GlyphAt(text, i, length);
        for (int32_t row = 0; row < kLabelTextHeight; ++row) {
            for (int32_t col = 0; g.rows[row][col] != '\0'; ++col) {
                if (g.rows[row][col] == '#') Fill(image, penX + col, y + kMargin + row, 255);
            }
        }
        penX += Advance(g);
    }
}

}  // namespace vtcli
