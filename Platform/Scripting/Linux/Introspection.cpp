#include "Platform/Scripting/Linux/Introspection.h"

namespace zqcore::platform {
namespace {

[[nodiscard]] bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

[[nodiscard]] bool isPathCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

/// The value of an attribute in the inside of a tag; either kind of quote.
[[nodiscard]] std::string_view attribute(std::string_view tag, std::string_view name) {
    for (std::size_t at = tag.find(name); at != tag.npos; at = tag.find(name, at + 1)) {
        if (at == 0 || !isBlank(tag[at - 1])) continue;
        std::size_t quote = at + name.size();
        while (quote < tag.size() && isBlank(tag[quote])) ++quote;
        if (quote == tag.size() || tag[quote] != '=') continue;
        ++quote;
        while (quote < tag.size() && isBlank(tag[quote])) ++quote;
        if (quote == tag.size() || (tag[quote] != '"' && tag[quote] != '\'')) continue;
        const std::size_t end = tag.find(tag[quote], quote + 1);
        return end == tag.npos ? std::string_view() : tag.substr(quote + 1, end - quote - 1);
    }
    return {};
}

[[nodiscard]] bool isTag(std::string_view tag, std::string_view name) {
    return tag.starts_with(name) &&
           (tag.size() == name.size() || isBlank(tag[name.size()]) || tag[name.size()] == '/');
}

}  // namespace

std::string objectPathForIdentifier(std::string_view identifier) {
    std::string path = "/";
    for (const char c : identifier) path.push_back(c == '.' ? '/' : isPathCharacter(c) ? c : '_');
    return path;
}

ScriptingCommands commandsInDocument(std::string_view document) {
    ScriptingCommands commands;
    bool ours = false;
    while (!document.empty()) {
        const std::size_t open = document.find('<');
        if (open == document.npos) break;
        document.remove_prefix(open);
        // A comment may hold anything, tags too.
        const bool comment = document.starts_with("<!--");
        const std::size_t close = comment ? document.find("-->") : document.find('>');
        if (close == document.npos) break;
        const std::string_view tag = document.substr(1, close - 1);
        document.remove_prefix(close + 1);
        if (comment) continue;
        if (isTag(tag, "interface")) ours = attribute(tag, "name") == kScriptingInterface;
        if (isTag(tag, "/interface")) ours = false;
        if (!ours || !isTag(tag, "method")) continue;
        const std::string_view method = attribute(tag, "name");
        if (method == "request") commands.request = true;
        if (method == "exchange") commands.exchange = true;
    }
    return commands;
}

}  // namespace zqcore::platform
