// Writes the page's copy of the engine's name tables as an ES module (names.js), so that the
// page reads the one table of mode, view and size names and the catalogue's size rather than
// copies typed by hand. Run at build time: names_js OUT.js
#include <cstdio>

#include "electron/catalogue.h"
#include "records/names.h"

namespace {

void String(std::FILE* out, const char* text) {
    std::fputc('\'', out);
    for (const char* p = text; *p != 0; ++p) {
        if (*p == '\'' || *p == '\\') std::fputc('\\', out);
        std::fputc(*p, out);
    }
    std::fputc('\'', out);
}

void Table(std::FILE* out, const char* kind, veltara::NameTable table) {
    std::fprintf(out, "  %s: [\n", kind);
    for (const veltara::EnumName& n : veltara::Names(table)) {
        std::fprintf(out, "    { value: %d, key: ", static_cast<int>(n.value));
        String(out, n.key);
        std::fputs(", title: ", out);
        String(out, n.title);
        std::fputs(", label: ", out);
        String(out, n.label);
        std::fputs(" },\n", out);
    }
    std::fputs("  ],\n", out);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: names_js OUT.js\n", stderr);
        return 2;
    }
    std::FILE* out = std::fopen(argv[1], "w");
    if (out == nullptr) {
        std::perror(argv[1]);
        return 1;
    }
    std::fputs(
        "// Generated at build time from the engine's tables; edit records/names.h instead.\n",
        out);
    std::fputs("export const NAMES = {\n", out);
    Table(out, "mode", veltara::NameTable::Mode);
    Table(out, "view", veltara::NameTable::View);
    Table(out, "size", veltara::NameTable::Size);
    std::fputs("};\n", out);
    std::fprintf(out, "export const CATALOGUE_SIZE = %d;\n",
                 static_cast<int>(veltara::kCatalogueSize));
    std::fprintf(out, "export const HIGHEST_N = %d;\n",
                 static_cast<int>(veltara::kCatalogueHighestN));
    return std::fclose(out) == 0 ? 0 : 1;
}
