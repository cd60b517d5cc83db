// veltara export: the density as a Gaussian cube file and the dot cloud as a PLY point cloud.
#include <cstdio>

#include "commands.h"
#include "export_files.h"
#include "orbital_names.h"
#include "refusals.h"
#include "session.h"

namespace vtcli {

void AddExportOptions(CLI::App& command, ExportArgs& args) {
    command
        .add_option("--cube", args.cube,
                    "Gaussian cube file of the view's values over the whole cube, - for "
                    "standard output: the normalised density in bohr^-3 (pdf), or the radially "
                    "weighted value, which is neither a density nor normalised (drpdf)")
        ->type_name("FILE")
        ->check(NamesAFile());
    args.pointsOption = command.add_option("--points", args.points,
                                           "cube: points per axis from -radius to radius, 2..1000");
    args.strideOption =
        command
            .add_option("--stride", args.stride,
                        "cube: every stride-th point of the engine's grid, 1..127 (1: 255 points "
                        "per axis, about 218 MB)")
            ->capture_default_str();
    command
        .add_option("--ply", args.ply,
                    "PLY point cloud of the dots (Bohr, colour, level), - for standard output")
        ->type_name("FILE")
        ->check(NamesAFile());
    command.add_option("--ply-format", args.plyFormat, "ascii or binary (little-endian)")
        ->capture_default_str();
    command
        .add_option("--quantity", args.quantity,
                    "cube: density (of the view) or psi (the signed wavefunction of a single "
                    "orbital, in bohr^-3/2, for two-coloured lobes)")
        ->capture_default_str();
}

int RunExport(const ExportArgs& args) {
    if (args.cube.empty() && args.ply.empty()) {
        return UsageError("export", "nothing to write: give --cube FILE, --ply FILE or both");
    }
    const bool byPoints = args.pointsOption != nullptr && args.pointsOption->count() > 0;
    if (byPoints && args.strideOption != nullptr && args.strideOption->count() > 0) {
        return UsageError("--points", "give either --points or --stride, not both");
    }
    if (byPoints && (args.points < 2 || args.points > 1000)) {
        return UsageError("--points", std::to_string(args.points) + " is outside 2..1000");
    }
    if (args.stride < 1 || args.stride > 127) {
        return UsageError("--stride", std::to_string(args.stride) + " is outside 1..127");
    }
    if (args.plyFormat != "ascii" && args.plyFormat != "binary") {
        return UsageError("--ply-format", "'" + args.plyFormat + "' is not one of ascii|binary");
    }
    if (args.quantity != "density" && args.quantity != "psi") {
        return UsageError("--quantity", "'" + args.quantity + "' is neither density nor psi");
    }
    if (!args.cube.empty() && !args.ply.empty() && SameOutput(args.cube, args.ply)) {
        return UsageError("--ply", "'" + args.ply + "' names the same file as --cube; give two");
    }
    if (const int rc = ApplyClock(args.setup)) return rc;
    Session session;
    if (const int rc = OpenSession(session)) return rc;
    int index = 0;
    if (const int rc = ResolveArgument(session, args.orbital, index)) return rc;
    const vt_OrbInfo& info = session.catalogue.entries[static_cast<size_t>(index)];
    vt_OrbitalSetup setup{};
    if (const int rc = MakeSetup(args.setup, info, index, setup)) return rc;
    if (args.quantity == "psi" && !args.cube.empty() && info.OrbType == VT_AVERAGE_ORBS) {
        return UsageError("--quantity", "psi needs a single orbital: " + CommandName(info) +
                                            " is a mixture of orbitals and has no sign");
    }
    const bool pdf = setup.OrbitalViewMode == VT_PDF;
    const std::string what = "Veltara " + CommandName(info) + (pdf ? " pdf" : " drpdf") +
                             ", radius " + std::to_string(setup.AtomRadius) + " Bohr";

    // Both files are produced first and replace what was at their paths together.
    OutputFiles files;
    std::string wroteCube, wrotePly;
    if (!args.cube.empty()) {
        const CubeGrid grid = byPoints
                                  ? PointsGrid(setup.AtomRadius, static_cast<int32_t>(args.points))
                                  : StrideGrid(setup.AtomRadius, static_cast<int32_t>(args.stride));
        const bool psi = args.quantity == "psi";
        const std::string title =
            psi   ? "signed wavefunction psi in bohr^-3/2 of " + what
            : pdf ? "normalised probability density in bohr^-3 of " + what
                  : "radially weighted value of " + what + " (not a density, not normalised)";
        char comment[160];
        std::snprintf(comment, sizeof comment,
                      "%d points per axis, step %.12f Bohr; x outer, y middle, z inner",
                      grid.points, grid.step);
        WriteOutcome written;
        const int32_t rc =
            AddCube(files, args.cube, static_cast<int16_t>(index),
                    psi ? kCubePsi : setup.OrbitalViewMode, title, comment, grid, written);
        if (rc < 0) return WriteError(written);
        if (rc > 0) {
            return EngineError(
                rc, (psi ? "computing psi of " : "computing the density of ") + CommandName(info));
        }
        wroteCube = "wrote " + args.cube + " (" + std::to_string(grid.points) + " points per axis)";
    }

    if (!args.ply.empty()) {
        int16_t slot = 0;
        if (const int rc = AddOrbitalExplained(session, args.setup, index, slot, setup)) return rc;
        int32_t count = 0;
        if (const int32_t rc = vt_get_dots(session.engine.get(), slot, nullptr, 0, &count)) {
            return EngineError(rc, "reading the dots of " + CommandName(info));
        }
        std::vector<vt_PointArray> dots(static_cast<size_t>(count));
        if (const int32_t rc =
                vt_get_dots(session.engine.get(), slot, dots.data(), count, &count)) {
            return EngineError(rc, "reading the dots of " + CommandName(info));
        }
        const std::string comment =
            what + " dot cloud; colour and level from the probability level";
        const WriteOutcome written =
            AddPly(files, args.ply, dots, setup.AtomRadius, comment, args.plyFormat == "binary");
        if (!written.ok) return WriteError(written);
        wrotePly = "wrote " + args.ply + " (" + std::to_string(count) + " dots)";
    }
    if (const int rc = CommitFiles(files)) return rc;

    // Standard output holds a file itself when it is "-".
    const bool toStdout = args.cube == "-" || args.ply == "-";
    for (const std::string& line : {wroteCube, wrotePly}) {
        if (!line.empty()) std::fprintf(toStdout ? stderr : stdout, "%s\n", line.c_str());
    }
    return kExitOk;
}

}  // namespace vtcli
