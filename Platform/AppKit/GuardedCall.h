#pragma once

#include <exception>
#include <string>
#include <string_view>
#include <utility>

#include "Platform/Base/NSLog.h"

namespace zqcore::platform {

/// The border that no exception of foreign code crosses: an event handler, an override, an action. One line
/// names the place; the process lives. Gives whether the call ended normally.
template <class Call>
bool guardedCall(std::string_view place, Call&& call) noexcept {
    try {
        std::forward<Call>(call)();
        return true;
    } catch (const std::exception& error) {
        NSLog(std::string(place) + " threw: " + error.what());
    } catch (...) {
        NSLog(std::string(place) + " threw what is no exception");
    }
    return false;
}

}  // namespace zqcore::platform
