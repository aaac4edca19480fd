#include "Platform/AppKit/NSAlert.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "Platform/AppKit/Display.h"
#include "Platform/AppKit/GuardedCall.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSButton.h"
#include "Platform/AppKit/NSPanel.h"
#include "Platform/AppKit/NSScreen.h"
#include "Platform/AppKit/NSStackView.h"
#include "Platform/AppKit/NSTextField.h"
#include "Platform/Base/Selector.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Dispatch/RunLoop.h"
#include "Platform/Foundation/NSNotificationCenter.h"
#include "Platform/Foundation/NSTimer.h"
#include "Platform/Graphics/CGRect.h"
#include "Platform/Graphics/NSColor.h"
#include "Platform/Graphics/NSFont.h"
#include "Platform/Layout/ConstraintMaker.h"

namespace zqcore::platform {

namespace {

constexpr CGFloat kMargin = 20;
constexpr CGFloat kSpacing = 8;
constexpr CGFloat kTextWidth = 300;
constexpr CGFloat kButtonHeight = 24;
constexpr CGFloat kButtonWidth = 80;

std::function<NSAlertResponse(const NSAlert&)>& scriptedAnswer() {
    static auto& shared = *new std::function<NSAlertResponse(const NSAlert&)>;
    return shared;
}

/// Takes the focus, and so Return and Escape, though it has no frame of the desktop's.
class AlertPanel final : public NSPanel {
  public:
    using NSPanel::NSPanel;
    [[nodiscard]] bool canBecomeKey() const override { return true; }
    void close() override {
        NSPanel::close();
        if (const auto call = std::exchange(closed, nullptr)) call();
    }

    std::function<void()> closed;
};

std::shared_ptr<NSTextField> makeText(const std::string& text, const std::shared_ptr<NSFont>& font) {
    auto field = NSTextField::labelWithString(text);
    field->setFont(font);
    field->setMaximumNumberOfLines(0);
    field->setLineBreakMode(NSLineBreakMode::byWordWrapping);
    field->setPreferredMaxLayoutWidth(kTextWidth);
    return field;
}

CGPoint placeFor(CGSize size, const std::shared_ptr<NSWindow>& over) {
    if (over) {
        const CGRect& frame = over->frame();
        return {CGRectGetMidX(frame) - size.width / 2, CGRectGetMaxY(frame) - size.height};
    }
    const CGRect screen = NSScreen::mainScreen()->visibleFrame();
    return {CGRectGetMidX(screen) - size.width / 2, CGRectGetMidY(screen) - size.height / 2};
}

}  // namespace

void NSAlert::setAnswerForTesting(std::function<NSAlertResponse(const NSAlert&)> answer) {
    scriptedAnswer() = std::move(answer);
}

std::shared_ptr<NSButton> NSAlert::addButtonWithTitle(std::string title) {
    auto button = makeObject<NSButton>();
    if (title == "Cancel") button->setKeyEquivalent("\x1b");
    if (buttons_.empty()) button->setKeyEquivalent("\r");
    button->setTitle(std::move(title));
    button->setTarget(shared_from_this());
    button->setAction(Selector::of<&NSAlert::buttonPressed>("buttonPressed:"));
    buttons_.push_back(button);
    return button;
}

void NSAlert::beginSheetModalForWindow(const std::shared_ptr<NSWindow>& window, Completion completion) {
    if (!Display::current()->isLost()) return open(window, std::move(completion));
    // Nobody could answer; later as every answer.
    if (!completion) return;
    DispatchQueue::main()->async([completion = std::move(completion)] {
        guardedCall("alert completion", [&] { completion(NSAlertAbortedResponse); });
    });
}

NSAlertResponse NSAlert::runModal() {
    if (const auto& answer = scriptedAnswer()) return answer(*this);
    if (Display::current()->isLost()) return NSAlertAbortedResponse;
    std::optional<NSAlertResponse> answered;
    open(nullptr, [&](NSAlertResponse response) {
        answered = response;
        RunLoop::main().stop();
    });
    const auto before = NSTimer::mainRunLoopMode();
    NSTimer::setMainRunLoopMode(NSRunLoopMode::modalPanel);
    // Whatever else stops the loop meanwhile is no answer.
    while (!answered) RunLoop::main().run();
    NSTimer::setMainRunLoopMode(before);
    return *answered;
}

void NSAlert::open(const std::shared_ptr<NSWindow>& over, Completion completion) {
    if (panel_) return;
    if (buttons_.empty()) addButtonWithTitle("OK");
    kept_ = std::static_pointer_cast<NSAlert>(shared_from_this());
    completion_ = std::move(completion);

    const auto content = makeObject<NSView>();
    const auto message = makeText(messageText_, NSFont::boldSystemFontOfSize(NSFont::systemFontSize()));
    const auto information =
        makeText(informativeText_, NSFont::systemFontOfSize(NSFont::smallSystemFontSize()));
    const auto row = makeObject<NSStackView>();
    row->setSpacing(kSpacing);
    // The first button stands at the right end.
    for (const auto& button : buttons_) {
        snp(button).makeConstraints([](ConstraintMaker& make) {
            make.height().equalTo(kButtonHeight);
            make.width().greaterThanOrEqualTo(kButtonWidth);
        });
        row->insertArrangedSubview(button, 0);
    }
    for (const auto& view :
         {std::static_pointer_cast<NSView>(message), std::static_pointer_cast<NSView>(information),
          std::static_pointer_cast<NSView>(row)})
        content->addSubview(view);
    snp(message).makeConstraints([](ConstraintMaker& make) {
        make.left().top().equalToSuperview().offset(kMargin);
        make.right().lessThanOrEqualToSuperview().offset(-kMargin);
    });
    snp(information).makeConstraints([&](ConstraintMaker& make) {
        make.left().equalToSuperview().offset(kMargin);
        make.top().equalTo(snp(message).bottom()).offset(kSpacing);
        make.right().lessThanOrEqualToSuperview().offset(-kMargin);
    });
    snp(row).makeConstraints([&](ConstraintMaker& make) {
        make.top().equalTo(snp(information).bottom()).offset(kMargin);
        make.left().greaterThanOrEqualToSuperview().offset(kMargin);
        make.right().equalToSuperview().offset(-kMargin);
        make.bottom().equalToSuperview().offset(-kMargin);
    });

    const auto abort = [weak = std::weak_ptr(kept_)] {
        if (const auto held = weak.lock()) held->end(NSAlertAbortedResponse);
    };
    const auto panel = makeObject<AlertPanel>();
    // Also whoever closes all windows gives an answer.
    panel->closed = abort;
    panel_ = panel;
    panel_->setLevel(NSModalPanelWindowLevel);
    panel_->setHidesOnDeactivate(false);
    panel_->setBackgroundColor(NSColor::windowBackgroundColor());
    panel_->setContentView(content);
    const CGSize size = content->fittingSize();
    panel_->setFrame({placeFor(size, over), size}, true);
    panel_->makeKeyAndOrderFront();
    lossObserver_ = NSNotificationCenter::defaultCenter().addObserverForName(
        std::string(NSApplicationDisplayLostNotification), nullptr,
        [abort](const NSNotification&) { abort(); });
}

void NSAlert::buttonPressed(NSObject* sender) {
    const auto found =
        std::ranges::find_if(buttons_, [&](const auto& button) { return button.get() == sender; });
    if (found != buttons_.end()) end(NSAlertFirstButtonReturn + (found - buttons_.begin()));
}

void NSAlert::end(NSAlertResponse response) {
    if (!panel_) return;
    const auto kept = std::exchange(kept_, nullptr);
    NSNotificationCenter::defaultCenter().removeObserver(std::exchange(lossObserver_, nullptr));
    std::exchange(panel_, nullptr)->close();
    if (const auto completion = std::exchange(completion_, nullptr)) completion(response);
}

}  // namespace zqcore::platform
