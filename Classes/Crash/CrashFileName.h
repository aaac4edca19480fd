#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Platform/Base/Date.h"
#include "Platform/Base/Export.h"

namespace zqcore::crashfile {

/// "crash-report-", the date in the process's zone and ".crash"; without a date a random part that can't meet
/// another. Any thread.
[[nodiscard]] std::string name(std::optional<Date> date);

/// Whether `fileName` is such a name; `date` is set to what it tells, if it tells one.
[[nodiscard]] bool parse(std::string_view fileName, std::optional<Date>& date);

}  // namespace zqcore::crashfile
