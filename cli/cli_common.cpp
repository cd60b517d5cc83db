// Messages, the catalogue and the fixed clock of the veltara command.
#include "cli_common.h"

#include <cctype>
#include <cstdio>

namespace vtcli {

int UsageError(const std::string& argument, const std::string& problem) {
    std::fprintf(stderr, "veltara: %s: %s\n", argument.c_str(), problem.c_str());
    return kExitUsage;
}

int EngineError(int32_t number, const std::string& context) {
    std::string text = vt_error_text(number);
    if (!text.empty())
        text[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(text[0])));
    std::fprintf(stderr, "veltara: %s while %s (engine error %d)\n", text.c_str(), context.c_str(),
                 static_cast<int>(number));
    return kExitEngine;
}

int FileError(const std::string& problem) {
    std::fprintf(stderr, "veltara: %s\n", problem.c_str());
    return kExitEngine;
}

int32_t ReadCatalogue(vt_engine* engine, Catalogue& out) {
    int32_t count = 0;
    if (const int32_t rc = vt_enum_orbitals_into(engine, nullptr, 0, &count)) return rc;
    out.entries.assign(static_cast<size_t>(count), vt_OrbInfo{});
    return vt_enum_orbitals_into(engine, out.entries.data(), count, &count);
}

std::string NameKey(int32_t table, int32_t value) {
    int32_t rows = 0;
    vt_name_count(table, &rows);
    for (int32_t i = 0; i < rows; ++i) {
        vt_Name name{};
        if (vt_name(table, i, &name) == VT_OK && name.Value == value) return name.Key;
    }
    return "";
}

namespace {
int32_t gFixedMs = 0;
int32_t ReadFixed(void*) { return gFixedMs; }
}  // namespace

void FixClock(int32_t ms) {
    gFixedMs = ms;
    vt_set_clock(ReadFixed, nullptr);
}

}  // namespace vtcli
