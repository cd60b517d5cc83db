// veltara export: the density as a Gaussian cube file and the dot cloud as a PLY point cloud.
#include <cstdio>

#include "commands.h"
#include "export_files.h"
#include "orbital_names.h"
#include "session.h"

namespace vtcli {

int RunExport(const ExportArgs& args) {
    if (args.cube.empty() && args.ply.empty()) {
        return UsageError("export", "nothing to write: give --cube FILE, --ply FILE or both");
    }
    if (args.stride < 1 || args.stride > 127) {
        return UsageError("--stride", std::to_string(args.stride) + " is outside 1..127");
    }
    if (args.quantity != "density" && args.quantity != "psi") {
        return UsageError("--quantity", "'" + args.quantity + "' is neither density nor psi");
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
    const std::string view = setup.OrbitalViewMode == VT_PDF ? "pdf" : "drpdf";

    if (!args.cube.empty()) {
        const CubeGrid grid{setup.AtomRadius, static_cast<int32_t>(args.stride)};
        const bool psi = args.quantity == "psi";
        const std::string title =
            "Veltara " + CommandName(info) +
            (psi ? " psi: signed wavefunction, Bohr^(-3/2)"
                 : " " + view +
                       (setup.OrbitalViewMode == VT_PDF
                            ? ": normalised probability density, per cubic Bohr"
                            : ": normalised radially weighted density"));
        const int32_t rc = WriteCube(args.cube, static_cast<int16_t>(index),
                                     psi ? kCubePsi : setup.OrbitalViewMode, title, grid);
        if (rc < 0) return FileError("cannot write " + args.cube);
        if (rc > 0) {
            return EngineError(
                rc, std::string(psi ? "computing psi of " : "computing the density of ") +
                        CommandName(info));
        }
        std::printf("wrote %s (%d points per axis)\n", args.cube.c_str(), grid.Points());
    }

    if (!args.ply.empty()) {
        int16_t slot = 0;
        if (const int rc = AddOrbital(session, args.setup, index, slot, setup)) return rc;
        int32_t count = 0;
        if (const int32_t rc = vt_get_dots(session.engine.get(), slot, nullptr, 0, &count)) {
            return EngineError(rc, "reading the dots of " + CommandName(info));
        }
        std::vector<vt_PointArray> dots(static_cast<size_t>(count));
        if (const int32_t rc =
                vt_get_dots(session.engine.get(), slot, dots.data(), count, &count)) {
            return EngineError(rc, "reading the dots of " + CommandName(info));
        }
        const std::string comment = "Veltara " + CommandName(info) + " dot cloud, " + view +
                                    " view, radius " + std::to_string(setup.AtomRadius) +
                                    " Bohr; colour from the probability level";
        if (!WritePly(args.ply, dots, setup.AtomRadius, comment)) {
            return FileError("cannot write " + args.ply);
        }
        std::printf("wrote %s (%d dots)\n", args.ply.c_str(), count);
    }
    return kExitOk;
}

}  // namespace vtcli
