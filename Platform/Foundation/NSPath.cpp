#include "Platform/Foundation/NSPath.h"

namespace zqcore::platform {

namespace {

void appendCollapsed(std::string& out, std::string_view path) {
    for (const char c : path) {
        if (c != '/' || out.empty() || out.back() != '/') out += c;
    }
}

std::string normalized(std::string_view path) {
    std::string out;
    out.reserve(path.size());
    appendCollapsed(out, path);
    if (out.size() > 1 && out.back() == '/') out.pop_back();
    return out;
}

/// Where the extension's point lies in a normalized path; npos without an extension.
std::size_t extensionPoint(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    const std::size_t start = slash == std::string_view::npos ? 0 : slash + 1;
    const std::size_t point = path.rfind('.');
    if (point == std::string_view::npos || point <= start || point + 1 == path.size()) {
        return std::string_view::npos;
    }
    if (path.find(' ', point) != std::string_view::npos) return std::string_view::npos;
    return point;
}

}  // namespace

std::string lastPathComponent(std::string_view path) {
    std::string whole = normalized(path);
    if (whole == "/") return whole;
    return whole.substr(whole.rfind('/') + 1);
}

std::string stringByDeletingLastPathComponent(std::string_view path) {
    std::string whole = normalized(path);
    const std::size_t slash = whole.rfind('/');
    if (slash == std::string::npos) return {};
    whole.resize(slash == 0 ? 1 : slash);
    return whole;
}

std::string pathExtension(std::string_view path) {
    const std::string whole = normalized(path);
    const std::size_t point = extensionPoint(whole);
    return point == std::string::npos ? std::string{} : whole.substr(point + 1);
}

std::string stringByDeletingPathExtension(std::string_view path) {
    std::string whole = normalized(path);
    const std::size_t point = extensionPoint(whole);
    if (point != std::string::npos) whole.resize(point);
    return whole;
}

std::string stringByAppendingPathComponent(std::string_view path, std::string_view component) {
    if (path.empty()) return normalized(component);
    std::string out;
    out.reserve(path.size() + component.size() + 1);
    appendCollapsed(out, path);
    appendCollapsed(out, "/");
    appendCollapsed(out, component);
    if (out.size() > 1 && out.back() == '/') out.pop_back();
    return out;
}

std::vector<std::string_view> componentsSeparatedBySlash(std::string_view path) {
    std::vector<std::string_view> parts;
    std::size_t start = 0;
    for (std::size_t slash; (slash = path.find('/', start)) != std::string_view::npos; start = slash + 1) {
        parts.push_back(path.substr(start, slash - start));
    }
    parts.push_back(path.substr(start));
    return parts;
}

}  // namespace zqcore::platform
