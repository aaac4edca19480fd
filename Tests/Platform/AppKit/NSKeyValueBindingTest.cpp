#include "Platform/AppKit/NSKeyValueBinding.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "Platform/AppKit/NSButton.h"
#include "Platform/AppKit/NSMenu.h"
#include "Platform/AppKit/NSTextField.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Graphics/CGRect.h"
#include "TestKit/UI/HeadlessApplication.h"

namespace zqcore {
namespace {

class Account final : public NSObject, public NSKeyValueCoding {
  public:
    Value valueForKey(std::string_view key) const override { return key == "muted" ? Value(muted) : Value{}; }
    bool setValueForKey(const Value& value, std::string_view key) override {
        if (key != "muted" || !value.asBool()) return false;
        muted = *value.asBool();
        didChangeValueForKey(key);
        return true;
    }
    bool muted = false;
};

class Model final : public NSObject, public NSKeyValueCoding {
  public:
    std::shared_ptr<NSKeyValueCoding> objectForKey(std::string_view key) const override {
        return key == "account" ? account : nullptr;
    }
    std::shared_ptr<Account> account = makeObject<Account>();
};

class Negation final : public NSValueTransformer {
  public:
    Value transformedValue(const Value& value) const override { return !value.asBool().value_or(false); }
};

class BoundView final : public NSView {
  public:
    void setValueForBinding(const Value& value, std::string_view binding) override {
        heard.push_back(std::string(binding) + "=" + value.description());
    }
    std::vector<std::string> heard;
};

TEST(NSKeyValueBindingTest, ViewsFollowTheModelThroughATransformer) {
    const testkit::HeadlessApplication ui;
    using Words = std::vector<std::string>;
    auto model = makeObject<Model>();
    const auto view = makeObject<BoundView>();
    EXPECT_FALSE(view->infoForBinding("checked"));
    NSValueTransformer::setValueTransformer(makeObject<Negation>(), "not");
    view->bind("checked", model, "account.muted", {nullptr, "not"});
    const std::string no = Value(false).description(), yes = Value(true).description();
    EXPECT_EQ(view->heard, Words{"checked=" + yes}) << "the value now";
    EXPECT_TRUE(model->setValueForKeyPath(true, "account.muted"));
    EXPECT_EQ(model->valueForKeyPath("account.muted"), Value(true));
    EXPECT_EQ(view->heard, (Words{"checked=" + yes, "checked=" + no}));
    const auto info = view->infoForBinding("checked");
    ASSERT_TRUE(info);
    EXPECT_EQ(info->observedObject.lock(), model);
    EXPECT_EQ(info->observedKeyPath, "account.muted");
    EXPECT_FALSE(info->options.transformer()->allowsReverseTransformation());
    for (const char* path : {"account.other", "nobody.muted", "muted", "account..muted", "", "."}) {
        EXPECT_FALSE(model->setValueForKeyPath(false, path)) << path;
        EXPECT_TRUE(model->valueForKeyPath(path).isNull()) << path;
    }

    view->unbind("checked");
    EXPECT_FALSE(view->infoForBinding("checked"));
    model->setValueForKeyPath(false, "account.muted");
    EXPECT_EQ(view->heard.size(), 2U);
    view->bind("checked", model, "account.muted", {});
    EXPECT_EQ(view->heard.back(), "checked=" + no);
    makeObject<BoundView>()->bind("gone at once", model, "account.muted", {});
    model->setValueForKeyPath(true, "account.muted");
    EXPECT_EQ(view->heard.back(), "checked=" + yes);
    model.reset();
    EXPECT_FALSE(view->infoForBinding("checked")->observedObject.lock()) << "a model isn't kept";
    NSValueTransformer::setValueTransformer(nullptr, "not");
    EXPECT_FALSE(NSValueTransformer::valueTransformerForName("not"));
}

TEST(NSViewAccessibilityTest, ReadersSeeThroughPlainViews) {
    const testkit::HeadlessApplication ui;
    const auto window = makeObject<NSWindow>(CGRectMake(100, 200, 80, 60));
    const auto box = makeObject<NSView>(CGRectMake(10, 10, 60, 40));
    const auto button = makeObject<NSButton>(CGRectMake(5, 5, 30, 20));
    const auto field = makeObject<NSTextField>(CGRectMake(5, 30, 30, 10));
    const auto hidden = makeObject<NSButton>(CGRectMake(0, 0, 5, 5));
    hidden->setHidden(true);
    window->contentView()->addSubview(box);
    box->addSubview(button);
    box->addSubview(hidden);
    box->addSubview(field);
    using Objects = std::vector<std::shared_ptr<NSObject>>;
    const auto value = [](NSView& view, std::string_view name) {
        return view.accessibilityAttributeValue(name);
    };
    EXPECT_EQ(std::get<Objects>(value(*window->contentView(), "AXChildren")), (Objects{button, field}));
    EXPECT_EQ(std::get<std::shared_ptr<NSObject>>(value(*button, "AXParent")), window);
    EXPECT_EQ(std::get<std::shared_ptr<NSObject>>(value(*button, "AXTopLevelUIElement")), window);
    EXPECT_EQ(std::get<CGPoint>(value(*button, "AXPosition")), (CGPoint{115, 215}));
    EXPECT_EQ(std::get<CGSize>(value(*button, "AXSize")), (CGSize{30, 20}));
    EXPECT_EQ(button->accessibilityHitTest({120, 220}), button);
    EXPECT_EQ(window->contentView()->accessibilityHitTest({111, 211}), window->contentView());
    EXPECT_FALSE(button->accessibilityHitTest({111, 211}));
    EXPECT_TRUE(std::holds_alternative<std::monostate>(value(*button, "AXUnheardOf")));

    const auto names = box->accessibilityAttributeNames();
    EXPECT_EQ(names.size(), 10U);
    for (const auto& name : names)
        EXPECT_FALSE(std::holds_alternative<std::monostate>(value(*box, name))) << name;
    EXPECT_TRUE(box->accessibilityActionNames().empty());
    EXPECT_TRUE(field->accessibilityIsAttributeSettable("AXFocused"));
    EXPECT_FALSE(field->accessibilityIsAttributeSettable("AXRole"));
    field->accessibilitySetValue(true, "AXFocused");
    EXPECT_EQ(std::get<bool>(value(*field, "AXFocused")), true);
    EXPECT_EQ(window->firstResponder(), field);
    field->accessibilitySetValue(false, "AXFocused");
    EXPECT_EQ(window->firstResponder(), window);
}

TEST(NSMenuTest, ItemsSendTheirActionsUnlessDisabled) {
    class Target final : public NSObject {
      public:
        void choose(NSObject* sender) { chosen = dynamic_cast<NSMenuItem*>(sender); }
        NSMenuItem* chosen = nullptr;
    };
    const testkit::HeadlessApplication ui;
    const auto target = makeObject<Target>();
    const auto menu = makeObject<NSMenu>();
    const auto first = makeObject<NSMenuItem>("first"), second = makeObject<NSMenuItem>("second");
    menu->addItem(second);
    menu->insertItem(first, 0);
    menu->insertItem(first, 99);
    EXPECT_EQ(menu->itemArray(), (std::vector<std::shared_ptr<NSMenuItem>>{second, first})) << "it moves";
    EXPECT_FALSE(menu->performActionForItem(1)) << "without action";
    first->setTarget(target);
    first->setAction(Selector::of<&Target::choose>("choose:"));
    EXPECT_TRUE(menu->performActionForItem(1));
    EXPECT_EQ(target->chosen, menu->itemWithTitle("first").get());
    first->setEnabled(false);
    EXPECT_FALSE(menu->performActionForItem(1));
    EXPECT_FALSE(menu->performActionForItem(2));
}

}  // namespace
}  // namespace zqcore
