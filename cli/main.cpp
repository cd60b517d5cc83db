// veltara: list the orbital catalogue, render pictures, print statistics and export data.
#include <CLI/CLI.hpp>
#include <cstdio>

#include "commands.h"
#include "safe_file.h"
#include "viewer_server.h"

namespace {

constexpr const char* kOrbitalHelp =
    "orbital: catalogue index (see veltara list) or name, case-insensitive, with superscripts or plain "
    "digits (3Dz2, 3Dz², 4Fz(x2-y2)); a shell average is av or avg + its name (av2S, avg4F), "
    "since the averaged S shells share their names with the single S orbitals";

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"veltara: pictures, statistics and data of the hydrogen atom's orbitals"};
    // At most one subcommand; none is refused after parsing, so that an unknown argument is named
    // first.
    app.require_subcommand(0, 1);
    app.set_version_flag("--version", std::string("veltara ") + vt_version());

    vtcli::ListArgs listArgs;
    CLI::App* list = app.add_subcommand("list", "the orbital catalogue");
    list->add_flag("--json", listArgs.json, "JSON instead of a table");

    vtcli::RenderArgs renderArgs;
    CLI::App* render = app.add_subcommand("render", "one picture of an orbital as a PNG file");
    render->add_option("ORBITAL", renderArgs.orbital, kOrbitalHelp);
    render->add_flag("--all", renderArgs.all,
                     "every catalogue orbital into --out-dir, with a contact sheet of small pictures");
    render->add_option("--out", renderArgs.out, "PNG file (default: the orbital's name .png)")
        ->check(vtcli::NamesAFile());
    render->add_option("--out-dir", renderArgs.outDir, "folder of the --all gallery")
        ->capture_default_str()
        ->check(vtcli::NamesAFile());
    vtcli::AddOrbitalOptions(*render, renderArgs.setup);
    vtcli::AddRequestOptions(*render, renderArgs.request);

    vtcli::StatsArgs statsArgs;
    CLI::App* stats = app.add_subcommand("stats", "an orbital's statistics");
    stats->add_option("ORBITAL", statsArgs.orbital, kOrbitalHelp)->required();
    stats->add_flag("--json", statsArgs.json, "JSON instead of text");
    stats->add_option("--plot", statsArgs.plot, "draw the probability-level histogram to a PNG")
        ->check(vtcli::NamesAFile());
    stats->add_flag("--log", statsArgs.logScale, "logarithmic bar heights in the plot");
    vtcli::AddOrbitalOptions(*stats, statsArgs.setup);

    vtcli::ExportArgs exportArgs;
    CLI::App* exportCmd = app.add_subcommand("export", "an orbital's density or dots as files");
    exportCmd->add_option("ORBITAL", exportArgs.orbital, kOrbitalHelp)->required();
    vtcli::AddExportOptions(*exportCmd, exportArgs);
    vtcli::AddOrbitalOptions(*exportCmd, exportArgs.setup);

    vtcli::InfoArgs infoArgs;
    CLI::App* info = app.add_subcommand(
        "info", "an orbital's quantum numbers, nodes, energy, radii and radial distribution");
    info->add_option("ORBITAL", infoArgs.orbital, kOrbitalHelp)->required();
    info->add_option("--rmax", infoArgs.rmax,
                     "last radius of the P(r) table, Bohr (default: the radial view's radius)");
    info->add_option("--points", infoArgs.points, "rows of the P(r) table, 2..10000")
        ->capture_default_str();

    CLI::App* about = app.add_subcommand("about", "the about box");

    vtserve::ServeArgs serveArgs;
    CLI::App* serve = app.add_subcommand(
        "serve",
        "the interactive viewer: a page and a JSON API at http://HOST:PORT/, each client (a "
        "browser, or a script keeping cookies) with its own orbitals; stops on Ctrl-C");
    serve
        ->add_option("--host", serveArgs.host,
                     "address to listen on; keep the loopback default unless the network is "
                     "trusted")
        ->capture_default_str();
    serve->add_option("--port", serveArgs.port, "TCP port; 0 picks a free one")
        ->capture_default_str();
    serve->add_option("--clock", serveArgs.clockMs,
                      "fix the millisecond clock (the random seed) for reproducible dots; "
                      "above 32768");
    serve
        ->add_option("--max-orbitals", serveArgs.maxOrbitals,
                     "live orbitals of one client, 1.." +
                         std::to_string(vtserve::kMaxOrbitalsLimit) + " (each holds a 2 MiB grid)")
        ->capture_default_str();
    serve
        ->add_option("--max-total-orbitals", serveArgs.maxTotalOrbitals,
                     "live orbitals of all clients together, 1.." +
                         std::to_string(vtserve::kMaxTotalOrbitalsLimit))
        ->capture_default_str();
    serve
        ->add_option("--idle-seconds", serveArgs.idleSeconds,
                     "a client unheard of this long loses its orbitals")
        ->capture_default_str();

    // CLI11 reports bad arguments by throwing; help is also delivered this way.
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& e) {  // --help, --version
        return vtcli::FinishStandardOutput(app.exit(e));
    } catch (const CLI::ParseError& e) {
        std::fprintf(stderr, "veltara: %s (see veltara --help)\n", e.what());
        return vtcli::kExitUsage;
    }

    // Every result on standard output must have arrived: checked once, at the end.
    if (list->parsed()) return vtcli::FinishStandardOutput(vtcli::RunList(listArgs));
    if (render->parsed()) return vtcli::FinishStandardOutput(vtcli::RunRender(renderArgs));
    if (stats->parsed()) return vtcli::FinishStandardOutput(vtcli::RunStats(statsArgs));
    if (exportCmd->parsed()) return vtcli::FinishStandardOutput(vtcli::RunExport(exportArgs));
    if (info->parsed()) return vtcli::FinishStandardOutput(vtcli::RunInfo(infoArgs));
    if (about->parsed()) return vtcli::FinishStandardOutput(vtcli::RunAbout());
    if (serve->parsed()) return vtserve::RunServe(serveArgs);
    return vtcli::UsageError("subcommand",
                             "none given; one of list, render, stats, export, info, "
                             "about or serve (see veltara --help)");
}
