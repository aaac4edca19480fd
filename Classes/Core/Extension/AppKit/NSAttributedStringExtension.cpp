#include "Classes/Core/Extension/AppKit/NSAttributedStringExtension.h"

#include <string>

#include "Classes/Log/Log/ZQLog.h"
#include "Platform/Foundation/Text/NSRegularExpression.h"

namespace zqcore {

using platform::NSColor;
using platform::NSFont;
using platform::NSMutableAttributedString;
using platform::NSRange;
using platform::NSRegularExpression;

void zq_update(NSMutableAttributedString& text, const std::shared_ptr<NSFont>& font,
               const std::shared_ptr<NSColor>& color, std::optional<NSRange> range) {
    text.addAttributes({font, color}, range.value_or(NSRange{0, text.length()}));
}

void zq_update(NSMutableAttributedString& text, const std::shared_ptr<NSFont>& font,
               const std::shared_ptr<NSColor>& color, std::string_view pattern,
               const std::source_location& where) {
    const auto expression =
        NSRegularExpression::regularExpressionWithPattern(pattern, NSRegularExpression::caseInsensitive);
    if (!expression) {
        ZQLogError(
            [&] {
                return "正则匹配初始化错误: pattern=" + std::string(pattern) +
                       "; error=" + expression.error().description();
            },
            nullptr, where);
        return;
    }
    for (const NSRange& match : (*expression)->matchesInString(text.string())) {
        zq_update(text, font, color, match);
    }
}

}  // namespace zqcore
