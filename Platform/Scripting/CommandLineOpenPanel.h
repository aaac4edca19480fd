#pragma once

#include "Platform/Scripting/NSOpenPanel.h"

namespace zqcore::platform {

/// Shows open panels as a question on the command line: the message and the folder, then "y" confirms, "n" or
/// the end of the input cancels, and a path (beginning with a slash, a point or "~/") chooses that one.
/// Lifetime: the descriptors stay the caller's. Failure: an input that can't be read cancels.
class ZQ_EXPORT CommandLineOpenPanel final : public OpenPanelPresenter {
  public:
    /// `assumeYes` confirms the folder without asking.
    explicit CommandLineOpenPanel(bool assumeYes, int input = 0, int output = 2) noexcept
        : assumeYes_(assumeYes), input_(input), output_(output) {}

    void present(const NSOpenPanel& panel, Answer answer) override;

  private:
    bool assumeYes_;
    int input_;
    int output_;
};

}  // namespace zqcore::platform
