// The steps shared by render, stats and export.
#include "session.h"

#include "orbital_names.h"

namespace vtcli {

int OpenSession(Session& session) {
    if (const int32_t rc = session.engine.Create()) return EngineError(rc, "creating the engine");
    if (const int32_t rc = ReadCatalogue(session.engine.get(), session.catalogue)) {
        return EngineError(rc, "reading the orbital catalogue");
    }
    return kExitOk;
}

int ResolveArgument(const Session& session, const std::string& text, int& index) {
    const Resolution r = ResolveOrbital(text, session.catalogue);
    if (r.index < 0) return UsageError("ORBITAL", r.problem);
    index = r.index;
    return kExitOk;
}

int RenderPicture(Session& session, int16_t slot, const vt_RenderRequest& request,
                  const std::string& what, RgbImage& picture) {
    vt_RenderDCinfo dc{};
    if (const int32_t rc = vt_get_render(session.engine.get(), slot, &request, &dc)) {
        return EngineError(rc, "rendering " + what);
    }
    // The handle of the size just drawn; the other one is whatever an earlier picture left.
    const int32_t handle = request.Size == VT_MAIN ? dc.MainHDC : dc.NanoHDC;
    int32_t width = 0, height = 0;
    if (const int32_t rc = vt_surface_info(handle, &width, &height)) {
        return EngineError(rc, "reading the picture of " + what);
    }
    std::vector<uint8_t> bgra(static_cast<size_t>(width) * static_cast<size_t>(height) * 4);
    if (const int32_t rc = vt_surface_read(handle, bgra.data(), bgra.size())) {
        return EngineError(rc, "reading the picture of " + what);
    }
    picture = FromBgra(bgra, width, height);
    return kExitOk;
}

int WriteError(const WriteOutcome& outcome) {
    return FileError("cannot write " + outcome.path + ": " + outcome.problem);
}

int AddPngFile(OutputFiles& files, const std::string& path, const RgbImage& picture) {
    const WriteOutcome added = AddPng(files, path, picture);
    return added.ok ? kExitOk : WriteError(added);
}

int CommitFiles(OutputFiles& files) {
    const WriteOutcome committed = files.Commit();
    return committed.ok ? kExitOk : WriteError(committed);
}

}  // namespace vtcli
