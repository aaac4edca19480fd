#include "Platform/Graphics/NSGraphicsContext.h"

#include <utility>
#include <vector>

#include "Platform/Graphics/NSBitmapImageRep.h"

namespace zqcore::platform {

namespace {

struct ThreadContexts {
    std::shared_ptr<NSGraphicsContext> current;
    std::vector<std::shared_ptr<NSGraphicsContext>> aside;
};

ThreadContexts& contexts() {
    thread_local ThreadContexts mine;
    return mine;
}

}  // namespace

std::shared_ptr<NSGraphicsContext> NSGraphicsContext::graphicsContextWithCGContext(
    std::shared_ptr<CGContext> context) {
    return context ? std::make_shared<NSGraphicsContext>(std::move(context)) : nullptr;
}

std::shared_ptr<NSGraphicsContext> NSGraphicsContext::graphicsContextWithBitmapImageRep(
    const std::shared_ptr<NSBitmapImageRep>& bitmap) {
    return bitmap ? graphicsContextWithCGContext(bitmap->makeContext()) : nullptr;
}

std::shared_ptr<NSGraphicsContext> NSGraphicsContext::currentContext() { return contexts().current; }

void NSGraphicsContext::setCurrentContext(std::shared_ptr<NSGraphicsContext> context) {
    contexts().current = std::move(context);
}

void NSGraphicsContext::saveGraphicsState() {
    ThreadContexts& mine = contexts();
    if (mine.current) mine.current->context_->saveGState();
    mine.aside.push_back(mine.current);
}

void NSGraphicsContext::restoreGraphicsState() {
    ThreadContexts& mine = contexts();
    if (mine.aside.empty()) return;
    mine.current = std::move(mine.aside.back());
    mine.aside.pop_back();
    if (mine.current) mine.current->context_->restoreGState();
}

GraphicsContextScope::GraphicsContextScope(std::shared_ptr<CGContext> context) {
    NSGraphicsContext::saveGraphicsState();
    NSGraphicsContext::setCurrentContext(NSGraphicsContext::graphicsContextWithCGContext(std::move(context)));
}

void NSRectFill(const CGRect& rect) { NSRectFillUsingOperation(rect, NSCompositingOperation::copy); }

void NSRectFillUsingOperation(const CGRect& rect, NSCompositingOperation operation) {
    const auto current = NSGraphicsContext::currentContext();
    if (!current) return;
    CGContext& context = *current->cgContext();
    context.saveGState();
    context.setBlendMode(blendModeOf(operation));
    context.fill(rect);
    context.restoreGState();
}

CGBlendMode blendModeOf(NSCompositingOperation operation) noexcept {
    switch (operation) {
        case NSCompositingOperation::clear:
            return CGBlendMode::clear;
        case NSCompositingOperation::copy:
            return CGBlendMode::copy;
        case NSCompositingOperation::sourceIn:
            return CGBlendMode::sourceIn;
        case NSCompositingOperation::sourceOut:
            return CGBlendMode::sourceOut;
        case NSCompositingOperation::sourceAtop:
            return CGBlendMode::sourceAtop;
        case NSCompositingOperation::sourceOver:
            break;
    }
    return CGBlendMode::normal;
}

}  // namespace zqcore::platform
