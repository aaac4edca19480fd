// Choosing rows of a table by pointer and keys, and showing the choice.
#include <algorithm>
#include <utility>

#include "Platform/AppKit/GuardedCall.h"
#include "Platform/AppKit/NSEvent.h"
#include "Platform/AppKit/NSTableView.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/NSNotificationCenter.h"
#include "Platform/Graphics/CGContext.h"
#include "Platform/Graphics/CGPath.h"
#include "Platform/Graphics/CGRect.h"
#include "Platform/Graphics/NSColor.h"
#include "Platform/Graphics/NSGraphicsContext.h"

namespace zqcore::platform {

namespace {

constexpr unsigned short kDownArrow = 125;
constexpr unsigned short kUpArrow = 126;
constexpr CGFloat kCorner = 5;

}  // namespace

void NSTableView::selectRowIndexes(const NSIndexSet& rows, bool byExtendingSelection) {
    NSIndexSet selection = byExtendingSelection ? selection_ : NSIndexSet{};
    for (const int row : rows) {
        if (row >= 0 && row < numberOfRows()) selection.insert(row);
    }
    if (!severalSelected_ && selection.size() > 1) selection = {*selection.begin()};
    if (selection == selection_) return;
    selection_ = std::move(selection);
    setNeedsDisplay(true);
    NSNotificationCenter::defaultCenter().postNotificationName(NSTableViewSelectionDidChangeNotification,
                                                               shared_from_this());
}

// What of the rows that the user asks for the delegate lets be chosen.
NSIndexSet NSTableView::allowed(const NSIndexSet& rows) {
    const auto held = shared_from_this();
    NSIndexSet chosen = rows;
    if (const auto asked = delegate())
        guardedCall("selectionIndexesForProposedSelection",
                    [&] { chosen = asked->selectionIndexesForProposedSelection(*this, rows); });
    return chosen;
}

void NSTableView::mouseDown(const NSEvent& event) {
    if (!isEnabled()) return;
    const int row = rowAtPoint(convertPointFromView(event.locationInWindow(), nullptr));
    const auto held = std::static_pointer_cast<NSTableView>(shared_from_this());
    // It was a cell that was hit, or a label in one.
    if (const auto shownIn = window()) shownIn->makeFirstResponder(held);
    const bool adds = severalSelected_ && (event.modifierFlags() & NSEventModifierFlagCommand) != 0;
    const bool extends = severalSelected_ && anchor_ >= 0 && row >= 0 &&
                         (event.modifierFlags() & NSEventModifierFlagShift) != 0;
    NSIndexSet rows;
    if (extends) {
        for (int each = std::min(anchor_, row); each <= std::max(anchor_, row); ++each) rows.insert(each);
    } else if (adds) {
        rows = selection_;
        if (row >= 0 && rows.erase(row) == 0) rows.insert(row);
    } else if (row >= 0) {
        rows.insert(row);
    }
    if (!extends) anchor_ = row;
    selectRowIndexes(allowed(rows), false);
    sendAction(action(), target());
}

void NSTableView::keyDown(const NSEvent& event) {
    const bool down = event.keyCode() == kDownArrow;
    if (!isEnabled() || numberOfRows() == 0 || (!down && event.keyCode() != kUpArrow))
        return NSControl::keyDown(event);
    const auto held = shared_from_this();
    const int step = down ? 1 : -1;
    int row = selection_.empty() ? (down ? -1 : numberOfRows()) : down ? *selection_.rbegin() : selectedRow();
    // Past those that can't be chosen.
    for (row += step; row >= 0 && row < numberOfRows(); row += step) {
        const NSIndexSet chosen = allowed({row});
        if (chosen.empty()) continue;
        anchor_ = row;
        selectRowIndexes(chosen, false);
        return scrollRowToVisible(row);
    }
}

void NSTableView::drawRect(const CGRect& /*dirtyRect*/) {
    const auto current = NSGraphicsContext::currentContext();
    if (!current || selection_.empty()) return;
    const auto shownIn = window();
    const bool hasKeys = shownIn && shownIn->isKeyWindow() && shownIn->firstResponder().get() == this;
    const auto color =
        hasKeys ? NSColor::controlAccentColor() : NSColor::labelColor()->colorWithAlphaComponent(0.15);
    current->cgContext()->setFillColor(color->cgColor());
    for (const int row : selection_) {
        const CGRect area = CGRectInset(rectOfRow(row), 2, 1);
        if (!CGRectIsNull(area)) current->cgContext()->fill(*CGPath::roundedRect(area, kCorner, kCorner));
    }
}

}  // namespace zqcore::platform
