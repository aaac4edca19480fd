#include "Platform/AppKit/NSTableView.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <utility>

#include "Platform/AppKit/NSNib.h"
#include "Platform/AppKit/NSScrollView.h"
#include "Platform/AppKit/NSTableCellView.h"
#include "Platform/AppKit/NSTableColumn.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/NSNotificationCenter.h"
#include "Platform/Graphics/CGRect.h"
#include "TestKit/UI/HeadlessApplication.h"

namespace zqcore {
namespace {

/// 1000 rows, every tenth of them 40 high, the others 20; row 3 can't be selected, row 5 has no cell.
class Rows : public NSTableViewDelegate {
  public:
    int numberOfRowsInTableView(NSTableView& /*table*/) override { return count; }
    CGFloat heightOfRow(NSTableView& /*table*/, int row) override {
        if (row == 7) throw std::runtime_error("no height");
        return row % 10 == 0 ? 40 : 20;
    }
    bool shouldSelectRow(NSTableView& /*table*/, int row) override { return row != 3; }
    std::shared_ptr<NSView> viewForTableColumn(NSTableView& table,
                                               const std::shared_ptr<NSTableColumn>& column,
                                               int row) override {
        if (row == 5) return nullptr;
        if (row == 6 && std::exchange(reloadsAtSix, false)) table.reloadData();
        auto cell = table.makeViewWithIdentifier(column->identifier(), nullptr);
        if (!cell) {
            ++made;
            cell = makeObject<NSTableCellView>();
            cell->setIdentifier(column->identifier());
        }
        EXPECT_FALSE(cell->isHidden());
        cell->setAlphaValue(0.5);
        return cell;
    }
    int count = 1000;
    int made = 0;
    bool reloadsAtSix = false;
};

class NSTableViewTest : public testing::Test {
  protected:
    testkit::HeadlessApplication ui;
    std::shared_ptr<NSWindow> window =
        makeObject<NSWindow>(CGRectMake(0, 0, 200, 100), NSWindowStyleMaskTitled);
    std::shared_ptr<NSScrollView> scroll = makeObject<NSScrollView>(CGRectMake(0, 0, 200, 100));
    std::shared_ptr<NSTableView> table = makeObject<NSTableView>(CGRectMake(0, 0, 200, 0));
    std::shared_ptr<Rows> rows = std::make_shared<Rows>();

    void SetUp() override {
        table->setRowHeight(24);
        table->addTableColumn(makeObject<NSTableColumn>("name"));
        table->setDelegate(rows);
        scroll->setDocumentView(table);
        window->contentView()->addSubview(scroll);
        window->makeKeyAndOrderFront();
        ui.turn();
    }
};

TEST_F(NSTableViewTest, CellsAreMadeInSightAndComeBackFromTheirPool) {
    EXPECT_EQ(table->frame().size, (CGSize{200, 100 * 40 + 900 * 20 + 4}))
        << "a height that throws is the table's";
    EXPECT_EQ(table->rectOfRow(1), CGRectMake(0, 40, 200, 20));
    EXPECT_EQ(table->rectOfRow(8), CGRectMake(0, 184, 200, 20));
    EXPECT_EQ(table->rectOfRow(1000), CGRect{});
    EXPECT_EQ(rows->made, 4) << "40 and three times 20 fill the 100";
    const auto first = table->viewAtColumn(0, 0);
    ASSERT_TRUE(first);
    EXPECT_EQ(first->frame(), CGRectMake(0, 0, 200, 40)) << "a column alone is as wide as the table";
    EXPECT_EQ(table->rowForView(*first), 0);

    scroll->contentView()->setBoundsOrigin({0, 20000});
    ui.turn();
    EXPECT_FALSE(table->viewAtColumn(0, 0));
    EXPECT_LE(rows->made, 6) << "the same few cells go round";
    EXPECT_LE(table->subviews().size(), 6U);
    first->setHidden(true);
    EXPECT_EQ(table->rowAtPoint({10, 20000}), table->rowForView(*table->subviews().front()));
    scroll->contentView()->setBoundsOrigin({0, 100});
    rows->reloadsAtSix = true;
    ui.turn();
    EXPECT_TRUE(table->viewAtColumn(0, 6)) << "also when all is asked anew meanwhile";
    EXPECT_FALSE(table->viewAtColumn(0, 5)) << "no cell was given";
    EXPECT_EQ(table->rowAtPoint({10, 159.9}), 6);
    EXPECT_EQ(table->rowAtPoint({10, 160}), 7);
    EXPECT_EQ(table->rowAtPoint({-1, 160}), -1);

    EXPECT_FALSE(table->makeViewWithIdentifier("unknown", nullptr));
    NSNib::registerNib("unknown", [](const auto&) {
        return std::vector<std::shared_ptr<NSObject>>{makeObject<NSTableCellView>()};
    });
    EXPECT_EQ(table->makeViewWithIdentifier("unknown", nullptr)->identifier(), "unknown");
    NSNib::registerNib("unknown", {});
}

TEST_F(NSTableViewTest, RowsAreSelectedByPressesAndKeysAsTheDelegateLets) {
    int posts = 0;
    const auto token = NSNotificationCenter::defaultCenter().addObserverForName(
        std::string(NSTableViewSelectionDidChangeNotification), table,
        [&](const NSNotification&) { ++posts; });
    const auto press = [&](int row, NSEventModifierFlags flags) {
        const CGRect place = table->convertRectToView(table->rectOfRow(row), nullptr);
        ui.display().setModifierFlags(flags);
        ui.display().click({CGRectGetMidX(place), CGRectGetMidY(place)});
        ui.display().setModifierFlags(0);
        return table->selectedRowIndexes();
    };
    EXPECT_EQ(press(1, 0), NSIndexSet{1});
    EXPECT_EQ(press(3, 0), NSIndexSet{}) << "not to be selected";
    EXPECT_EQ(press(2, 0), NSIndexSet{2});
    EXPECT_EQ(press(1, NSEventModifierFlagCommand), NSIndexSet{1}) << "one at a time";
    table->setAllowsMultipleSelection(true);
    EXPECT_EQ(press(0, NSEventModifierFlagCommand), (NSIndexSet{0, 1}));
    EXPECT_EQ(press(1, NSEventModifierFlagCommand), (NSIndexSet{0}));
    EXPECT_EQ(press(2, 0), (NSIndexSet{2}));
    scroll->contentView()->setBoundsOrigin({0, 30});
    ui.turn();
    EXPECT_EQ(press(4, NSEventModifierFlagShift), (NSIndexSet{2, 4}));
    ui.display().pressKey(125);
    EXPECT_EQ(table->selectedRow(), 5);
    EXPECT_EQ(scroll->contentView()->bounds().origin.y, 40) << "and comes wholly into sight";
    for (int up = 0; up < 9; ++up) ui.display().pressKey(126);
    EXPECT_EQ(table->selectedRow(), 0) << "past row 3 and no further than the first";
    posts = 0;
    table->selectRowIndexes({-1, 3, 999, 1000}, false);
    EXPECT_EQ(table->selectedRowIndexes(), (NSIndexSet{3, 999})) << "code need not ask";
    EXPECT_EQ(posts, 1);
    rows->count = 4;
    table->reloadData();
    EXPECT_EQ(table->selectedRowIndexes(), NSIndexSet{3});
    rows.reset();
    table->reloadData();
    EXPECT_EQ(table->numberOfRows(), 0);
    NSNotificationCenter::defaultCenter().removeObserver(token);
}

}  // namespace
}  // namespace zqcore
