#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "Classes/UI/TipManager/TipInfo.h"
#include "Platform/AppKit/NSTrackingArea.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/Base/Export.h"

namespace zqcore {

/// A view that carries a tip: it asks for it when the pointer enters and gives it up when the pointer leaves.
/// Threads: main thread. Lifetime: part of its view. Failure: without a tip nothing shows.
class ZQ_EXPORT Tipable {
  public:
    using FetchTipInfo = std::function<std::shared_ptr<TipInfo>()>;

    virtual ~Tipable() = default;

    [[nodiscard]] const std::shared_ptr<TipInfo>& tipInfo() const noexcept { return tipInfo_; }
    void setTipInfo(std::shared_ptr<TipInfo> tipInfo) { tipInfo_ = std::move(tipInfo); }
    /// Called for the tip while `tipInfo` is null, so that it can be made at the last moment.
    [[nodiscard]] const FetchTipInfo& fetchTipInfo() const noexcept { return fetchTipInfo_; }
    void setFetchTipInfo(FetchTipInfo fetchTipInfo) { fetchTipInfo_ = std::move(fetchTipInfo); }
    /// How the pointer is watched; absent: entered and exited, active always.
    [[nodiscard]] virtual std::optional<NSTrackingAreaOptions> trackOptionsForTip() const {
        return std::nullopt;
    }

    /// Whether this view has asked for its tip and not given it up. `TipManager` may have closed the tip
    /// meanwhile, or may still be waiting.
    [[nodiscard]] bool isTipShowing() const noexcept { return isTipShowing_; }
    void setIsTipShowing(bool isTipShowing) noexcept { isTipShowing_ = isTipShowing; }
    /// Asks for the tip, or gives it up; without a tip to show it is given up too.
    void updateTip(bool isShow);

  protected:
    /// The view that this is part of.
    [[nodiscard]] virtual std::shared_ptr<NSView> viewForTip() = 0;
    /// Gives the tip up if this view has asked for it.
    void closeTip();
    void updateTrackingAreaForTip();

  private:
    std::shared_ptr<TipInfo> tipInfo_;
    FetchTipInfo fetchTipInfo_;
    bool isTipShowing_ = false;
};

/// Puts `Tipable` on a class of views.
template <class Base>
class TipableOver : public Base, public Tipable {
  public:
    using Base::Base;

    void updateTrackingAreas() override {
        updateTrackingAreaForTip();
        Base::updateTrackingAreas();
    }
    // The base classes would pass these on to what lies behind.
    void mouseEntered(const NSEvent&) override { updateTip(true); }
    void mouseExited(const NSEvent&) override { closeTip(); }

  protected:
    std::shared_ptr<NSView> viewForTip() override {
        return std::static_pointer_cast<NSView>(this->shared_from_this());
    }
};

}  // namespace zqcore
