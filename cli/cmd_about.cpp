// veltara about: the about box's texts, printed where a window would show them.
#include <cstdio>

#include "commands.h"
#include "session.h"

namespace vtcli {

namespace {

void Print(const vt_AboutBox* box, void*) {
    std::printf("%s\n\n%s\n  %s\n\n%s\n", box->Caption, box->FrameCaption, box->Label,
                box->YearsLabel);
}

}  // namespace

int RunAbout() {
    Engine engine;
    if (const int32_t rc = engine.Create()) return EngineError(rc, "creating the engine");
    // The engine shows its about box through a presenter; this one prints it.
    vt_set_about_presenter(Print, nullptr, nullptr);
    const int32_t rc = vt_about(engine.get());
    vt_set_about_presenter(nullptr, nullptr, nullptr);
    if (rc != 0) return EngineError(rc, "showing the about box");
    return kExitOk;
}

}  // namespace vtcli
