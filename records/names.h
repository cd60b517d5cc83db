// The names of render modes, views and picture sizes: the one table the command, the server,
// Python and the page read (the page through a copy generated from it at build time).
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "records/PublicTypes.h"

namespace veltara {

/// One named value of an enumeration.
struct EnumName {
    int32_t value;      ///< the enumeration's value (a size: its pixel count)
    const char* key;    ///< lower case, as the command and Python take it: "orthographic"
    const char* title;  ///< as records and JSON spell it: "Orthographic"
    const char* label;  ///< what people read on the page: "Dots"
};

/// Which table.
enum class NameTable : int32_t {
    Mode = 0,  ///< RenderMode
    View = 1,  ///< ViewMode
    Size = 2,  ///< RenderSize
};
inline constexpr int32_t kNameTableCount = 3;

inline constexpr EnumName kModeNames[] = {
    {static_cast<int32_t>(RenderMode::Orthographic), "orthographic", "Orthographic", "Dots"},
    {static_cast<int32_t>(RenderMode::Perspective), "perspective", "Perspective",
     "Dots in perspective"},
    {static_cast<int32_t>(RenderMode::Anaglyph), "anaglyph", "Anaglyph", "Red/green 3-D"},
    {static_cast<int32_t>(RenderMode::Volumetric), "volumetric", "Volumetric", "Cloud"},
    {static_cast<int32_t>(RenderMode::Transect), "transect", "Transect", "Slice"},
};

inline constexpr EnumName kViewNames[] = {
    {static_cast<int32_t>(ViewMode::PDF), "pdf", "PDF", "Probability density \u03C8\u00B2"},
    {static_cast<int32_t>(ViewMode::DRPDF), "drpdf", "DRPDF", "Radial weighting"},
};

inline constexpr EnumName kSizeNames[] = {
    {static_cast<int32_t>(RenderSize::Main), "main", "Main", "Main picture"},
    {static_cast<int32_t>(RenderSize::Nano), "nano", "Nano", "Small picture"},
};

/// The rows of a table; empty for a value outside NameTable.
constexpr std::span<const EnumName> Names(NameTable table) {
    switch (table) {
        case NameTable::Mode:
            return kModeNames;
        case NameTable::View:
            return kViewNames;
        case NameTable::Size:
            return kSizeNames;
    }
    return {};
}

/// The row whose key or title equals `text` ignoring ASCII case; null when none does.
constexpr const EnumName* FindName(NameTable table, std::string_view text) {
    const auto same = [](std::string_view a, std::string_view b) {
        if (a.size() != b.size()) return false;
        for (size_t i = 0; i < a.size(); ++i) {
            const auto lower = [](char c) {
                return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c;
            };
            if (lower(a[i]) != lower(b[i])) return false;
        }
        return true;
    };
    for (const EnumName& n : Names(table)) {
        if (same(n.key, text) || same(n.title, text)) return &n;
    }
    return nullptr;
}

}  // namespace veltara
