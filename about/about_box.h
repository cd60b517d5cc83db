// The Corvane about box: the record a host shows, and the presenter through which it shows it.
//
// The engine has no windows of its own. A host that can show a dialog installs a presenter;
// cVeltara::About hands it the about box record to show modally and, once the dialog has been
// closed, asks it to make the window top-most.
#pragma once

#include <memory>
#include <string>

namespace veltara {

/// What the about box shows (UTF-8 texts).
struct AboutBox {
    std::string Caption = "About: Corvane";
    std::string FrameCaption = "Warning:";
    std::string Label = "Corvane Pro 2002 - Veltara core component. Have a nice day.";
    std::string YearsLabel = "2002";
};

/// Implemented by the host.
class AboutPresenter {
  public:
    virtual ~AboutPresenter() = default;
    /// Shows the box as a modal dialog; returns when the user has closed it.
    virtual void ShowModal(const AboutBox& box) = 0;
    /// Places the about window above all windows that are not top-most (OnTop true) or back
    /// among them (false), without moving or sizing it.
    virtual void SetTopMost(bool OnTop) = 0;
};

/// Installs the presenter of this process (nullptr removes it) and returns the one it replaces.
std::shared_ptr<AboutPresenter> SetAboutPresenter(std::shared_ptr<AboutPresenter> presenter);

/// The installed presenter, or nullptr.
std::shared_ptr<AboutPresenter> GetAboutPresenter();

/// Shows the about box: ShowModal first, SetTopMost(true) after it returns. That order is
/// intended (the window becomes top-most only after the modal dialog has closed) and hosts'
/// presenters rely on it. Without a presenter it does nothing: a host without a screen has
/// nowhere to show the box, and the call is not an error.
void ShowAboutBox();

}  // namespace veltara
