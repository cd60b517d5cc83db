// Resolution of orbital arguments against the catalogue.
#include "orbital_names.h"

#include <algorithm>
#include <cctype>
#include <charconv>

namespace vtcli {

namespace {

bool IsAverage(const vt_OrbInfo& info) { return info.OrbType == VT_AVERAGE_ORBS; }

bool AllDigits(const std::string& s) {
    return !s.empty() &&
           std::all_of(s.begin(), s.end(), [](unsigned char c) { return std::isdigit(c) != 0; });
}

/// The rest of a normalised name after an "avg" or "av" prefix that is followed by a digit;
/// empty when there is no such prefix.
std::string AverageRest(const std::string& norm) {
    for (const std::string prefix : {"avg", "av"}) {
        if (norm.size() > prefix.size() && norm.compare(0, prefix.size(), prefix) == 0 &&
            std::isdigit(static_cast<unsigned char>(norm[prefix.size()])) != 0) {
            return norm.substr(prefix.size());
        }
    }
    return {};
}

int FindName(const Catalogue& catalogue, const std::string& norm, bool average) {
    for (size_t i = 0; i < catalogue.entries.size(); ++i) {
        const vt_OrbInfo& e = catalogue.entries[i];
        if (IsAverage(e) == average && NormaliseName(e.Name) == norm) return static_cast<int>(i);
    }
    return -1;
}

std::string CloseMatches(const Catalogue& catalogue, const std::string& norm) {
    std::vector<std::pair<size_t, std::string>> ranked;
    for (const vt_OrbInfo& e : catalogue.entries) {
        ranked.emplace_back(EditDistance(norm, NormaliseName(CommandName(e))), CommandName(e));
    }
    std::stable_sort(ranked.begin(), ranked.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    // Everything within two edits, or failing that the three nearest.
    std::string list;
    size_t shown = 0;
    for (const auto& [distance, name] : ranked) {
        if (shown >= 5 || (distance > 2 && shown >= 3)) break;
        list += (shown == 0 ? "" : ", ") + name;
        ++shown;
    }
    return list;
}

}  // namespace

std::string FileName(const vt_OrbInfo& info) {
    const std::string display = CommandName(info);
    std::string out;
    for (size_t i = 0; i < display.size(); ++i) {
        const unsigned char c = static_cast<unsigned char>(display[i]);
        if (c == 0xC2 && i + 1 < display.size()) {
            // The superscripts two and three.
            const unsigned char d = static_cast<unsigned char>(display[i + 1]);
            if (d == 0xB2) out += '2';
            if (d == 0xB3) out += '3';
            ++i;
        } else if (std::isalnum(c) != 0 || c == '-') {
            out += static_cast<char>(c);
        }
    }
    return out;
}

std::string NormaliseName(const std::string& text) {
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        const unsigned char c = static_cast<unsigned char>(text[i]);
        if (c == 0xC2 && i + 1 < text.size()) {
            const unsigned char d = static_cast<unsigned char>(text[i + 1]);
            if (d == 0xB2 || d == 0xB3) {
                out += d == 0xB2 ? '2' : '3';
                ++i;
                continue;
            }
        }
        if (std::isspace(c) != 0) continue;
        out += c == '_' ? '-' : static_cast<char>(std::tolower(c));
    }
    return out;
}

size_t EditDistance(const std::string& a, const std::string& b) {
    std::vector<size_t> row(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j) row[j] = j;
    for (size_t i = 1; i <= a.size(); ++i) {
        size_t diagonal = row[0];
        row[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            const size_t above = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] != b[j - 1])});
            diagonal = above;
        }
    }
    return row[b.size()];
}

Resolution ResolveOrbital(const std::string& text, const Catalogue& catalogue) {
    Resolution r;
    const int count = static_cast<int>(catalogue.entries.size());
    if (AllDigits(text)) {
        int value = -1;
        const auto [ptr, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
        if (ec == std::errc() && value < count) {
            r.index = value;
        } else {
            r.problem = "index " + text + " is outside 0.." + std::to_string(count - 1);
        }
        return r;
    }
    const std::string norm = NormaliseName(text);
    if (const std::string rest = AverageRest(norm); !rest.empty()) {
        r.index = FindName(catalogue, rest, true);
    } else {
        r.index = FindName(catalogue, norm, false);
        if (r.index < 0) r.index = FindName(catalogue, norm, true);
    }
    if (r.index < 0) {
        r.problem = "unknown orbital '" + text +
                    "'; close matches: " + CloseMatches(catalogue, norm) + " (see 'veltara list')";
    }
    return r;
}

}  // namespace vtcli
