#include "Platform/Layout/LayoutEngine.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "Platform/Layout/LayoutSystem.h"

namespace zqcore::platform {
namespace {

// Sums and halves are exact in doubles; what long elimination leaves behind the comma is not told.
double tidy(double value) {
    const double whole = std::round(value * 1024) / 1024;
    return std::abs(value - whole) < 1e-7 ? whole : value;
}

}  // namespace

LayoutEngine::LayoutEngine() = default;
LayoutEngine::~LayoutEngine() = default;

void LayoutEngine::layout(LayoutItem& item) {
    LayoutItem& root = item.layoutRoot();
    if (root.stale_ == LayoutItem::Stale::no) return;
    if (!root.engine_) root.engine_.reset(new LayoutEngine);
    LayoutEngine& engine = *root.engine_;
    if (engine.writing_) return;  // asked for by an item that is just getting its frame
    if (engine.update(root)) engine.writeFrames();
}

// Brings the system up to date: edited if that is enough, else made anew. False if it gives no answer.
bool LayoutEngine::update(LayoutItem& root) {
    const bool keeps = system_ && root.stale_ == LayoutItem::Stale::constants;
    root.stale_ = LayoutItem::Stale::no;
    auto fitted = std::exchange(fitted_, nullptr);
    if (keeps && system_->edit() && system_->solve()) return true;
    if (fitted) {
        // What was put together for the size of a part is the greater half of the whole.
        system_ = std::make_unique<System>(root, System::Purpose::layout, reported_, std::move(fitted));
        if (!system_->lacksSome() && system_->solve()) return true;
    }
    system_ = std::make_unique<System>(root, System::Purpose::layout, reported_);
    return system_->solve();
}

void LayoutEngine::writeFrames() {
    struct Written {
        std::shared_ptr<LayoutItem*> item;
        CGRect frame;
        bool isRoot;
    };
    // Setting a frame runs foreign code, which may change the tree and end this system.
    std::vector<Written> frames;
    for (const System::Node& node : system_->nodes) {
        if (node.item->translates_) continue;
        const bool isRoot = &node == &system_->nodes.front();
        frames.push_back(
            {node.item->self_,
             {{tidy(system_->valueOf(node, System::left)), tidy(system_->valueOf(node, System::top))},
              {tidy(system_->valueOf(node, System::width)), tidy(system_->valueOf(node, System::height))}},
             isRoot});
    }
    writing_ = true;
    for (const Written& written : frames) {
        LayoutItem* const item = *written.item;
        if (!item) continue;
        const CGRect present = item->layoutFrame();
        const CGRect frame = written.isRoot ? CGRect{present.origin, written.frame.size} : written.frame;
        if (frame != present) item->setLayoutFrame(frame);
    }
    writing_ = false;
}

CGSize LayoutEngine::fittingSize(LayoutItem& item) {
    LayoutItem& root = item.layoutRoot();
    std::set<std::uint64_t> reported;
    if (root.engine_) reported = root.engine_->reported_;
    auto system = std::make_unique<System>(item, System::Purpose::fittingSize, reported);
    if (!system->solve()) return {};
    const auto side = [&](System::Component component) {
        return std::max(0.0, tidy(system->valueOf(system->nodes.front(), component)));
    };
    const CGSize size{side(System::width), side(System::height)};
    // A layout is likely to follow.
    if (&item != &root && root.stale_ == LayoutItem::Stale::structure && !item.translates_ &&
        !system->lacksSome()) {
        if (!root.engine_) root.engine_.reset(new LayoutEngine);
        root.engine_->fitted_ = std::move(system);
    }
    return size;
}

void LayoutEngine::forgetFitted() noexcept { fitted_.reset(); }

}  // namespace zqcore::platform
