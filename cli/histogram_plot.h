// A bar chart of the probability-level histogram, drawn into a picture.
#pragma once

#include <cstdint>

#include "png_writer.h"

namespace vtcli {

using vtjson::RgbImage;

/// Geometry of the chart: one bar of kBarWidth pixels per level 0..255 over a white background,
/// with axes and ticks every 64 levels; bars coloured like the engine's level colours (red
/// 255 - level, green level).
struct HistogramLayout {
    static constexpr int32_t kBarWidth = 2;
    static constexpr int32_t kPlotHeight = 256;
    static constexpr int32_t kLeft = 24, kRight = 16, kTop = 16, kBottom = 24;
    static constexpr int32_t kWidth = kLeft + 256 * kBarWidth + kRight;
    static constexpr int32_t kHeight = kTop + kPlotHeight + kBottom;
};

/// Bar heights in pixels (0..kPlotHeight) for the 256 counts: linear in the count, or with
/// `logScale` in log10(1 + count); the largest count fills the plot.
void BarHeights(const int32_t counts[256], bool logScale, int32_t heights[256]);

/// The chart of the 256 counts.
RgbImage PlotHistogram(const int32_t counts[256], bool logScale);

}  // namespace vtcli
