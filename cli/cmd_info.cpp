// veltara info: an orbital's quantum numbers, nodes, energy, radii and radial distribution.
#include <cmath>
#include <cstdio>
#include <vector>

#include "commands.h"
#include "orbital_names.h"
#include "session.h"

namespace vtcli {

namespace {

constexpr double kElectronVoltsPerHartree = 27.211386245988;

}  // namespace

int RunInfo(const InfoArgs& args) {
    if (args.points < 2 || args.points > 10000) {
        return UsageError("--points", std::to_string(args.points) + " is outside 2..10000");
    }
    if (!(args.rmax >= 0 && args.rmax <= 1e6)) {
        return UsageError("--rmax", "give a radius from 0 to 1000000 Bohr (0: the default)");
    }
    Session session;
    if (const int rc = OpenSession(session)) return rc;
    int index = 0;
    if (const int rc = ResolveArgument(session, args.orbital, index)) return rc;
    const vt_OrbInfo& info = session.catalogue.entries[static_cast<size_t>(index)];
    const auto orbital = static_cast<int16_t>(index);
    vt_OrbitalFacts f{};
    if (const int32_t rc = vt_orbital_facts(orbital, &f)) {
        return EngineError(rc, "reading the facts of " + CommandName(info));
    }

    // The radial distribution from the nucleus to rmax in equal steps.
    const double rmax = args.rmax > 0 ? args.rmax : info.DefaultDRPDFAtomRadius;
    const auto rows = static_cast<size_t>(args.points);
    std::vector<double> r(rows), p(rows);
    for (size_t i = 0; i < rows; ++i)
        r[i] = rmax * static_cast<double>(i) / static_cast<double>(rows - 1);
    if (const int32_t rc = vt_radial_distribution(orbital, r.data(), rows, p.data())) {
        return EngineError(rc, "computing the radial distribution of " + CommandName(info));
    }

    std::printf("%s (index %d, %s)\n", CommandName(info).c_str(), index,
                info.OrbType == VT_AVERAGE_ORBS ? "average of its shell" : "single orbital");
    std::printf("quantum numbers: n %d, l %d, m %d\n", f.n, f.l, f.m);
    std::printf("nodes: %d radial, %d angular\n", f.radialNodes, f.angularNodes);
    std::printf("energy: %.10g hartree (%.6f eV)\n", f.energyHartree,
                f.energyHartree * kElectronVoltsPerHartree);
    std::printf("mean radius <r>: %.10g Bohr\n", f.meanRadius);
    std::printf("most probable radius: %.10g Bohr\n", f.mostProbableRadius);
    std::printf("radial distribution P(r) = r^2 R(r)^2, per Bohr:\n%12s  %14s\n", "r (Bohr)",
                "P(r)");
    for (size_t i = 0; i < rows; ++i) std::printf("%12.6f  %14.6e\n", r[i], p[i]);
    return kExitOk;
}

}  // namespace vtcli
