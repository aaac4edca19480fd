#pragma once

#include <functional>
#include <memory>

#include "Platform/AppKit/Display.h"
#include "Platform/Base/Export.h"

namespace zqcore::platform {

/// The desktop's own appearance, from its settings portal, followed as long as this lives. For displays whose
/// windows belong to a desktop.
/// Threads: main thread; the handler comes from the run loop. Lifetime: the owner keeps it; its end ends the
/// following. Failure: light without a session bus or a portal, the last known appearance once they are lost;
/// a portal that comes or starts anew is asked again. Nothing waits for an answer.
class ZQ_EXPORT PortalAppearance final {
  public:
    using Handler = std::function<void(DisplayAppearance)>;

    /// Begins to follow. `changed` is called when the appearance differs from the one before, light at first.
    explicit PortalAppearance(Handler changed);
    ~PortalAppearance();
    PortalAppearance(const PortalAppearance&) = delete;
    PortalAppearance& operator=(const PortalAppearance&) = delete;

    /// The last that is known. Opens the bus again if it was lost.
    [[nodiscard]] DisplayAppearance appearance();

  private:
    class Connection;
    void open();
    void close();
    void learned(DisplayAppearance appearance);

    Handler changed_;
    DisplayAppearance appearance_ = DisplayAppearance::light;
    std::unique_ptr<Connection> connection_;
    bool lost_ = false;
};

}  // namespace zqcore::platform
