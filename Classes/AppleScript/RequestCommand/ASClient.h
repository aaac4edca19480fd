#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "Classes/Core/Utility/Codable/JSONTool.h"

namespace zqcore {

/// The identity of one process. Every field may be absent.
/// Threads: a plain record, shared by reference; whoever shares it doesn't change it.
class ZQ_EXPORT ASClient : public JSONModel<ASClient> {
  public:
    std::optional<std::int32_t> pid;
    /// The application's bundle identifier.
    std::optional<std::string> identifier;
    std::optional<std::string> name;
    std::optional<std::string> version;
    std::optional<std::string> build;
    ZQ_FIELDS(ASClient, pid, identifier, name, version, build)

    /// This process. Every call makes a new record and asks again; nothing is cached.
    [[nodiscard]] static std::shared_ptr<ASClient> current();
};

}  // namespace zqcore
