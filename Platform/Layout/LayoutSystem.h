#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <unordered_map>
#include <vector>

#include "Platform/Base/CGGeometry.h"
#include "Platform/Layout/LayoutEngine.h"
#include "Platform/Layout/LayoutItem.h"
#include "Platform/Layout/LayoutSolver.h"
#include "Platform/Layout/NSLayoutConstraint.h"

// Private to the engine.
namespace zqcore::platform {

/// The equations of one tree. An item has four numbers in the space of its superitem; each is a variable if
/// the solver may decide it and something mentions it, else the constant that the frame has.
struct LayoutEngine::System {
    enum Component : std::size_t { left, top, width, height };

    struct Node {
        LayoutItem* item = nullptr;
        std::size_t parent = 0;
        CGRect frame;  // when the pass began
        std::array<LayoutSolver::Variable, 4> variables{-1, -1, -1, -1};
        std::array<std::optional<LayoutSolver::Constraint>, 4> stays;
        std::array<std::optional<LayoutSolver::Constraint>, 2> wishes;  // for the content's size
    };
    /// A share in the constant of an equation: a number of an item that the solver doesn't decide.
    struct Share {
        std::size_t node;
        Component component;
        double factor;
    };
    struct Equation {
        NSLayoutConstraint* constraint;
        LayoutSolver::Constraint handle;
        std::vector<Share> shares;
        double constant;
    };
    enum class Purpose { layout, fittingSize };

    /// A system for layout may take over what `part`, one for the fitting size of an item inside, has put
    /// together, provided that nothing but frames changed since.
    System(LayoutItem& root, Purpose purpose, std::set<std::uint64_t>& reported,
           std::unique_ptr<System> part = nullptr);

    /// Edits what changed since the last pass. False if the system has to be made anew.
    bool edit();
    /// Whether a constraint could not hold. Of a system that took over a part it may be another than the
    /// newest one, and nothing is told: it has to be made anew.
    [[nodiscard]] bool lacksSome() const noexcept { return dropped_; }
    /// Solves, and holds what is still free where it is.
    bool solve();
    [[nodiscard]] double valueOf(const Node& node, Component component) const;

    LayoutSolver solver;
    std::vector<Node> nodes;  // superitems first

  private:
    void addNode(LayoutItem& item, std::size_t parent);
    void takeOverPart(std::size_t parent);
    [[nodiscard]] bool isTakenOver(std::size_t node) const noexcept;
    void updateConstants();
    void addEquations(const std::vector<NSLayoutConstraint*>& constraints, bool required);
    void addContentSizes();
    void addContentLimit(Node& node, Component component, double size, NSLayoutPriority notAbove,
                         NSLayoutPriority notBelow);
    void addSide(const LayoutItem& item, NSLayoutAttribute attribute, const LayoutItem& holder,
                 double factor);
    LayoutSolver::Variable variableOf(Node& node, Component component);
    void addComponent(std::size_t node, Component component, double factor);
    [[nodiscard]] bool decides(const Node& node, Component component) const;
    [[nodiscard]] double constantOf(const Equation& equation) const;
    bool holdWhatIsFree();
    void report(const NSLayoutConstraint& dropped);

    Purpose purpose_;
    std::set<std::uint64_t>& reported_;
    std::unordered_map<const LayoutItem*, std::size_t> places_;
    std::vector<Equation> equations_;
    std::size_t heldAtRevision_ = 0;
    bool dropped_ = false;
    std::vector<LayoutSolver::Constraint> fittingWishes_;
    std::unique_ptr<System> part_;             // without its solver and nodes once they are taken over
    std::size_t partBegin_ = 0, partEnd_ = 0;  // its nodes among these
    std::vector<LayoutSolver::Term> terms_;    // of the equation being made
    std::vector<Share> shares_;
};

}  // namespace zqcore::platform
