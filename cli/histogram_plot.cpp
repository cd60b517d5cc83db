// The histogram bar chart of veltara stats --plot.
#include "histogram_plot.h"

#include <algorithm>
#include <cmath>

namespace vtcli {

void BarHeights(const int32_t counts[256], bool logScale, int32_t heights[256]) {
    const auto scale = [logScale](int32_t c) {
        const double v = std::max(c, 0);
        return logScale ? std::log10(1.0 + v) : v;
    };
    double top = 0;
    for (int i = 0; i < 256; ++i) top = std::max(top, scale(counts[i]));
    for (int i = 0; i < 256; ++i) {
        const double h = top > 0 ? scale(counts[i]) / top * HistogramLayout::kPlotHeight : 0;
        // Any non-empty level shows at least one pixel.
        heights[i] = static_cast<int32_t>(std::lround(h));
        if (counts[i] > 0 && heights[i] == 0) heights[i] = 1;
    }
}

RgbImage PlotHistogram(const int32_t counts[256], bool logScale) {
    using L = HistogramLayout;
    RgbImage image(L::kWidth, L::kHeight, 255);
    int32_t heights[256];
    BarHeights(counts, logScale, heights);

    const int32_t baseline = L::kTop + L::kPlotHeight;  // the row of the x axis
    for (int32_t level = 0; level < 256; ++level) {
        for (int32_t dx = 0; dx < L::kBarWidth; ++dx) {
            const int32_t x = L::kLeft + level * L::kBarWidth + dx;
            for (int32_t y = baseline - heights[level]; y < baseline; ++y) {
                image.Set(x, y, static_cast<uint8_t>(255 - level), static_cast<uint8_t>(level), 0);
            }
        }
    }
    // Axes, and ticks below the x axis at levels 0, 64, 128, 192 and 255.
    for (int32_t x = L::kLeft - 1; x < L::kLeft + 256 * L::kBarWidth; ++x) {
        image.Set(x, baseline, 0, 0, 0);
    }
    for (int32_t y = L::kTop; y <= baseline; ++y) image.Set(L::kLeft - 1, y, 0, 0, 0);
    for (int32_t level : {0, 64, 128, 192, 255}) {
        for (int32_t y = baseline + 1; y <= baseline + 5; ++y) {
            image.Set(L::kLeft + level * L::kBarWidth, y, 0, 0, 0);
        }
    }
    return image;
}

}  // namespace vtcli
