// veltara stats: an orbital's statistics as text or JSON, and a plot of its histogram.
#include <cstdio>
#include <nlohmann/json.hpp>

#include "commands.h"
#include "histogram_plot.h"
#include "orbital_names.h"
#include "records_json.h"
#include "refusals.h"
#include "session.h"

namespace vtcli {

namespace {

// The statistics record as the viewer's API writes it, with the orbital it belongs to.
nlohmann::json StatsWithOrbitalJson(const vt_OrbInfo& info, int index, const vt_OrbitalSetup& setup,
                                    const vt_OrbitalStats& s) {
    nlohmann::json j = vtjson::StatsJson(s);
    j["orbital"] = {{"index", index},
                    {"name", info.Name},
                    {"key", CommandName(info)},
                    {"view", NameKey(VT_NAMES_VIEW, setup.OrbitalViewMode)},
                    {"AtomRadius", setup.AtomRadius},
                    {"DotThreshold", setup.DotThreshold}};
    return j;
}

void PrintText(const vt_OrbInfo& info, int index, const vt_OrbitalSetup& setup,
               const vt_OrbitalStats& s) {
    std::printf("orbital          %s (index %d), %s view, radius %d, threshold %d\n",
                CommandName(info).c_str(), index,
                NameKey(VT_NAMES_VIEW, setup.OrbitalViewMode).c_str(), setup.AtomRadius,
                setup.DotThreshold);
    std::printf("frames rendered  %d\n", s.FramesRendered);
    std::printf("total samples    %d\n", s.TotalSamples);
    std::printf("mode             %d (the most frequent probability level)\n", s.Mode);
    std::printf("calc time        %d ms (%d samples/ms)\n", s.CalcTime, s.CalcRate);
    std::printf("dot target       %d\n", s.DotTarget);
    std::printf("dot total        %d\n", s.DotTotal);
    std::printf("dot time         %d ms\n", s.DotTime);
    std::printf("samples per probability level (levels with none left out):\n");
    int shown = 0;
    for (int level = 0; level < 256; ++level) {
        if (s.ProbFreqs[level] == 0) continue;
        std::printf("%s%3d: %-9d", shown % 6 == 0 ? "  " : "  ", level, s.ProbFreqs[level]);
        if (++shown % 6 == 0) std::printf("\n");
    }
    if (shown % 6 != 0) std::printf("\n");
}

}  // namespace

int RunStats(const StatsArgs& args) {
    int32_t view = 0;
    if (const int rc = ParseView(args.setup.view, view)) return rc;
    if (const int rc = ApplyClock(args.setup)) return rc;
    Session session;
    if (const int rc = OpenSession(session)) return rc;
    int index = 0;
    if (const int rc = ResolveArgument(session, args.orbital, index)) return rc;
    const vt_OrbInfo& info = session.catalogue.entries[static_cast<size_t>(index)];

    int16_t slot = 0;
    vt_OrbitalSetup setup{};
    if (const int rc = AddOrbitalExplained(session, args.setup, index, slot, setup)) return rc;
    vt_OrbitalStats stats{};
    if (const int32_t rc = vt_get_stats(session.engine.get(), slot, &stats)) {
        return EngineError(rc, "reading the statistics of " + CommandName(info));
    }

    if (args.json) {
        std::printf("%s\n",
                    vtjson::Dump(StatsWithOrbitalJson(info, index, setup, stats), 2).c_str());
    } else {
        PrintText(info, index, setup, stats);
    }
    if (!args.plot.empty()) {
        OutputFiles files;
        if (const int rc =
                AddPngFile(files, args.plot, PlotHistogram(stats.ProbFreqs, args.logScale))) {
            return rc;
        }
        if (const int rc = CommitFiles(files)) return rc;
        // Keep standard output pure JSON when JSON was asked for.
        std::fprintf(args.json ? stderr : stdout, "wrote %s\n", args.plot.c_str());
    }
    return kExitOk;
}

}  // namespace vtcli
