// Text on pictures: a tiny built-in bitmap font for the labels of the contact sheet.
#pragma once

#include <cstdint>
#include <string>

#include "png_writer.h"

namespace vtcli {

using vtjson::RgbImage;

/// Height in pixels of a line of label text (glyphs are 5 x 7, superscripts 3 x 5, raised).
inline constexpr int32_t kLabelTextHeight = 7;

/// Width in pixels of `text` (UTF-8) as DrawLabel writes it, without the box around it.
int32_t LabelWidth(const std::string& text);

/// Writes `text` (UTF-8: digits, the letters of orbital names, parentheses, minus and the
/// superscripts ² and ³; other characters as a blank) in white on a black box whose top left
/// corner is (x, y), with a 2-pixel margin; clipped at the picture's edges.
void DrawLabel(RgbImage& image, int32_t x, int32_t y, const std::string& text);

}  // namespace vtcli
