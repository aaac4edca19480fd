#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "Platform/Base/Export.h"

namespace zqcore::platform {
struct JSONRecordInfo;
}  // namespace zqcore::platform

namespace zqcore {

/// One request type of the protocol, for listings. Everything in it is derived from the type itself.
/// Threads: read-only. Lifetime: for ever.
struct ASRequestEntry {
    enum class Addressee { application, helper, either };

    std::string_view typeName;
    std::string_view path;
    std::optional<std::string> (*minVersion)();
    Addressee addressee;
    const JSONRecordInfo* request;
    const JSONRecordInfo* response;
};

/// All twelve request types, in the order of the protocol. Any thread.
[[nodiscard]] ZQ_EXPORT std::span<const ASRequestEntry> requestCatalogue();

/// Calls `visit` with the dotted name and the type text of each field of a record, those of inner records
/// after their own ("body", "body.hotkeys", "body.hotkeys[].key").
ZQ_EXPORT void forEachField(const JSONRecordInfo& record,
                            const std::function<void(std::string_view name, std::string_view type)>& visit);

}  // namespace zqcore
