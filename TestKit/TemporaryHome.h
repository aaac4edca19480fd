#pragma once

#include <list>
#include <string>

#include "TestKit/EnvironmentVariable.h"
#include "TestKit/ScratchFolder.h"

namespace zqcore::testkit {

/// A home of its own for a test: HOME, the XDG directories and TMPDIR lie in a new folder, and the process
/// counts as not sandboxed. Threads: made and ended while no other thread reads the environment. Lifetime: at
/// its end the folder is removed with all in it and the environment is as before. Failure: ends the process,
/// since the test would go on in a real home.
class TemporaryHome final {
  public:
    TemporaryHome();
    TemporaryHome(const TemporaryHome&) = delete;
    TemporaryHome& operator=(const TemporaryHome&) = delete;

    /// The home, without a slash at its end.
    [[nodiscard]] const std::string& path() const noexcept { return home_; }

  private:
    ScratchFolder root_;
    std::string home_ = root_ / "home";
    std::list<EnvironmentVariable> variables_;
};

}  // namespace zqcore::testkit
