#include "Apps/Gallery/TipAccount.h"

#include <cstdio>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Apps/Gallery/Pages/TipChip.h"
#include "Apps/Gallery/Stage.h"
#include "Classes/UI/TipManager/TipManager.h"
#include "Classes/UI/TipManager/TipView.h"
#include "Platform/Graphics/CGRect.h"

namespace gallery {

namespace {

/// A clock face that starts with the account.
class Teller {
  public:
    explicit Teller(testkit::HeadlessApplication& application)
        : application_(application), start_(application.clock().now()) {}

    void tell(const std::string& what) const {
        const std::chrono::duration<double> passed = application_.clock().now() - start_;
        std::printf("%7.3f s  %s\n", passed.count(), what.c_str());
    }
    /// Lets a millisecond after the other pass until it is so.
    [[nodiscard]] bool until(const std::function<bool()>& done, int mostMilliseconds) const {
        for (int i = 0; i < mostMilliseconds && !done(); ++i) application_.advance(0.001);
        return done();
    }

  private:
    testkit::HeadlessApplication& application_;
    Clock::Instant start_;
};

// The texts below a view, from left to right and from top to bottom.
void collectTexts(const NSView& view, std::vector<std::string>& texts) {
    if (view.isHidden()) return;
    const auto* field = dynamic_cast<const NSTextField*>(&view);
    if (field && !field->stringValue().empty()) texts.push_back(field->stringValue());
    for (const auto& subview : view.subviews()) collectTexts(*subview, texts);
}

std::shared_ptr<TipView> tipViewIn(const std::shared_ptr<NSView>& view) {
    if (!view) return nullptr;
    if (auto found = std::dynamic_pointer_cast<TipView>(view)) return found;
    for (const auto& subview : view->subviews()) {
        if (auto found = tipViewIn(subview)) return found;
    }
    return nullptr;
}

std::string onScreen(const NSView& view) {
    return NSStringFromRect(
        view.window()->convertRectToScreen(view.convertRectToView(view.bounds(), nullptr)));
}

void tellCard(const Teller& teller, const NSWindow& window) {
    const auto card = tipViewIn(window.contentView());
    if (!card) return;
    teller.tell("the tip is up; its card lies at " + onScreen(*card));
    // Each line begins with its text; what stands behind it are the caps.
    for (const auto& line : card->subviews()) {
        std::vector<std::string> texts;
        collectTexts(*line, texts);
        if (texts.empty()) continue;
        std::string told = "  line \"" + texts.front() + "\"";
        if (texts.size() > 1) told += texts.size() == 2 ? ", cap" : ", caps";
        for (std::size_t i = 1; i < texts.size(); ++i) told += " [" + texts[i] + "]";
        teller.tell(told);
    }
}

std::shared_ptr<TipInfo> tipToTell() {
    auto tip = TipInfo::make();
    tip->displayStrategy = TipDisplayStrategy::delay;
    tip->text = "复制译文";
    tip->trigger =
        TipTrigger::keyCombo(*KeyCombo::make(Key::c, NSEventModifierFlagCommand | NSEventModifierFlagShift));
    tip->rightText = "Copy the original";
    return tip;
}

}  // namespace

bool tellTip() {
    testkit::HeadlessApplication application;
    const auto window = makeObject<NSWindow>(CGRect{{400, 300}, {320, 160}});
    const auto chip = tipChip("Copy", {80, 28}, tipToTell());
    chip->setFrameOrigin({120, 60});
    window->contentView()->addSubview(chip);
    window->orderFrontRegardless();
    application.turn();

    Stage stage(application, *window);
    const Teller teller(application);
    teller.tell("a control lies at " + onScreen(*chip) + "; its tip is to wait for a resting pointer");
    application.advance(0.25);
    stage.pointTo(*chip);
    teller.tell("the pointer comes to rest on it");
    if (!teller.until([] { return TipManager::windowNumber().has_value(); }, 5000)) return false;
    const auto tip = application.application().windowWithWindowNumber(*TipManager::windowNumber());
    if (!tip) return false;
    tellCard(teller, *tip);
    application.advance(2);
    stage.pointAway();
    teller.tell("the pointer goes");
    if (!teller.until([] { return !TipManager::windowNumber().has_value(); }, 5000)) return false;
    teller.tell("the tip is gone");
    window->close();
    return true;
}

}  // namespace gallery
