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

/// The facts of a state beyond the catalogue, and its P(r) out to rmax (0: a radius holding
/// 99.9 % of the probability).
int PrintStateInfo(const Subject& subject, const InfoArgs& args) {
    const vt_superposition* s = subject.state.get();
    vt_state_facts f{};
    if (const int32_t rc = vt_state_facts_of(s, &f)) {
        return EngineError(rc, "reading the facts of " + subject.text);
    }
    std::vector<double> nodes(static_cast<size_t>(f.node_count));
    std::vector<vt_beat> beats(static_cast<size_t>(f.beat_count));
    int32_t count = 0;
    if (const int32_t rc = vt_state_node_radii(s, nodes.data(), f.node_count, &count)) {
        return EngineError(rc, "reading the node radii of " + subject.text);
    }
    if (const int32_t rc = vt_state_beats(s, beats.data(), f.beat_count, &count)) {
        return EngineError(rc, "reading the beats of " + subject.text);
    }
    double rmax = args.rmax;
    if (rmax <= 0) {
        if (const int32_t rc = vt_radius_holding(s, 0.999, &rmax)) {
            return EngineError(rc, "finding the extent of " + subject.text);
        }
    }
    const auto rows = static_cast<size_t>(args.points);
    std::vector<double> r(rows), p(rows);
    for (size_t i = 0; i < rows; ++i)
        r[i] = rmax * static_cast<double>(i) / static_cast<double>(rows - 1);
    if (const int32_t rc = vt_state_radial_distribution(s, 0.0, r.data(), rows, p.data())) {
        return EngineError(rc, "computing the radial distribution of " + subject.text);
    }
    std::vector<char> text(1024);
    size_t length = 0;
    vt_format_state(s, text.data(), text.size(), &length);
    std::printf("state %s (Z %d)\n", text.data(), f.Z);
    std::printf("quantum numbers%s: n %d, l %d, m %d\n",
                f.beat_count > 0 ? " of the first term" : "", f.n, f.l, f.m);
    std::printf("nodes: %d radial, %d angular\n", f.radial_nodes, f.angular_nodes);
    if (!nodes.empty()) {
        std::printf("radial nodes at (Bohr):");
        for (const double node : nodes) std::printf(" %.8g", node);
        std::printf("\n");
    }
    std::printf("energy%s: %.10g hartree (%.6f eV)\n", f.beat_count > 0 ? " <E>" : "",
                f.energy_hartree, f.energy_ev);
    for (const vt_beat& b : beats) {
        std::printf("beat: %.10g hartree, period %.6g fs, light %.6g nm\n", b.delta_hartree,
                    b.period_fs, b.wavelength_nm);
    }
    std::printf("mean radius <r>: %.10g Bohr\n", f.mean_radius);
    std::printf("most probable radius: %.10g Bohr\n", f.most_probable_radius);
    std::printf("radial distribution P(r) at t = 0, per Bohr:\n%12s  %14s\n", "r (Bohr)", "P(r)");
    for (size_t i = 0; i < rows; ++i) std::printf("%12.6f  %14.6e\n", r[i], p[i]);
    return kExitOk;
}

int RunInfo(const InfoArgs& args) {
    if (args.points < 2 || args.points > 10000) {
        return UsageError("--points", std::to_string(args.points) + " is outside 2..10000");
    }
    if (!(args.rmax >= 0 && args.rmax <= 1e6)) {
        return UsageError("--rmax", "give a radius from 0 to 1000000 Bohr (0: the default)");
    }
    Session session;
    if (const int rc = OpenSession(session)) return rc;
    Subject subject;
    if (const int rc = ResolveSubject(session, args.orbital, subject)) return rc;
    if (subject.index < 0) return PrintStateInfo(subject, args);
    const int index = subject.index;
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
