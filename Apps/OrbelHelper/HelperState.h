#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "Apps/Common/CommonHandlers.h"
#include "Classes/AppleScript/RequestCommand/ASClient.h"
#include "Classes/AppleScript/RequestCommand/OrbelHelperRequests.h"

namespace demo {

/// What the resident helper remembers. Threads: handlers only, which run one at a time.
struct HelperState {
    using Hotkey = ServedHotkey;

    // Told at the start: this demonstration can't ask the screen.
    std::shared_ptr<zqcore::ASClient> currentApp;
    std::optional<std::string> selectedText;

    std::map<std::string, std::shared_ptr<Hotkey>> hotkeys;
    zqcore::OrbelHelperOpenRequest::RequestValue::Page page =
        zqcore::OrbelHelperOpenRequest::RequestValue::Page::main;
    bool enabled = false;

    static HelperState& shared() {
        static HelperState& state = *new HelperState;
        return state;
    }
};

}  // namespace demo
