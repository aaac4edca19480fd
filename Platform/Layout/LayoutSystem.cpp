#include "Platform/Layout/LayoutSystem.h"

#include <algorithm>

#include "Platform/Base/NSLog.h"

namespace zqcore::platform {
namespace {

constexpr std::size_t kRoot = 0;

}  // namespace

LayoutEngine::System::System(LayoutItem& root, Purpose purpose, std::set<std::uint64_t>& reported,
                             std::unique_ptr<System> part)
    : purpose_(purpose), reported_(reported), part_(std::move(part)) {
    addNode(root, kRoot);
    updateConstants();
    std::vector<NSLayoutConstraint*> constraints;
    for (std::size_t place = 0; place < nodes.size(); ++place) {
        if (isTakenOver(place)) continue;
        for (const auto& [age, constraint] : nodes[place].item->held_)
            constraints.push_back(constraint.get());
    }
    std::sort(constraints.begin(), constraints.end(),
              [](const auto* a, const auto* b) { return a->age_ < b->age_; });
    // Sizes first: what follows then speaks of few symbols, not of every size before it.
    addContentSizes();
    addEquations(constraints, true);
    addEquations(constraints, false);
    if (purpose_ == Purpose::fittingSize) {
        for (const Component component : {width, height}) {
            fittingWishes_.push_back(solver.addWish(variableOf(nodes[kRoot], component), 0,
                                                    NSLayoutPriorityFittingSizeCompression,
                                                    NSLayoutPriorityFittingSizeCompression));
        }
    }
}

void LayoutEngine::System::addNode(LayoutItem& item, std::size_t parent) {
    if (part_ && !part_->nodes.empty() && part_->nodes.front().item == &item) return takeOverPart(parent);
    const std::size_t place = nodes.size();
    places_.emplace(&item, place);
    Node node;
    node.item = &item;
    node.parent = parent;
    node.frame = item.layoutFrame();
    nodes.push_back(node);
    item.forEachLayoutSubitem([&](LayoutItem& subitem) { addNode(subitem, place); });
}

// Its nodes come in the order in which they would be added here, and nothing is in the solver yet.
void LayoutEngine::System::takeOverPart(std::size_t parent) {
    solver = std::move(part_->solver);
    for (const LayoutSolver::Constraint wish : part_->fittingWishes_) solver.removeConstraint(wish);
    partBegin_ = nodes.size();
    for (Node& node : part_->nodes) {
        places_.emplace(node.item, nodes.size());
        node.parent = nodes.size() == partBegin_ ? parent : node.parent + partBegin_;
        node.frame = node.item->layoutFrame();
        nodes.push_back(node);
    }
    partEnd_ = nodes.size();
    for (Equation& equation : part_->equations_) {
        for (Share& share : equation.shares) share.node += partBegin_;
        equations_.push_back(std::move(equation));
    }
    part_->nodes.clear();
}

bool LayoutEngine::System::isTakenOver(std::size_t node) const noexcept {
    return node >= partBegin_ && node < partEnd_;
}

bool LayoutEngine::System::decides(const Node& node, Component component) const {
    if (node.item != nodes[kRoot].item) return !node.item->translates_;
    const bool isSize = component == width || component == height;
    return isSize && (purpose_ == Purpose::fittingSize || !node.item->translates_);
}

LayoutSolver::Variable LayoutEngine::System::variableOf(Node& node, Component component) {
    if (node.variables[component] < 0) node.variables[component] = solver.addVariable();
    return node.variables[component];
}

// Adds one number of an item to the equation being made.
void LayoutEngine::System::addComponent(std::size_t place, Component component, double factor) {
    Node& node = nodes[place];
    if (!decides(node, component)) {
        shares_.push_back({place, component, factor});
        return;
    }
    const LayoutSolver::Variable variable = variableOf(node, component);
    const auto same = std::find_if(terms_.begin(), terms_.end(),
                                   [variable](const auto& term) { return term.variable == variable; });
    if (same == terms_.end()) {
        terms_.push_back({variable, factor});
    } else {
        same->coefficient += factor;
    }
}

// Adds an attribute as it is seen from the interior of `holder`, whose own edges are at 0.
void LayoutEngine::System::addSide(const LayoutItem& item, NSLayoutAttribute attribute,
                                   const LayoutItem& holder, double factor) {
    const std::size_t place = places_.at(&item);
    const bool horizontal = isHorizontal(attribute);
    const Component size = horizontal ? width : height;
    switch (attribute) {
        case NSLayoutAttribute::width:
        case NSLayoutAttribute::height:
            addComponent(place, size, factor);
            return;
        case NSLayoutAttribute::right:
        case NSLayoutAttribute::bottom:
            addComponent(place, size, factor);
            break;
        case NSLayoutAttribute::centerX:
        case NSLayoutAttribute::centerY:
            addComponent(place, size, factor / 2);
            break;
        default:
            break;
    }
    for (std::size_t at = place; nodes[at].item != &holder; at = nodes[at].parent) {
        addComponent(at, horizontal ? left : top, factor);
    }
}

void LayoutEngine::System::addEquations(const std::vector<NSLayoutConstraint*>& constraints, bool required) {
    for (NSLayoutConstraint* const constraint : constraints) {
        if ((constraint->priority_ >= NSLayoutPriorityRequired) != required) continue;
        terms_.clear();
        shares_.clear();
        const LayoutItem& holder = *constraint->holder_;
        addSide(*constraint->firstItem(), constraint->firstAttribute_, holder, 1);
        if (const LayoutItem* second = constraint->secondItem()) {
            addSide(*second, constraint->secondAttribute_, holder, -1);
        }
        Equation equation{constraint, 0, shares_, 0};
        equation.constant = constantOf(equation);
        const auto handle =
            solver.addConstraint(terms_, static_cast<LayoutSolver::Relation>(constraint->relation_),
                                 equation.constant, constraint->priority_);
        if (!handle) {
            dropped_ = true;
            if (part_) return;
            report(*constraint);
            continue;
        }
        equation.handle = *handle;
        equations_.push_back(std::move(equation));
    }
}

double LayoutEngine::System::constantOf(const Equation& equation) const {
    double constant = equation.constraint->constant_;
    for (const Share& share : equation.shares) {
        const CGRect& frame = nodes[share.node].frame;
        const double values[] = {frame.origin.x, frame.origin.y, frame.size.width, frame.size.height};
        constant -= share.factor * values[share.component];
    }
    return constant;
}

void LayoutEngine::System::report(const NSLayoutConstraint& dropped) {
    if (!reported_.insert(dropped.age_).second) return;
    NSLog("Unable to satisfy all required constraints; dropped the newest: " + dropped.description());
}

void LayoutEngine::System::addContentSizes() {
    for (std::size_t place = 0; place < nodes.size(); ++place) {
        Node& node = nodes[place];
        if (isTakenOver(place) || !decides(node, width)) continue;
        LayoutItem& item = *node.item;
        const CGSize size = item.contentSize();
        const std::array<double, 2> sizes{size.width, size.height};
        for (const std::size_t axis : {0U, 1U}) {
            if (!(sizes[axis] >= 0)) continue;
            const Component component = axis == 0 ? width : height;
            addContentLimit(node, component, sizes[axis], item.hugging_[axis], item.resistance_[axis]);
        }
    }
}

// A wish in both directions is one equation whose errors have a priority each.
void LayoutEngine::System::addContentLimit(Node& node, Component component, double size,
                                           NSLayoutPriority notAbove, NSLayoutPriority notBelow) {
    auto& wish = node.wishes[component == width ? 0 : 1];
    // Required ones are followed, unless older constraints stand against them, and just miss them.
    constexpr double kNearlyRequired = 999.999;
    wish = solver.addWish(variableOf(node, component), size, std::min(notAbove, kNearlyRequired),
                          std::min(notBelow, kNearlyRequired));
}

bool LayoutEngine::System::edit() {
    for (Node& node : nodes) {
        node.frame = node.item->layoutFrame();
        const double values[] = {node.frame.origin.x, node.frame.origin.y, node.frame.size.width,
                                 node.frame.size.height};
        for (const Component component : {left, top, width, height}) {
            if (node.stays[component]) solver.setConstant(*node.stays[component], values[component]);
        }
        if (!decides(node, width)) continue;
        const CGSize size = node.item->contentSize();
        const std::array<double, 2> sizes{size.width, size.height};
        for (const std::size_t axis : {0U, 1U}) {
            // A side that came or went is another system.
            if ((sizes[axis] >= 0) != node.wishes[axis].has_value()) return false;
            if (node.wishes[axis]) solver.setConstant(*node.wishes[axis], sizes[axis]);
        }
    }
    updateConstants();
    return !dropped_;  // what was dropped may hold now
}

void LayoutEngine::System::updateConstants() {
    for (Equation& equation : equations_) {
        const double constant = constantOf(equation);
        if (constant == equation.constant) continue;
        equation.constant = constant;
        solver.setConstant(equation.handle, constant);
    }
}

bool LayoutEngine::System::solve() {
    if (!solver.solve()) return false;
    if (purpose_ == Purpose::fittingSize || solver.revision() == heldAtRevision_) return true;
    const bool solved = !holdWhatIsFree() || solver.solve();
    heldAtRevision_ = solver.revision();
    return solved;
}

// Sizes first: where either could give way a view rather moves than changes its size.
bool LayoutEngine::System::holdWhatIsFree() {
    std::vector<bool> free = solver.freeVariables();
    bool held = false;
    for (const Component component : {width, height, left, top}) {
        for (Node& node : nodes) {
            const LayoutSolver::Variable variable = node.variables[component];
            if (variable < 0 || node.stays[component] || !free[static_cast<std::size_t>(variable)]) continue;
            if (!solver.isFree(variable)) {
                // One that was held before holds it, and maybe others.
                free = solver.freeVariables();
                continue;
            }
            const double values[] = {node.frame.origin.x, node.frame.origin.y, node.frame.size.width,
                                     node.frame.size.height};
            const LayoutSolver::Term term{variable, 1};
            node.stays[component] = solver.addConstraint({&term, 1}, LayoutSolver::Relation::equal,
                                                         values[component], LayoutSolver::kStay);
            held = true;
        }
    }
    return held;
}

double LayoutEngine::System::valueOf(const Node& node, Component component) const {
    if (node.variables[component] >= 0) return solver.value(node.variables[component]);
    const double values[] = {node.frame.origin.x, node.frame.origin.y, node.frame.size.width,
                             node.frame.size.height};
    return values[component];
}

}  // namespace zqcore::platform
