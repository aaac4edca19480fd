#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Classes/Core/Utility/Codable/EnumCodable.h"
#include "Classes/Core/Utility/Codable/JSONTool.h"

namespace zqcore {

/// What went wrong with a request. Threads: a plain record, shared by reference.
class ZQ_EXPORT ASError : public JSONModel<ASError> {
  public:
    ZQ_STRING_ENUM(Code, unknown, invalidParameter, pathNotIncluded, unsupportedPath, responseTimeout,
                   internalError)

    std::optional<Code> code;
    /// A text for people.
    std::optional<std::string> message;
    ZQ_FIELDS(ASError, code, message)
};

/// The default text of a kind of failure.
[[nodiscard]] ZQ_EXPORT std::string_view message(ASError::Code code) noexcept;

}  // namespace zqcore
