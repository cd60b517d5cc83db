// The subcommands of the veltara command; each returns the process's exit code.
#pragma once

#include <string>

#include "request_options.h"

namespace vtcli {

struct ListArgs {
    bool json = false;
};

struct RenderArgs {
    std::string orbital;
    bool all = false;
    std::string out;
    std::string outDir = "gallery";
    OrbitalOptions setup;
    RequestOptions request;
};

struct StatsArgs {
    std::string orbital;
    bool json = false;
    std::string plot;
    bool logScale = false;
    OrbitalOptions setup;
};

struct ExportArgs {
    std::string orbital;
    std::string cube;
    std::string ply;
    std::string plyFormat = "ascii";
    int64_t stride = 1;
    int64_t points = 0;
    std::string quantity = "density";  ///< of the cube: "density" of the view, or "psi"
    CLI::Option* strideOption = nullptr;
    CLI::Option* pointsOption = nullptr;
    OrbitalOptions setup;
};

/// Refuses an empty file name, which names no file (rather than falling back to a default).
inline CLI::Validator NamesAFile() {
    return CLI::Validator(
        [](std::string& text) { return text.empty() ? std::string("a file name is needed") : ""; },
        "");
}

/// The options of export beyond the orbital's: files, cube grid, PLY format.
void AddExportOptions(CLI::App& command, ExportArgs& args);

struct InfoArgs {
    std::string orbital;
    double rmax = 0;  ///< end of the P(r) table, Bohr; 0: the orbital's radial-view radius
    int64_t points = 41;
};

int RunList(const ListArgs& args);
int RunRender(const RenderArgs& args);
int RunStats(const StatsArgs& args);
int RunExport(const ExportArgs& args);
int RunInfo(const InfoArgs& args);
int RunAbout();

/// The name of an optimisation factor (F8, F16xy, F16yz, F16xz, F32).
const char* OptFactorName(int32_t factor);

}  // namespace vtcli
