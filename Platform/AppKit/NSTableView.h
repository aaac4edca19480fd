#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/AppKit/NSControl.h"

namespace zqcore::platform {

class NSTableColumn;
class NSTableView;

/// Row numbers in rising order.
using NSIndexSet = std::set<int>;

inline constexpr std::string_view NSTableViewSelectionDidChangeNotification =
    "NSTableViewSelectionDidChangeNotification";

/// Who tells a table what it shows. Threads: main thread. Failure: what an answer throws costs one log line,
/// and the table goes on with the answer given here.
class ZQ_EXPORT NSTableViewDelegate {
  public:
    virtual ~NSTableViewDelegate() = default;

    [[nodiscard]] virtual int numberOfRowsInTableView(NSTableView& /*table*/) { return 0; }
    /// The cell; null leaves the place empty.
    [[nodiscard]] virtual std::shared_ptr<NSView> viewForTableColumn(
        NSTableView& /*table*/, const std::shared_ptr<NSTableColumn>& /*column*/, int /*row*/) {
        return nullptr;
    }
    [[nodiscard]] virtual CGFloat heightOfRow(NSTableView& table, int row);
    [[nodiscard]] virtual bool shouldSelectRow(NSTableView& /*table*/, int /*row*/) { return true; }
    /// What is selected of what the user chose; at first those that `shouldSelectRow` lets be.
    [[nodiscard]] virtual NSIndexSet selectionIndexesForProposedSelection(NSTableView& table,
                                                                          const NSIndexSet& proposed);
};

/// Rows of cells that are made when they come into sight. Rows lie from the top down without gaps; the height
/// is that of all rows. A press selects a row, with the command key one more or one less and with Shift all
/// up to it where several may be selected; the arrow keys go up and down. Cells out of sight go to their
/// identifier's pool and come back by `makeViewWithIdentifier`. Units: points, y downwards. Threads: main
/// thread. Lifetime: the delegate is held weakly. Failure: row numbers outside are passed over.
class ZQ_EXPORT NSTableView : public NSControl {
  public:
    using NSControl::NSControl;
    ~NSTableView() override;

    [[nodiscard]] std::shared_ptr<NSTableViewDelegate> delegate() const noexcept { return delegate_.lock(); }
    /// Asks it for everything anew.
    void setDelegate(const std::shared_ptr<NSTableViewDelegate>& delegate);
    [[nodiscard]] const std::vector<std::shared_ptr<NSTableColumn>>& tableColumns() const noexcept {
        return columns_;
    }
    void addTableColumn(std::shared_ptr<NSTableColumn> column);
    void removeTableColumn(const std::shared_ptr<NSTableColumn>& column);
    /// Where the delegate gives no other; 24 at first.
    [[nodiscard]] CGFloat rowHeight() const noexcept { return rowHeight_; }
    void setRowHeight(CGFloat height);

    /// Asks for the number of rows, their heights and what is in sight anew; ends the selection of rows that
    /// are no more.
    void reloadData();
    [[nodiscard]] int numberOfRows() const noexcept { return static_cast<int>(ends_.size()); }
    /// -1 outside of all rows.
    [[nodiscard]] int rowAtPoint(CGPoint point) const;
    /// Empty for a number outside.
    [[nodiscard]] CGRect rectOfRow(int row) const;
    /// -1 for a view that is in no cell.
    [[nodiscard]] int rowForView(const NSView& view) const;
    /// The cell in sight there, or null.
    [[nodiscard]] std::shared_ptr<NSView> viewAtColumn(int column, int row) const;
    /// A cell out of the identifier's pool, shown and opaque again; without one the first view of the nib of
    /// that name; else null.
    [[nodiscard]] std::shared_ptr<NSView> makeViewWithIdentifier(std::string_view identifier,
                                                                 const std::shared_ptr<NSObject>& owner);
    /// Scrolls as little as it takes.
    void scrollRowToVisible(int row);

    [[nodiscard]] bool allowsMultipleSelection() const noexcept { return severalSelected_; }
    void setAllowsMultipleSelection(bool allows) noexcept { severalSelected_ = allows; }
    [[nodiscard]] const NSIndexSet& selectedRowIndexes() const noexcept { return selection_; }
    /// The lowest one, -1 without any.
    [[nodiscard]] int selectedRow() const noexcept { return selection_.empty() ? -1 : *selection_.begin(); }
    /// Selects these rows, without asking the delegate; posts the change.
    void selectRowIndexes(const NSIndexSet& rows, bool byExtendingSelection);
    void deselectAll() { selectRowIndexes({}, false); }

    [[nodiscard]] bool isFlipped() const override { return true; }
    [[nodiscard]] bool acceptsFirstResponder() const override { return isEnabled(); }
    void layout() override;
    void viewDidMoveToSuperview() override;
    void mouseDown(const NSEvent& event) override;
    void keyDown(const NSEvent& event) override;
    void drawRect(const CGRect& dirtyRect) override;

  private:
    using Cells = std::vector<std::shared_ptr<NSView>>;  // one a column, null for an empty place

    void measureRows();
    void fillRow(int row);
    void placeRow(int row, const Cells& cells);
    void recycle(Cells& cells);
    [[nodiscard]] NSIndexSet allowed(const NSIndexSet& rows);

    std::weak_ptr<NSTableViewDelegate> delegate_;
    std::vector<std::shared_ptr<NSTableColumn>> columns_;
    std::vector<CGFloat> ends_;   // the lower edge of each row
    std::map<int, Cells> shown_;  // the rows in sight
    std::map<std::string, Cells, std::less<>> pool_;
    std::shared_ptr<NSObject> scrollObserver_;
    NSIndexSet selection_;
    int anchor_ = -1;  // where a selection with Shift begins
    CGFloat rowHeight_ = 24;
    bool severalSelected_ = false;
};

}  // namespace zqcore::platform
