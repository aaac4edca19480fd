#include "Classes/UI/TipManager/TipView.h"

#include <map>
#include <utility>

#include "Classes/Bundle/ZQCoreBundle.h"
#include "Classes/Core/Extension/AppKit/NSColorExtension.h"
#include "Classes/Core/Extension/AppKit/NSViewExtension.h"
#include "Classes/Core/Utility/AppKit/DrakMode.h"
#include "Platform/AppKit/NSImageView.h"
#include "Platform/AppKit/NSStackView.h"
#include "Platform/AppKit/NSTextField.h"
#include "Platform/Foundation/NSImage.h"
#include "Platform/Foundation/Text/CaseMapping.h"
#include "Platform/Foundation/Text/Character.h"
#include "Platform/Graphics/NSColor.h"
#include "Platform/Graphics/NSFont.h"
#include "Platform/Graphics/NSShadow.h"
#include "Platform/Keyboard/Sauce.h"
#include "Platform/Layout/ConstraintMaker.h"
#include "Platform/QuartzCore/CALayer.h"

namespace zqcore {

namespace {

struct ColorPair {
    const char* light;
    const char* dark;
};
constexpr ColorPair kCardBackground{"#F9F9F9", "#252627"};
constexpr ColorPair kCardBorder{"#DCDEE0", "#414243"};
constexpr ColorPair kDivider{"#EFEFEF", "#313233"};
constexpr ColorPair kKeyCapBackground{"#E3E4E6", "#3C3E3F"};

constexpr CGFloat kFontSize = 12;
constexpr CGFloat kMouseImageSize = 16;
constexpr CGFloat kLineItemSpacing = 8;
constexpr CGFloat kCapSpacing = 4;
constexpr CGFloat kCapTextInset = 5;
constexpr CGFloat kCapCornerRadius = 4;
constexpr CGFloat kRuleCornerRadius = 0.5;
constexpr CGFloat kBarHeight = 12;
constexpr CGFloat kRuleThickness = 1;
constexpr const char* kWindowActionsHeading = "窗口内快捷键";

void setLayerBackground(NSView& view, const char* color) {
    view.layer()->setBackgroundColor(hexColor(color)->cgColor());
}

/// A layer-backed view whose background follows the appearance.
std::shared_ptr<NSView> makeFilledView(const ColorPair& colors, CGFloat cornerRadius) {
    auto view = makeObject<NSView>();
    view->setWantsLayer(true);
    view->layer()->setCornerRadius(cornerRadius);
    DrakMode::execute(
        view, [colors](NSView& filled) { setLayerBackground(filled, colors.light); },
        [colors](NSView& filled) { setLayerBackground(filled, colors.dark); });
    return view;
}

std::shared_ptr<NSTextField> makeLabel(std::string_view text, const std::shared_ptr<NSColor>& color) {
    auto label = NSTextField::labelWithString(std::string(text));
    label->setFont(NSFont::systemFontOfSize(kFontSize));
    label->setTextColor(color);
    return label;
}

/// Kept once it was found: reading and decoding the file costs two fifths of a whole tip.
std::shared_ptr<NSImage> mouseImage(const std::string& name) {
    static auto& kept = *new std::map<std::string, std::shared_ptr<NSImage>>;
    auto& image = kept[name];
    if (!image) image = ZQCoreBundle::image(name);
    return image;
}

std::shared_ptr<NSImageView> makeMouseImage(const std::string& name) {
    auto view = makeObject<NSImageView>();
    view->setImage(mouseImage(name));
    snp(view).makeConstraints([](ConstraintMaker& make) { make.size().equalTo(kMouseImageSize); });
    return view;
}

/// How far a cap's text sits below the middle: the signs' own ink is not centred in their line.
CGFloat capTextOffset(std::string_view text) {
    if (text == "+" || text == "-") return -1.5;
    if (text == "↩") return 1.0;
    return -0.5;
}

}  // namespace

void TipView::setup() {
    NSView::setup();
    setWantsLayer(true);
    layer()->setCornerRadius(6);
    layer()->setBorderWidth(0.5);
    const auto shadow = NSShadow::make();
    shadow->setShadowColor(hexColor("#101010", 0.31));
    shadow->setShadowOffset({0, -2});
    shadow->setShadowBlurRadius(4);
    setShadow(shadow);
    const auto paint = [](TipView& card, const char* background, const char* border) {
        setLayerBackground(card, background);
        card.layer()->setBorderColor(hexColor(border)->cgColor());
    };
    DrakMode::execute(
        std::static_pointer_cast<TipView>(shared_from_this()),
        [paint](TipView& card) { paint(card, kCardBackground.light, kCardBorder.light); },
        [paint](TipView& card) { paint(card, kCardBackground.dark, kCardBorder.dark); });
}

/// Puts views below each other and ends the card below the last.
class TipView::Lines final {
  public:
    explicit Lines(TipView& card) : card_(card) {}

    /// A line that is as wide as it needs.
    void add(const std::shared_ptr<NSView>& view, CGFloat leftInset) {
        append(view, [&](ConstraintMaker& make) {
            make.left().equalToSuperview().offset(leftInset);
            make.right().lessThanOrEqualToSuperview().offset(-card_.standardInset);
        });
    }
    void addDivider() {
        append(makeFilledView(kDivider, kRuleCornerRadius), [&](ConstraintMaker& make) {
            make.left().equalToSuperview().offset(card_.standardInset);
            make.right().equalToSuperview().offset(-card_.standardInset);
            make.height().equalTo(kRuleThickness);
        });
    }
    void end() {
        snp(last_).makeConstraints(
            [&](ConstraintMaker& make) { make.bottom().equalToSuperview().offset(-card_.lineSpacing); });
    }

  private:
    template <class Sideways>
    void append(const std::shared_ptr<NSView>& view, const Sideways& sideways) {
        card_.addSubview(view);
        snp(view).makeConstraints([&](ConstraintMaker& make) {
            if (last_) {
                make.top().equalTo(snp(last_).bottom()).offset(card_.lineSpacing);
            } else {
                make.top().equalToSuperview().offset(card_.lineSpacing);
            }
            sideways(make);
        });
        last_ = view;
    }

    TipView& card_;
    std::shared_ptr<NSView> last_;
};

void TipView::update(const TipInfo& info) {
    removeAllSubviews(*this);
    const auto firstLine = generateSingleLine(info.text, info.trigger);
    if (!firstLine) return;
    Lines lines(*this);

    if (info.bothHaveText()) {
        firstLine->insertArrangedSubview(makeMouseImage("tip_left_mouse"), 0);
        lines.add(firstLine, imageInset);
    } else {
        lines.add(firstLine, standardInset);
    }

    if (const auto secondLine = generateSingleLine(info.rightText, info.rightTrigger)) {
        secondLine->insertArrangedSubview(makeMouseImage("tip_right_mouse"), 0);
        lines.add(secondLine, imageInset);
    }

    bool isFirstAction = true;
    for (const auto& [text, trigger] :
         info.windowActions.value_or(std::vector<std::pair<std::string, TipTrigger>>{})) {
        const auto line = generateSingleLine(text, trigger);
        if (!line) continue;
        if (std::exchange(isFirstAction, false)) {
            lines.addDivider();
            lines.add(makeLabel(kWindowActionsHeading, NSColor::secondaryLabelColor()), standardInset);
        }
        lines.add(line, standardInset);
    }
    lines.end();
}

std::shared_ptr<NSStackView> TipView::generateSingleLine(const std::optional<std::string>& text,
                                                         const std::optional<TipTrigger>& trigger) {
    if (!text || text->empty()) return nullptr;
    auto line = makeObject<NSStackView>();
    line->setOrientation(NSUserInterfaceLayoutOrientation::horizontal);
    line->setSpacing(kLineItemSpacing);
    snp(line).makeConstraints([&](ConstraintMaker& make) { make.height().equalTo(lineHeight); });
    line->addArrangedSubview(makeLabel(*text, NSColor::labelColor()));

    const auto groups = generateTriggerViewGroups(trigger);
    if (!groups) return line;
    for (std::size_t index = 0; index < groups->size(); ++index) {
        if (index > 0) {
            const auto bar = makeFilledView(kDivider, kRuleCornerRadius);
            snp(bar).makeConstraints([](ConstraintMaker& make) {
                make.width().equalTo(kRuleThickness);
                make.height().equalTo(kBarHeight);
            });
            line->addArrangedSubview(bar);
        }
        const Views& group = (*groups)[index];
        for (const auto& view : group) {
            line->addArrangedSubview(view);
            if (view != group.back()) line->setCustomSpacing(kCapSpacing, view);
        }
    }
    return line;
}

std::optional<std::vector<TipView::Views>> TipView::generateTriggerViewGroups(
    const std::optional<TipTrigger>& trigger) {
    if (!trigger) return std::nullopt;
    std::vector<Views> groups;
    const auto add = [&](const TipTrigger& single) {
        if (auto views = generateSingleTriggerView(single)) groups.push_back(std::move(*views));
    };
    if (const auto* members = std::get_if<TipTrigger::Composite>(&trigger->value())) {
        for (const auto& member : *members) add(member);
    } else {
        add(*trigger);
    }
    if (groups.empty()) return std::nullopt;
    return groups;
}

std::optional<TipView::Views> TipView::generateSingleTriggerView(const TipTrigger& trigger) {
    Views views;
    const auto addCap = [&](std::string_view text) {
        if (auto cap = generateTextContainerView(text)) views.push_back(std::move(cap));
    };
    if (const auto* combo = std::get_if<KeyCombo>(&trigger.value())) {
        const auto symbols = combo->keyEquivalentModifierMaskString();
        CharacterCursor cursor(symbols);
        if (combo->doubledModifiers()) {
            if (const auto symbol = cursor.next()) addCap(std::string(*symbol) + " double tap");
        } else if (const auto keyText = combo->keyEquivalent(); !keyText.empty()) {
            while (const auto symbol = cursor.next()) addCap(*symbol);
            addCap(uppercased(keyText));
        }
    } else if (const auto* key = std::get_if<Key>(&trigger.value())) {
        if (const auto text = generateKeyText(*key)) addCap(uppercased(*text));
    } else if (const auto* texts = std::get_if<TipTrigger::Texts>(&trigger.value())) {
        for (const auto& text : *texts) addCap(text);
    }
    if (views.empty()) return std::nullopt;
    return views;
}

std::shared_ptr<NSView> TipView::generateTextContainerView(std::string_view text) {
    if (text.empty()) return nullptr;
    const bool isSingle = characterCount(text) == 1;
    auto cap = makeFilledView(kKeyCapBackground, kCapCornerRadius);
    snp(cap).makeConstraints([&](ConstraintMaker& make) {
        make.height().equalTo(lineHeight);
        if (isSingle) make.width().equalTo(lineHeight);
    });
    const auto label = makeLabel(text, NSColor::labelColor());
    cap->addSubview(label);
    snp(label).makeConstraints([&](ConstraintMaker& make) {
        if (isSingle) {
            make.centerX().equalToSuperview();
        } else {
            make.left().equalToSuperview().offset(kCapTextInset);
            make.right().equalToSuperview().offset(-kCapTextInset);
        }
        make.centerY().equalToSuperview().offset(capTextOffset(text));
    });
    return cap;
}

std::optional<std::string> TipView::generateKeyText(Key key) {
    const auto& layout = Sauce::shared();
    return layout.character(layout.currentKeyCode(key).value_or(qwertyKeyCode(key)), 0);
}

}  // namespace zqcore
