#include "Platform/QuartzCore/CATransaction.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <string>
#include <vector>

#include "Platform/Base/NSLog.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/QuartzCore/CAMediaTimingFunction.h"

namespace zqcore::platform {
namespace {

constexpr double kDefaultDuration = 0.25;
constexpr double kLongest = 1e9;  // seconds; keeps the sum of nanoseconds in range

struct Level {
    std::optional<double> duration;
    std::optional<std::shared_ptr<CAMediaTimingFunction>> timing;
    std::optional<bool> disableActions;
    std::move_only_function<void()> completion;
};

struct Transactions {
    Level outside;  // set outside of any transaction, until the main queue turns
    bool outsideEnds = false;
    std::vector<Level> open;
};

// Never destroyed: blocks that end late may still read it.
Transactions& transactions() {
    static auto* const all = new Transactions;
    return *all;
}

Level& innermost() {
    Transactions& all = transactions();
    if (!all.open.empty()) return all.open.back();
    if (!all.outsideEnds) {
        all.outsideEnds = true;
        DispatchQueue::main()->async([] {
            transactions().outside = {};
            transactions().outsideEnds = false;
        });
    }
    return all.outside;
}

template <class T>
std::optional<T> nearest(std::optional<T> Level::*setting) {
    Transactions& all = transactions();
    for (auto level = all.open.rbegin(); level != all.open.rend(); ++level) {
        if ((*level).*setting) return (*level).*setting;
    }
    return all.outside.*setting;
}

// The main queue lets no exception pass.
void runCompletion(std::move_only_function<void()>& block) {
    try {
        block();
    } catch (const std::exception& error) {
        NSLog(std::string("animation completion threw: ") + error.what());
    } catch (...) {
        NSLog("animation completion threw what is no exception");
    }
}

}  // namespace

void CATransaction::begin() { transactions().open.emplace_back(); }

void CATransaction::commit() {
    auto& open = transactions().open;
    if (open.empty()) return;
    if (open.back().completion) scheduleCompletion(animationDuration(), std::move(open.back().completion));
    open.pop_back();
}

double CATransaction::animationDuration() { return nearest(&Level::duration).value_or(kDefaultDuration); }

void CATransaction::setAnimationDuration(double seconds) { innermost().duration = seconds > 0 ? seconds : 0; }

std::shared_ptr<CAMediaTimingFunction> CATransaction::animationTimingFunction() {
    return nearest(&Level::timing).value_or(nullptr);
}

void CATransaction::setAnimationTimingFunction(std::shared_ptr<CAMediaTimingFunction> function) {
    innermost().timing = std::move(function);
}

bool CATransaction::disableActions() { return nearest(&Level::disableActions).value_or(false); }

void CATransaction::setDisableActions(bool disable) { innermost().disableActions = disable; }

void CATransaction::setCompletionBlock(std::move_only_function<void()> block) {
    if (transactions().open.empty()) {
        if (block) scheduleCompletion(animationDuration(), std::move(block));
        return;
    }
    transactions().open.back().completion = std::move(block);
}

std::optional<CAAnimationTerms> CATransaction::animationTerms() {
    const double duration = animationDuration();
    if (disableActions() || duration <= 0) return std::nullopt;
    return CAAnimationTerms{duration, animationTimingFunction()};
}

void CATransaction::scheduleCompletion(double seconds, std::move_only_function<void()> block) {
    if (!block) return;
    auto run = [block = std::move(block)]() mutable { runCompletion(block); };
    if (!(seconds > 0)) {
        DispatchQueue::main()->async(std::move(run));
        return;
    }
    const std::chrono::duration<double> delay(std::min(seconds, kLongest));
    DispatchQueue::main()->after(DispatchTime::now(std::chrono::duration_cast<Clock::Duration>(delay)),
                                 std::move(run));
}

}  // namespace zqcore::platform
