#include <algorithm>
#include <array>

#include "Classes/AppleScript/Scheme/OrbelHelperHotkeyScheme.h"
#include "Classes/AppleScript/Scheme/OrbelHelperOpenScheme.h"

namespace zqcore {
namespace {

using Open = OrbelHelperOpenScheme;
using Hotkey = OrbelHelperHotkeyScheme;

static_assert(SchemeProtocol<Open> && SchemeProtocol<Hotkey>);

constexpr std::array<std::string_view, 4> kPages{"main", "preference", "updaterCheck",
                                                 "updaterCheckInBackground"};
constexpr std::array<std::string_view, 4> kHotkeyActions{"register", "unregister", "registerAll",
                                                         "unregisterAll"};

/// The case whose raw value stands at its number in `rawValues`.
template <class Case, std::size_t Count>
std::optional<Case> caseOf(const std::array<std::string_view, Count>& rawValues, std::string_view rawValue) {
    const auto found = std::ranges::find(rawValues, rawValue);
    if (found == rawValues.end()) return std::nullopt;
    return static_cast<Case>(found - rawValues.begin());
}

std::vector<std::string> splitAtCommas(std::string_view text) {
    std::vector<std::string> pieces;
    for (;;) {
        const std::size_t comma = text.find(',');
        pieces.emplace_back(text.substr(0, comma));
        if (comma == std::string_view::npos) return pieces;
        text.remove_prefix(comma + 1);
    }
}

std::string joinedByCommas(const std::vector<std::string>& pieces) {
    std::string text;
    for (const auto& piece : pieces) {
        if (&piece != &pieces.front()) text += ',';
        text += piece;
    }
    return text;
}

}  // namespace

std::string_view Open::rawValue(Page page) noexcept { return kPages[static_cast<std::size_t>(page)]; }

std::optional<Open::Page> Open::pageFromRawValue(std::string_view rawValue) noexcept {
    return caseOf<Page>(kPages, rawValue);
}

std::shared_ptr<Open::RequestParameter> Open::RequestParameter::make(
    const std::optional<SchemeParameters>& parameters) {
    return std::shared_ptr<RequestParameter>(new RequestParameter(parameters));
}

Open::RequestParameter::RequestParameter(const std::optional<SchemeParameters>& parameters)
    : SchemeCommonParameter(parameters) {
    if (const auto text = value(parameters, "page")) page = pageFromRawValue(*text);
}

SchemeParameters Open::RequestParameter::toParameters() const {
    auto parameters = SchemeCommonParameter::toParameters();
    if (page) parameters["page"] = rawValue(*page);
    return parameters;
}

std::string_view Hotkey::rawValue(HotkeyAction hotkeyAction) noexcept {
    return kHotkeyActions[static_cast<std::size_t>(hotkeyAction)];
}

std::optional<Hotkey::HotkeyAction> Hotkey::hotkeyActionFromRawValue(std::string_view rawValue) noexcept {
    return caseOf<HotkeyAction>(kHotkeyActions, rawValue);
}

std::shared_ptr<Hotkey::RequestParameter> Hotkey::RequestParameter::make(
    const std::optional<SchemeParameters>& parameters) {
    return std::shared_ptr<RequestParameter>(new RequestParameter(parameters));
}

Hotkey::RequestParameter::RequestParameter(const std::optional<SchemeParameters>& parameters)
    : SchemeCommonParameter(parameters) {
    if (const auto text = value(parameters, "hotkeyaction")) hotkeyaction = hotkeyActionFromRawValue(*text);
    if (const auto text = value(parameters, "hotkeyids")) hotkeyids = splitAtCommas(*text);
}

SchemeParameters Hotkey::RequestParameter::toParameters() const {
    auto parameters = SchemeCommonParameter::toParameters();
    if (hotkeyaction) parameters["hotkeyaction"] = rawValue(*hotkeyaction);
    if (hotkeyids) parameters["hotkeyids"] = joinedByCommas(*hotkeyids);
    return parameters;
}

}  // namespace zqcore
