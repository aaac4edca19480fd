// Layout: views placed by constraints, and stack views.

#include "Apps/Gallery/GalleryPage.h"
#include "Apps/Gallery/Sheet.h"
#include "Platform/AppKit/NSStackView.h"
#include "Platform/Graphics/NSColor.h"
#include "Platform/Layout/ConstraintMaker.h"
#include "Platform/QuartzCore/CALayer.h"

namespace gallery {

namespace {

constexpr CGColor kColors[] = {CGColor::rgb(0.22, 0.48, 0.9), CGColor::rgb(0.97, 0.55, 0.2),
                               CGColor::rgb(0.2, 0.66, 0.33), CGColor::rgb(0.93, 0.32, 0.5)};

std::shared_ptr<NSView> block(std::size_t color, CGSize size = {}) {
    auto view = makeObject<NSView>();
    view->setWantsLayer(true);
    view->layer()->setBackgroundColor(kColors[color]);
    view->layer()->setCornerRadius(3);
    if (size.width > 0) snp(view).makeConstraints([&](ConstraintMaker& make) { make.size().equalTo(size); });
    return view;
}

std::shared_ptr<NSView> ground(CGSize size) {
    auto view = makeObject<NSView>(CGRect{{}, size});
    view->setWantsLayer(true);
    view->layer()->setBorderColor(NSColor::separatorColor()->cgColor());
    view->layer()->setBorderWidth(1);
    return view;
}

/// A bar above, one beside, and the rest, 6 points between all.
std::shared_ptr<NSView> barsAndBody() {
    auto view = ground({200, 110});
    const auto bar = block(0);
    const auto side = block(1);
    const auto body = block(2);
    for (const auto& each : {bar, side, body}) view->addSubview(each);
    snp(bar).makeConstraints([](ConstraintMaker& make) {
        make.top().left().right().equalToSuperview().inset(6);
        make.height().equalTo(20);
    });
    snp(side).makeConstraints([&](ConstraintMaker& make) {
        make.top().equalTo(snp(bar).bottom()).offset(6);
        make.left().bottom().equalToSuperview().inset(6);
        make.width().equalTo(44);
    });
    snp(body).makeConstraints([&](ConstraintMaker& make) {
        make.left().equalTo(snp(side).right()).offset(6);
        make.top().equalTo(side);
        make.right().bottom().equalToSuperview().inset(6);
    });
    return view;
}

/// Three of one width, whatever the room.
std::shared_ptr<NSView> equalWidths() {
    auto view = ground({200, 110});
    std::shared_ptr<NSView> previous;
    for (std::size_t i = 0; i < 3; ++i) {
        const auto part = block(i);
        view->addSubview(part);
        snp(part).makeConstraints([&](ConstraintMaker& make) {
            make.top().bottom().equalToSuperview().inset(6);
            if (!previous) {
                make.left().equalToSuperview().offset(6);
            } else {
                make.left().equalTo(snp(previous).right()).offset(6);
                make.width().equalTo(previous);
            }
            if (i == 2) make.right().equalToSuperview().offset(-6);
        });
        previous = part;
    }
    return view;
}

/// Wants 400, may have 120, so it has that: the stronger sentence wins.
std::shared_ptr<NSView> priorities() {
    auto view = ground({200, 110});
    const auto part = block(3);
    view->addSubview(part);
    snp(part).makeConstraints([](ConstraintMaker& make) {
        make.center().equalToSuperview();
        make.height().equalTo(40);
        make.width().equalTo(400).priority(750);
        make.width().lessThanOrEqualTo(120);
    });
    return view;
}

std::shared_ptr<NSView> framed(const std::shared_ptr<NSStackView>& stack) {
    stack->setWantsLayer(true);
    stack->layer()->setBorderColor(NSColor::separatorColor()->cgColor());
    stack->layer()->setBorderWidth(1);
    const auto holder = makeObject<NSView>();
    holder->addSubview(stack);
    snp(stack).makeConstraints([](ConstraintMaker& make) { make.left().top().equalToSuperview(); });
    holder->setFrameSize(stack->fittingSize());
    return holder;
}

std::shared_ptr<NSStackView> stackOf(std::initializer_list<CGSize> sizes) {
    std::vector<std::shared_ptr<NSView>> views;
    for (const CGSize size : sizes) views.push_back(block(views.size() % std::size(kColors), size));
    return NSStackView::stackViewWithViews(views);
}

void addStacks(Sheet& sheet) {
    sheet.beginRow("Stack views");
    sheet.add(framed(stackOf({{30, 30}, {50, 50}, {20, 20}})), "a row, centred");

    const auto column = stackOf({{40, 14}, {70, 14}, {30, 14}});
    column->setOrientation(NSUserInterfaceLayoutOrientation::vertical);
    column->setSpacing(4);
    sheet.add(framed(column), "a column, gaps of 4");

    const auto custom = stackOf({{24, 40}, {24, 40}, {24, 40}});
    custom->setCustomSpacing(30, custom->arrangedSubviews()[0]);
    sheet.add(framed(custom), "30 after the first");

    const auto hidden = stackOf({{24, 40}, {24, 40}, {24, 40}});
    hidden->arrangedSubviews()[1]->setHidden(true);
    sheet.add(framed(hidden), "the second hidden");

    const auto inset = stackOf({{24, 24}, {24, 24}});
    inset->setEdgeInsets({4, 20, 16, 8});
    sheet.add(framed(inset), "insets 4, 20, 16, 8");

    const auto labels =
        NSStackView::stackViewWithViews({label("Labels"), block(0, {1, 16}), label("at their own size")});
    labels->setEdgeInsets({6, 10, 6, 10});
    sheet.add(framed(labels), "a fitting size");
}

void fill(Sheet& sheet) {
    sheet.beginRow("Constraints");
    sheet.add(barsAndBody(), "edges, and one another");
    sheet.add(equalWidths(), "equal widths");
    sheet.add(priorities(), "400 at 750, at most 120 required");
    addStacks(sheet);
}

}  // namespace

const GalleryPage kLayoutPage{"layout", "Constraints and stacks",
                              "Sentences about edges and sizes, solved in one go", fill};

}  // namespace gallery
