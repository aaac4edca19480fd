#include "Classes/AppleScript/RequestCommand/ASRequestCatalogue.h"

#include "Classes/AppleScript/RequestCommand/CommonRequests.h"
#include "Classes/AppleScript/RequestCommand/OrbelHelperRequests.h"
#include "Classes/AppleScript/RequestCommand/OrbelOCRRequest.h"
#include "Classes/AppleScript/RequestCommand/OrbelTranslateRequest.h"

namespace zqcore {

namespace {

using Addressee = ASRequestEntry::Addressee;

/// The name says to whom a request goes.
Addressee addresseeOf(std::string_view name) {
    if (name.starts_with("OrbelHelper")) return Addressee::helper;
    return name.starts_with("Orbel") ? Addressee::application : Addressee::either;
}

template <ASRequest R>
ASRequestEntry entry() {
    std::string_view name = fullTypeName<R>();
    name.remove_prefix(name.rfind(':') + 1);
    return {name,
            R::path(),
            &R::minVersion,
            addresseeOf(name),
            &recordInfo<typename R::RequestValue>(),
            &recordInfo<typename R::ResponseValue>()};
}

void visitFields(const JSONRecordInfo& record, const std::string& prefix,
                 const std::function<void(std::string_view, std::string_view)>& visit) {
    for (const JSONFieldInfo& field : record.fields) {
        const std::string name = prefix + std::string(field.name);
        const std::string type = field.typeText();
        visit(name, type);
        if (const auto* nested = field.nested()) {
            visitFields(*nested, name + (type.starts_with("array") ? "[]." : "."), visit);
        }
    }
}

}  // namespace

std::span<const ASRequestEntry> requestCatalogue() {
    static const ASRequestEntry entries[] = {
        entry<OrbelTranslateRequest>(),        entry<OrbelOCRRequest>(),
        entry<OrbelHelperOpenRequest>(),       entry<OrbelHelperHotkeyRequest>(),
        entry<OrbelHelperToggleRequest>(),     entry<OrbelHelperSelectedTextRequest>(),
        entry<OrbelHelperCurrentAppRequest>(), entry<CommonInfoRequest>(),
        entry<CommonLaunchRequest>(),          entry<CommonHotkeyFetchRequest>(),
        entry<CommonHotkeyHandleRequest>(),    entry<DistributedLaunchNotification>(),
    };
    return entries;
}

void forEachField(const JSONRecordInfo& record,
                  const std::function<void(std::string_view, std::string_view)>& visit) {
    visitFields(record, "", visit);
}

}  // namespace zqcore
