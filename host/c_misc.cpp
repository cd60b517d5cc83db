// The C interface of error texts, the per-thread clock and the about box.
#include <memory>

#include "about/about_box.h"
#include "host/c_guard.h"
#include "support/clock.h"
#include "support/error.h"
#include "support/simd_dispatch.h"

using veltara::host::Guard;
using veltara::host::kNullArgument;

namespace {

/// A presenter made of the host's two C callbacks.
class CallbackPresenter final : public veltara::AboutPresenter {
  public:
    CallbackPresenter(void (*show)(const vt_AboutBox*, void*), void (*topMost)(vt_bool, void*),
                      void* ctx)
        : mShow(show), mTopMost(topMost), mCtx(ctx) {}

    void ShowModal(const veltara::AboutBox& box) override {
        const vt_AboutBox texts{box.Caption.c_str(), box.FrameCaption.c_str(), box.Label.c_str(),
                                box.YearsLabel.c_str()};
        mShow(&texts, mCtx);
    }
    void SetTopMost(bool OnTop) override {
        if (mTopMost != nullptr) mTopMost(OnTop ? VT_TRUE : VT_FALSE, mCtx);
    }

  private:
    void (*mShow)(const vt_AboutBox*, void*);
    void (*mTopMost)(vt_bool, void*);
    void* mCtx;
};

}  // namespace

extern "C" {

const char* vt_error_text(int32_t number) { return veltara::ErrorText(number); }

const char* vt_version(void) { return VT_VERSION_STRING; }

const char* vt_simd(int32_t* refused) {
    const veltara::SimdChoice choice = veltara::ActiveSimd();
    if (refused != nullptr) *refused = choice.refused ? 1 : 0;
    return veltara::SimdPathName(choice.path);
}

void vt_set_clock(int32_t (*clock)(void* ctx), void* ctx) {
    // Two pointers fit the function object's own storage, so installing cannot allocate.
    if (clock == nullptr) {
        veltara::SetClock({});
    } else {
        veltara::SetClock([clock, ctx] { return clock(ctx); });
    }
}

int32_t vt_about_texts(vt_AboutBox* out) {
    if (out == nullptr) return kNullArgument;
    return Guard([&] {
        static const veltara::AboutBox* box = new veltara::AboutBox;
        *out = vt_AboutBox{box->Caption.c_str(), box->FrameCaption.c_str(), box->Label.c_str(),
                           box->YearsLabel.c_str()};
    });
}

int32_t vt_set_about_presenter(void (*show)(const vt_AboutBox* box, void* ctx),
                               void (*set_top_most)(vt_bool on_top, void* ctx), void* ctx) {
    return Guard([&] {
        if (show == nullptr) {
            veltara::SetAboutPresenter(nullptr);
        } else {
            veltara::SetAboutPresenter(
                std::make_shared<CallbackPresenter>(show, set_top_most, ctx));
        }
    });
}

}  // extern "C"
