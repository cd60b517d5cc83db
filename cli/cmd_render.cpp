// veltara render: one picture of an orbital, or a gallery of the whole catalogue with a contact
// sheet.
#include <cstdio>
#include <filesystem>
#include <system_error>

#include "commands.h"
#include "label_font.h"
#include "orbital_names.h"
#include "refusals.h"
#include "session.h"

namespace vtcli {

namespace {

/// Adds an orbital, renders the request and deletes the orbital again. With `thumbnail`, also
/// renders the same request at the small size.
int RenderOne(Session& session, const RenderArgs& args, int index, const vt_RenderRequest& request,
              RgbImage& picture, RgbImage* thumbnail) {
    const std::string name = CommandName(session.catalogue.entries[static_cast<size_t>(index)]);
    int16_t slot = 0;
    vt_OrbitalSetup setup{};
    if (const int rc = AddOrbitalExplained(session, args.setup, index, slot, setup)) return rc;
    int rc = RenderPicture(session, slot, request, name, picture);
    if (rc == kExitOk && thumbnail != nullptr) {
        vt_RenderRequest small = request;
        small.Size = VT_NANO;
        rc = RenderPicture(session, slot, small, name + " (thumbnail)", *thumbnail);
    }
    vt_delete(session.engine.get(), slot);
    return rc;
}

int RenderGallery(Session& session, const RenderArgs& args, const vt_RenderRequest& request) {
    std::error_code ec;
    std::filesystem::create_directories(args.outDir, ec);
    if (ec) return FileError("cannot create " + args.outDir + ": " + ec.message());

    // The contact sheet: the small pictures in rows of 8, in catalogue order, each
    // labelled with its orbital's name in its bottom left corner.
    constexpr int32_t kColumns = 8, kCell = 128;
    const int32_t count = static_cast<int32_t>(session.catalogue.entries.size());
    const int32_t rows = (count + kColumns - 1) / kColumns;
    RgbImage sheet(kColumns * kCell, rows * kCell);

    // Every picture is produced before any file of an earlier gallery is replaced.
    OutputFiles files;
    for (int32_t i = 0; i < count; ++i) {
        RgbImage picture, thumbnail;
        if (const int rc = RenderOne(session, args, i, request, picture, &thumbnail)) return rc;
        char prefix[16];
        std::snprintf(prefix, sizeof prefix, "%02d-", i);
        const std::string file =
            (std::filesystem::path(args.outDir) /
             (prefix + FileName(session.catalogue.entries[static_cast<size_t>(i)]) + ".png"))
                .string();
        if (const int rc = AddPngFile(files, file, picture)) return rc;
        const int32_t cellX = (i % kColumns) * kCell, cellY = (i / kColumns) * kCell;
        Blit(sheet, thumbnail, cellX, cellY);
        DrawLabel(sheet, cellX + 1, cellY + kCell - kLabelTextHeight - 6,
                  CommandName(session.catalogue.entries[static_cast<size_t>(i)]));
    }
    const std::string sheetFile =
        (std::filesystem::path(args.outDir) / "contact-sheet.png").string();
    if (const int rc = AddPngFile(files, sheetFile, sheet)) return rc;
    if (const int rc = CommitFiles(files)) return rc;
    std::printf("wrote %d pictures and %s\n", count, sheetFile.c_str());
    return kExitOk;
}

}  // namespace

int RunRender(const RenderArgs& args) {
    vt_RenderRequest request{};
    if (const int rc = MakeRequest(args.request, request)) return rc;
    int32_t view = 0;
    if (const int rc = ParseView(args.setup.view, view)) return rc;
    if (args.all && !args.orbital.empty()) {
        return UsageError("ORBITAL", "give either an orbital or --all, not both");
    }
    if (!args.all && args.orbital.empty()) {
        return UsageError("ORBITAL", "missing: give an orbital (index or name) or --all");
    }
    if (const int rc = ApplyClock(args.setup)) return rc;

    Session session;
    if (const int rc = OpenSession(session)) return rc;
    if (args.all) return RenderGallery(session, args, request);

    int index = 0;
    if (const int rc = ResolveArgument(session, args.orbital, index)) return rc;
    RgbImage picture;
    if (const int rc = RenderOne(session, args, index, request, picture, nullptr)) return rc;
    const std::string file =
        args.out.empty() ? FileName(session.catalogue.entries[static_cast<size_t>(index)]) + ".png"
                         : args.out;
    OutputFiles files;
    if (const int rc = AddPngFile(files, file, picture)) return rc;
    if (const int rc = CommitFiles(files)) return rc;
    std::printf("wrote %s (%dx%d)\n", file.c_str(), picture.width, picture.height);
    return kExitOk;
}

}  // namespace vtcli
