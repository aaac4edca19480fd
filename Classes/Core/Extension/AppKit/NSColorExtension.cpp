#include "Classes/Core/Extension/AppKit/NSColorExtension.h"

#include <cstdint>
#include <random>

#include "Platform/Foundation/Text/Character.h"
#include "Platform/Foundation/Text/NSScanner.h"
#include "Platform/Graphics/NSColor.h"

namespace zqcore {

using platform::CGFloat;
using platform::NSColor;

std::shared_ptr<NSColor> hexColor(std::string_view text) { return hexColor(text, 1); }

std::shared_ptr<NSColor> hexColor(std::string_view text, CGFloat alpha) {
    const std::size_t count = platform::characterCount(text);
    const bool marked = count == 7 && text.front() == '#';
    if (!marked && count != 6) return NSColor::whiteColor();
    std::uint32_t value = 0;
    platform::NSScanner(marked ? text.substr(1) : text).scanHexInt(value);
    const auto channel = [&](int shift) { return (value >> shift & 0xff) / 255.0; };
    return NSColor::colorWithRGBA(channel(16), channel(8), channel(0), alpha);
}

std::shared_ptr<NSColor> random() {
    thread_local std::minstd_rand source{std::random_device{}()};
    std::uniform_int_distribution<int> hundredths(60, 99);
    const CGFloat red = hundredths(source) / 100.0;
    const CGFloat green = hundredths(source) / 100.0;
    const CGFloat blue = hundredths(source) / 100.0;
    return NSColor::colorWithRGBA(red, green, blue, 1);
}

}  // namespace zqcore
