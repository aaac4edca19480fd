#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Platform/Layout/ConstraintMaker.h"
#include "Platform/Layout/LayoutEngine.h"
#include "Platform/Layout/LayoutItem.h"
#include "Platform/Layout/NSLayoutConstraint.h"

namespace zqcore::platform {

/// A view reduced to its layout. Its superitem doesn't own it.
class TestItem final : public LayoutItem {
  public:
    explicit TestItem(std::string name, CGRect frame = {}) : frame_(frame), name_(std::move(name)) {}
    ~TestItem() override {
        endLayout();
        if (above_) std::erase(above_->below_, this);
        for (TestItem* item : below_) item->above_ = nullptr;
    }

    void add(TestItem& item) {
        if (item.above_) item.remove();
        below_.push_back(&item);
        item.above_ = this;
        item.didJoinSuperitem();
    }
    void remove() {
        willLeaveSuperitem();
        std::erase(above_->below_, this);
        above_ = nullptr;
    }
    void setFrame(const CGRect& frame) {
        frame_ = frame;
        frameDidChangeOutsideLayout();
    }
    void setContentSize(CGSize size) {
        content_ = size;
        invalidateIntrinsicContentSize();
    }
    CGRect layout() {
        LayoutEngine::layout(*this);
        return frame_;
    }

    LayoutItem* layoutSuperitem() const override { return above_; }
    void forEachLayoutSubitem(const std::function<void(LayoutItem&)>& body) const override {
        for (TestItem* item : below_) body(*item);
    }
    CGRect layoutFrame() const override { return frame_; }
    void setLayoutFrame(const CGRect& frame) override {
        frame_ = frame;
        ++framesSet;
        frameDidChangeOutsideLayout();
    }
    CGSize intrinsicContentSize() const override { return content_; }
    std::string layoutDescription() const override { return name_; }

    int framesSet = 0;

  private:
    CGRect frame_;
    CGSize content_{-1, -1};
    std::string name_;
    TestItem* above_ = nullptr;
    std::vector<TestItem*> below_;
};

}  // namespace zqcore::platform
