#include "Platform/Graphics/TextLayout.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Base/Linux/ReleasedBy.h"
#include "Platform/Foundation/Text/Character.h"
#include "Platform/Foundation/Text/Utf16.h"
#include "Platform/Graphics/CGContext.h"
#include "Platform/Graphics/Linux/FontMap.h"
#include "Platform/Graphics/NSAttributedString.h"
#include "Platform/Graphics/NSColor.h"
#include "Platform/Graphics/NSFont.h"

namespace zqcore::platform {

namespace {

constexpr CGFloat kWidest = 1e6;  // pango counts 1/1024 points in an int

/// A run by bytes; the font is never null.
struct ByteRun {
    std::size_t begin;
    std::size_t end;
    std::shared_ptr<NSFont> font;
    std::shared_ptr<NSColor> color;
};

struct Line {
    CGFloat top;
    CGFloat height;
    CGFloat base;  ///< the base line, from `top`
    CGFloat width;
    bool rightToLeft;
};

using Attributes = std::unique_ptr<PangoAttrList, ReleasedBy<pango_attr_list_unref>>;

/// What pango takes: valid UTF-8 without NUL, with as many UTF-16 units as before.
std::string layoutText(std::string_view text) {
    std::string valid(text);
    std::ranges::replace(valid, '\0', ' ');
    if (!g_utf8_validate(valid.data(), static_cast<gssize>(valid.size()), nullptr)) {
        valid = fromUTF16(toUTF16(valid));
    }
    return valid;
}

/// The byte at which a UTF-16 unit begins; a unit inside a character counts as the character's end.
std::size_t byteOfUnit(std::string_view text, std::size_t unit) {
    std::size_t units = 0;
    std::size_t byte = 0;
    while (byte < text.size() && units < unit) {
        const auto lead = static_cast<unsigned char>(text[byte]);
        units += lead >= 0xF0 ? 2 : 1;
        byte += lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
    }
    return std::min(byte, text.size());
}

void insert(PangoAttrList* list, PangoAttribute* attribute, const ByteRun& run) {
    attribute->start_index = static_cast<guint>(run.begin);
    attribute->end_index = static_cast<guint>(run.end);
    pango_attr_list_insert(list, attribute);
}

guint16 channel(double value) {
    return static_cast<guint16>(std::lround(std::clamp(value, 0.0, 1.0) * 65535));
}

/// Whether a byte ends a word for what follows: a blank, or the beginning of a letter that lines may be
/// broken at anyway (from U+3000 on).
bool endsWord(char byte) {
    return byte == ' ' || byte == '\n' || byte == '\t' || static_cast<unsigned char>(byte) >= 0xE3;
}

/// Where a word goes on for more letters than any real one, marks every second stretch of it with a language
/// of its own. Pango measures the rest of a stretch anew for each line that it breaks off, so that one word
/// of 20,000 letters took 17 s; the marks bound the stretches and change nothing that is seen.
void boundLongWords(PangoAttrList* list, std::string_view text) {
    constexpr std::size_t longest = 256;  // bytes of a word that is left whole
    constexpr std::size_t stretch = 64;
    for (std::size_t begin = 0; begin < text.size(); ++begin) {
        const std::string_view rest = text.substr(begin);
        const auto length = static_cast<std::size_t>(std::ranges::find_if(rest, endsWord) - rest.begin());
        bool marked = false;
        std::size_t from = 0;
        CharacterCursor characters(rest.substr(0, length));
        while (length > longest && characters.next()) {
            const std::size_t at = characters.position();
            if (at < length && at - from < stretch) continue;
            if (std::exchange(marked, !marked)) {
                PangoAttribute* language = pango_attr_language_new(pango_language_from_string("en-gb"));
                language->start_index = static_cast<guint>(begin + from);
                language->end_index = static_cast<guint>(begin + at);
                pango_attr_list_insert(list, language);
            }
            from = at;
        }
        begin += length;
    }
}

/// `wrapped` is the text if its lines are to be broken at a width.
Attributes attributesOf(const std::vector<ByteRun>& runs, const std::vector<CGColor>& colors,
                        std::string_view wrapped) {
    Attributes list(pango_attr_list_new());
    // A word that is broken between its characters gets no hyphen that isn't in the text.
    pango_attr_list_insert(list.get(), pango_attr_insert_hyphens_new(FALSE));
    for (std::size_t i = 0; i < runs.size(); ++i) {
        const auto description = fontDescription(runs[i].font->pointSize(), runs[i].font->weight());
        insert(list.get(), pango_attr_font_desc_new(description.get()), runs[i]);
        if (!runs[i].color || i >= colors.size()) continue;
        const CGColor& color = colors[i];
        insert(list.get(),
               pango_attr_foreground_new(channel(color.red), channel(color.green), channel(color.blue)),
               runs[i]);
        insert(list.get(), pango_attr_foreground_alpha_new(std::max<guint16>(channel(color.alpha), 1)),
               runs[i]);
    }
    boundLongWords(list.get(), wrapped);
    return list;
}

bool isLimited(const TextLayoutOptions& options) { return options.width > 0 && options.width < kWidest; }

/// The text if the options break its lines, nothing else.
std::string_view wrappedText(const std::string& text, const TextLayoutOptions& options) {
    const bool breaks = options.lineBreak == NSLineBreakMode::byWordWrapping ||
                        options.lineBreak == NSLineBreakMode::byCharWrapping;
    return breaks && isLimited(options) ? std::string_view(text) : std::string_view();
}

void applyOptions(PangoLayout* layout, const TextLayoutOptions& options) {
    // Rounded up: a text must fit into the width that was measured for it.
    const int width = isLimited(options) ? static_cast<int>(std::ceil(options.width * PANGO_SCALE)) : -1;
    switch (options.lineBreak) {
        case NSLineBreakMode::byClipping:
            break;
        case NSLineBreakMode::byTruncatingHead:
            pango_layout_set_ellipsize(layout, PANGO_ELLIPSIZE_START);
            break;
        case NSLineBreakMode::byTruncatingTail:
            pango_layout_set_ellipsize(layout, PANGO_ELLIPSIZE_END);
            break;
        case NSLineBreakMode::byTruncatingMiddle:
            pango_layout_set_ellipsize(layout, PANGO_ELLIPSIZE_MIDDLE);
            break;
        case NSLineBreakMode::byWordWrapping:
            pango_layout_set_wrap(layout, PANGO_WRAP_WORD_CHAR);
            break;
        case NSLineBreakMode::byCharWrapping:
            pango_layout_set_wrap(layout, PANGO_WRAP_CHAR);
            break;
    }
    if (options.lineBreak != NSLineBreakMode::byClipping) pango_layout_set_width(layout, width);
}

PangoLayoutHandle makeLayout(PangoContext* context, const std::string& text, const std::vector<ByteRun>& runs,
                             const NSFont& font, const TextLayoutOptions& options) {
    if (!context) return nullptr;
    PangoLayoutHandle layout(pango_layout_new(context));
    pango_layout_set_font_description(layout.get(), fontDescription(font.pointSize(), font.weight()).get());
    pango_layout_set_text(layout.get(), text.data(), static_cast<int>(text.size()));
    pango_layout_set_attributes(layout.get(), attributesOf(runs, {}, wrappedText(text, options)).get());
    applyOptions(layout.get(), options);
    return layout;
}

}  // namespace

struct TextLayout::Impl {
    std::string text;
    std::shared_ptr<NSFont> font;
    std::vector<ByteRun> runs;
    TextLayoutOptions options;
    PangoLayoutHandle layout;  ///< null on a machine without fonts
    std::vector<Line> lines;
    CGSize size;
    std::vector<CGColor> shownColors;

    static std::shared_ptr<Impl> ofPlainText(std::string_view text, const std::shared_ptr<NSFont>& font,
                                             const TextLayoutOptions& options);
    void arrange();
    void measureLines();
    void guessLines();
    void addLine(std::size_t begin, std::size_t end, CGFloat width, bool rightToLeft);
    void showColors(CGFloat alpha);
    [[nodiscard]] CGFloat leftOf(const Line& line, CGFloat width) const;
};

void TextLayout::Impl::arrange() {
    layout = makeLayout(pinnedTextContext(), text, runs, *font, options);
    if (layout && pango_layout_get_unknown_glyphs_count(layout.get()) > 0) {
        auto wider = makeLayout(systemTextContext(), text, runs, *font, options);
        if (wider) layout = std::move(wider);
    }
    if (layout) {
        measureLines();
    } else {
        guessLines();
    }
}

void TextLayout::Impl::addLine(std::size_t begin, std::size_t end, CGFloat width, bool rightToLeft) {
    // The tallest of the line's own fonts; an empty line has the font of what stands before it.
    CGFloat height = 0;
    CGFloat ascender = 0;
    const NSFont* before = font.get();
    for (const ByteRun& run : runs) {
        if (run.begin <= begin) before = run.font.get();
        if (run.begin >= end || run.end <= begin) continue;
        height = std::max(height, lineHeightOf(*run.font));
        ascender = std::max(ascender, run.font->ascender());
    }
    if (height == 0) {
        height = lineHeightOf(*before);
        ascender = before->ascender();
    }
    const CGFloat top = size.height;
    // On a whole point, so that letters stand sharp on the pixels.
    lines.push_back({top, height, std::round(ascender), width, rightToLeft});
    size = {std::max(size.width, width), top + height};
}

void TextLayout::Impl::measureLines() {
    for (GSList* at = pango_layout_get_lines_readonly(layout.get()); at; at = at->next) {
        auto* line = static_cast<PangoLayoutLine*>(at->data);
        PangoRectangle logical;
        pango_layout_line_get_extents(line, nullptr, &logical);
        const auto begin = static_cast<std::size_t>(pango_layout_line_get_start_index(line));
        const auto length = static_cast<std::size_t>(pango_layout_line_get_length(line));
        addLine(begin, begin + length, CGFloat(logical.width) / PANGO_SCALE,
                pango_layout_line_get_resolved_direction(line) == PANGO_DIRECTION_RTL);
    }
}

/// Without fonts there is still a size to lay things out by.
void TextLayout::Impl::guessLines() {
    constexpr CGFloat share = 0.6;  // of the font's size, an ordinary letter's width
    std::size_t begin = 0;
    while (begin <= text.size()) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        const auto units = utf16Length(std::string_view(text).substr(begin, end - begin));
        addLine(begin, end, CGFloat(units) * share * font->pointSize(), false);
        begin = end + 1;
    }
}

void TextLayout::Impl::showColors(CGFloat alpha) {
    std::vector<CGColor> colors;
    bool any = false;
    for (const ByteRun& run : runs) {
        colors.push_back(run.color ? run.color->cgColor() : CGColor::clear());
        colors.back().alpha *= alpha;
        any = any || run.color;
    }
    if (!any || colors == shownColors) return;
    pango_layout_set_attributes(layout.get(), attributesOf(runs, colors, wrappedText(text, options)).get());
    shownColors = std::move(colors);
}

CGFloat TextLayout::Impl::leftOf(const Line& line, CGFloat width) const {
    const CGFloat rest = width - line.width;
    switch (options.alignment) {
        case NSTextAlignment::left:
            return 0;
        case NSTextAlignment::right:
            return rest;
        case NSTextAlignment::center:
            return rest / 2;
        case NSTextAlignment::natural:
            break;
    }
    return line.rightToLeft ? rest : 0;
}

std::shared_ptr<TextLayout::Impl> TextLayout::Impl::ofPlainText(std::string_view text,
                                                                const std::shared_ptr<NSFont>& font,
                                                                const TextLayoutOptions& options) {
    auto made = std::make_shared<Impl>();
    made->text = layoutText(text);
    made->font = font;
    made->options = options;
    made->arrange();
    return made;
}

/// The short plain texts that the thread laid out last. A view measures its text and then draws it, and the
/// words of an interface come again and again; a layout without runs of its own never changes.
class TextLayout::Recent {
  public:
    static std::shared_ptr<Impl> find(std::string_view text, const std::shared_ptr<NSFont>& font,
                                      const TextLayoutOptions& options) {
        if (text.size() > kLongest) return Impl::ofPlainText(text, font, options);
        thread_local std::vector<Entry> entries;
        thread_local std::uint64_t uses = 0;
        // Clipped lines are the same at any width.
        TextLayoutOptions wanted = options;
        if (options.lineBreak == NSLineBreakMode::byClipping || !isLimited(options))
            wanted.width = TextLayoutOptions::kNoLimit;
        const auto found =
            std::ranges::find_if(entries, [&](const Entry& one) { return one.isFor(text, *font, wanted); });
        if (found != entries.end()) {
            found->lastUse = ++uses;
            return found->layout;
        }
        if (entries.size() >= kMost) entries.erase(std::ranges::min_element(entries, {}, &Entry::lastUse));
        auto made = Impl::ofPlainText(text, font, wanted);
        return entries.emplace_back(std::string(text), std::move(made), ++uses).layout;
    }

  private:
    static constexpr std::size_t kMost = 64;
    static constexpr std::size_t kLongest = 64;  // bytes

    struct Entry {
        std::string text;
        std::shared_ptr<Impl> layout;
        std::uint64_t lastUse;

        [[nodiscard]] bool isFor(std::string_view wanted, const NSFont& font,
                                 const TextLayoutOptions& options) const {
            return text == wanted && layout->font->pointSize() == font.pointSize() &&
                   layout->font->weight() == font.weight() && layout->options == options;
        }
    };
};

TextLayout::TextLayout(std::string_view text, const std::shared_ptr<NSFont>& font,
                       const TextLayoutOptions& options)
    : impl_(Recent::find(text, font ? font : NSFont::systemFontOfSize(NSFont::systemFontSize()), options)) {}

TextLayout::TextLayout(const NSAttributedString& text, const std::shared_ptr<NSFont>& font,
                       const TextLayoutOptions& options)
    : impl_(std::make_shared<Impl>()) {
    impl_->text = layoutText(text.string());
    impl_->font = font ? font : NSFont::systemFontOfSize(NSFont::systemFontSize());
    impl_->options = options;
    std::size_t begin = 0;
    for (const auto& run : text.runs()) {
        const auto rest = std::string_view(impl_->text).substr(begin);
        const std::size_t end = begin + byteOfUnit(rest, run.range.length);
        impl_->runs.push_back({begin, end, run.attributes.font ? run.attributes.font : impl_->font,
                               run.attributes.foregroundColor});
        begin = end;
    }
    impl_->arrange();
}

TextLayout::~TextLayout() = default;
TextLayout::TextLayout(TextLayout&&) noexcept = default;
TextLayout& TextLayout::operator=(TextLayout&&) noexcept = default;

CGSize TextLayout::size() const noexcept { return impl_->size; }
std::size_t TextLayout::lineCount() const noexcept { return impl_->lines.size(); }
CGFloat TextLayout::firstBaseline() const noexcept {
    return impl_->lines.empty() ? 0 : impl_->lines.front().base;
}

void TextLayout::draw(CGContext& context, const CGRect& rect, const std::shared_ptr<NSColor>& color) const {
    const bool placed = std::isfinite(rect.origin.x) && std::isfinite(rect.origin.y) &&
                        std::isfinite(rect.size.width) && std::isfinite(rect.size.height);
    if (!impl_->layout || context.drawsNothing() || !placed) return;
    const CGColor own = (color ? color : NSColor::labelColor())->cgColor();
    impl_->showColors(context.alpha());
    cairo_t* cairo = context.native();
    cairo_save(cairo);
    if (context.isFlipped()) {
        cairo_translate(cairo, rect.origin.x, rect.origin.y);
    } else {
        cairo_translate(cairo, rect.origin.x, rect.origin.y + rect.size.height);
        cairo_scale(cairo, 1, -1);
    }
    cairo_set_source_rgba(cairo, own.red, own.green, own.blue, own.alpha * context.alpha());
    GSList* at = pango_layout_get_lines_readonly(impl_->layout.get());
    for (const Line& line : impl_->lines) {
        if (!at) break;
        cairo_move_to(cairo, impl_->leftOf(line, rect.size.width), line.top + line.base);
        pango_cairo_show_layout_line(cairo, static_cast<PangoLayoutLine*>(at->data));
        at = at->next;
    }
    cairo_new_path(cairo);
    cairo_restore(cairo);
}

CGRect TextLayout::caretRect(std::size_t index) const {
    if (!impl_->layout) return {{}, {0, impl_->lines.front().height}};
    const auto byte = static_cast<int>(byteOfUnit(impl_->text, index));
    int line = 0;
    int x = 0;
    pango_layout_index_to_line_x(impl_->layout.get(), byte, FALSE, &line, &x);
    const Line& on =
        impl_->lines[std::min(static_cast<std::size_t>(std::max(line, 0)), impl_->lines.size() - 1)];
    return {{CGFloat(x) / PANGO_SCALE, on.top}, {0, on.height}};
}

CGFloat lineHeightOf(const NSFont& font) noexcept {
    return std::ceil(font.ascender() + std::abs(font.descender()) + font.leading());
}

}  // namespace zqcore::platform
