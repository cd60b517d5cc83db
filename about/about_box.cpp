// The about box presenter slot: one per process, set by the host.
#include "about/about_box.h"

#include <mutex>
#include <utility>

namespace veltara {

namespace {
std::mutex gPresenterMutex;
std::shared_ptr<AboutPresenter> gPresenter;
}  // namespace

std::shared_ptr<AboutPresenter> SetAboutPresenter(std::shared_ptr<AboutPresenter> presenter) {
    std::lock_guard<std::mutex> lock(gPresenterMutex);
    std::swap(gPresenter, presenter);
    return presenter;
}

std::shared_ptr<AboutPresenter> GetAboutPresenter() {
    std::lock_guard<std::mutex> lock(gPresenterMutex);
    return gPresenter;
}

void ShowAboutBox() {
    // Held for the whole call, so a presenter replaced meanwhile lives until it returns.
    const std::shared_ptr<AboutPresenter> presenter = GetAboutPresenter();
    if (!presenter) return;
    const AboutBox box;
    presenter->ShowModal(box);
    presenter->SetTopMost(true);
}

}  // namespace veltara
