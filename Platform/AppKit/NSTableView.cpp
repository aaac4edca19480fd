#include "Platform/AppKit/NSTableView.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "Platform/AppKit/GuardedCall.h"
#include "Platform/AppKit/NSClipView.h"
#include "Platform/AppKit/NSNib.h"
#include "Platform/AppKit/NSTableColumn.h"
#include "Platform/Foundation/NSNotificationCenter.h"
#include "Platform/Graphics/CGRect.h"

namespace zqcore::platform {

NSTableView::~NSTableView() {
    if (scrollObserver_) NSNotificationCenter::defaultCenter().removeObserver(scrollObserver_);
}

CGFloat NSTableViewDelegate::heightOfRow(NSTableView& table, int /*row*/) { return table.rowHeight(); }

NSIndexSet NSTableViewDelegate::selectionIndexesForProposedSelection(NSTableView& table,
                                                                     const NSIndexSet& proposed) {
    NSIndexSet rows = proposed;
    std::erase_if(rows, [&](int row) { return !shouldSelectRow(table, row); });
    return rows;
}

void NSTableView::setDelegate(const std::shared_ptr<NSTableViewDelegate>& delegate) {
    delegate_ = delegate;
    reloadData();
}

void NSTableView::addTableColumn(std::shared_ptr<NSTableColumn> column) {
    if (!column || std::ranges::find(columns_, column) != columns_.end()) return;
    columns_.push_back(std::move(column));
    reloadData();
}

void NSTableView::removeTableColumn(const std::shared_ptr<NSTableColumn>& column) {
    if (std::erase(columns_, column) > 0) reloadData();
}

void NSTableView::setRowHeight(CGFloat height) {
    rowHeight_ = height;
    reloadData();
}

void NSTableView::reloadData() {
    const auto held = shared_from_this();
    for (auto& [row, cells] : std::exchange(shown_, {})) recycle(cells);
    measureRows();
    setFrameSize({frame().size.width, ends_.empty() ? 0 : ends_.back()});
    NSIndexSet left = selection_;
    std::erase_if(left, [&](int row) { return row >= numberOfRows(); });
    selectRowIndexes(left, false);
    setNeedsLayout(true);
    setNeedsDisplay(true);
}

void NSTableView::measureRows() {
    ends_.clear();
    const auto asked = delegate_.lock();
    if (!asked) return;
    std::vector<CGFloat> ends;
    int count = 0;
    guardedCall("numberOfRowsInTableView", [&] { count = asked->numberOfRowsInTableView(*this); });
    ends.reserve(static_cast<std::size_t>(std::max(count, 0)));
    CGFloat end = 0;
    for (int row = 0; row < count; ++row) {
        CGFloat height = rowHeight_;
        guardedCall("heightOfRow", [&] { height = asked->heightOfRow(*this, row); });
        end += std::isfinite(height) ? std::max(0.0, height) : 0;
        ends.push_back(end);
    }
    ends_ = std::move(ends);
}

CGRect NSTableView::rectOfRow(int row) const {
    if (row < 0 || row >= numberOfRows()) return {};
    const auto at = static_cast<std::size_t>(row);
    const CGFloat start = at == 0 ? 0 : ends_[at - 1];
    return CGRectMake(0, start, frame().size.width, ends_[at] - start);
}

int NSTableView::rowAtPoint(CGPoint point) const {
    if (!(point.y >= 0) || !(point.x >= 0) || point.x >= frame().size.width) return -1;
    const auto below = std::ranges::upper_bound(ends_, point.y);
    return below == ends_.end() ? -1 : static_cast<int>(below - ends_.begin());
}

int NSTableView::rowForView(const NSView& view) const {
    for (const auto& [row, cells] : shown_) {
        if (std::ranges::any_of(cells, [&](const auto& cell) { return cell && view.isDescendantOf(*cell); }))
            return row;
    }
    return -1;
}

std::shared_ptr<NSView> NSTableView::viewAtColumn(int column, int row) const {
    const auto found = shown_.find(row);
    if (found == shown_.end() || column < 0 || static_cast<std::size_t>(column) >= found->second.size())
        return nullptr;
    return found->second[static_cast<std::size_t>(column)];
}

std::shared_ptr<NSView> NSTableView::makeViewWithIdentifier(std::string_view identifier,
                                                            const std::shared_ptr<NSObject>& owner) {
    if (const auto pooled = pool_.find(identifier); pooled != pool_.end() && !pooled->second.empty()) {
        const auto cell = std::move(pooled->second.back());
        pooled->second.pop_back();
        cell->setHidden(false);
        cell->setAlphaValue(1);
        return cell;
    }
    const auto objects = NSNib::loadNibNamed(identifier, owner);
    if (!objects) return nullptr;
    for (const auto& object : *objects) {
        if (auto view = std::dynamic_pointer_cast<NSView>(object)) {
            view->setIdentifier(std::string(identifier));
            return view;
        }
    }
    return nullptr;
}

void NSTableView::recycle(Cells& cells) {
    for (const auto& cell : std::exchange(cells, {})) {
        if (!cell) continue;
        cell->removeFromSuperview();
        if (!cell->identifier().empty()) pool_[cell->identifier()].push_back(cell);
    }
}

// What scrolled away goes first, so that what comes can be made of it.
void NSTableView::layout() {
    NSControl::layout();
    const auto held = shared_from_this();
    const CGRect seen = visibleRect();
    const bool any = !CGRectIsNull(seen) && seen.size.height > 0;
    const auto first = any ? std::ranges::upper_bound(ends_, CGRectGetMinY(seen)) - ends_.begin() : 0;
    const auto last = any ? std::ranges::lower_bound(ends_, CGRectGetMaxY(seen)) - ends_.begin() : -1;
    std::vector<Cells> leaving;
    for (auto entry = shown_.begin(); entry != shown_.end();) {
        const bool stays = entry->first >= first && entry->first <= last;
        if (!stays) leaving.push_back(std::move(entry->second));
        entry = stays ? std::next(entry) : shown_.erase(entry);
    }
    // Cells and delegate may ask for all anew meanwhile; from here on nothing relies on what was found
    // before.
    for (Cells& cells : leaving) recycle(cells);
    for (int row = static_cast<int>(first); row <= last && row < numberOfRows(); ++row) {
        if (!shown_.contains(row)) fillRow(row);
        if (const auto found = shown_.find(row); found != shown_.end()) placeRow(row, Cells(found->second));
    }
}

void NSTableView::fillRow(int row) {
    const auto asked = delegate_.lock();
    if (!asked) return;
    Cells cells;
    for (const auto& column : std::vector(columns_)) {
        std::shared_ptr<NSView> cell;
        guardedCall("viewForTableColumn", [&] { cell = asked->viewForTableColumn(*this, column, row); });
        if (cell) addSubview(cell);
        cells.push_back(std::move(cell));
    }
    shown_.insert_or_assign(row, std::move(cells));
}

// A column that stands alone is as wide as the table.
void NSTableView::placeRow(int row, const Cells& cells) {
    const CGRect area = rectOfRow(row);
    CGFloat x = 0;
    for (std::size_t column = 0; column < cells.size() && column < columns_.size(); ++column) {
        const CGFloat width = columns_.size() == 1 ? area.size.width : columns_[column]->width();
        if (cells[column]) cells[column]->setFrame({{x, area.origin.y}, {width, area.size.height}});
        x += width;
    }
}

void NSTableView::viewDidMoveToSuperview() {
    NSControl::viewDidMoveToSuperview();
    auto& center = NSNotificationCenter::defaultCenter();
    if (scrollObserver_) center.removeObserver(std::exchange(scrollObserver_, nullptr));
    const auto clip = std::dynamic_pointer_cast<NSClipView>(superview());
    if (!clip) return;
    // The observer that the center keeps must not keep the table.
    const auto weak = std::weak_ptr<NSView>(std::static_pointer_cast<NSView>(shared_from_this()));
    const auto relayout = [weak](const NSNotification&) {
        if (const auto table = weak.lock()) table->setNeedsLayout(true);
    };
    scrollObserver_ =
        center.addObserverForName(std::string(NSViewBoundsDidChangeNotification), clip, relayout);
}

void NSTableView::scrollRowToVisible(int row) {
    const auto clip = std::dynamic_pointer_cast<NSClipView>(superview());
    const CGRect rect = rectOfRow(row);
    if (!clip || CGRectIsEmpty(rect)) return;
    const CGRect seen = clip->bounds();
    const CGFloat top = frame().origin.y + rect.origin.y;
    const CGFloat lowest = top + rect.size.height - seen.size.height;
    const CGFloat y = std::min(std::max(seen.origin.y, lowest), top);
    if (y != seen.origin.y) clip->setBoundsOrigin({seen.origin.x, y});
}

}  // namespace zqcore::platform
