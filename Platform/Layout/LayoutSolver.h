#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "Platform/Base/Export.h"

namespace zqcore::platform {

/// Solves linear equations and inequalities whose wishes are ordered by priority, and keeps the solution
/// while constants change: an incremental simplex (Badros, Borning, Stuckey: The Cassowary Linear Arithmetic
/// Constraint Solving Algorithm, 2001). Every priority is a level of its own: the sum of what is missed on a
/// level decides before anything on a lower one, and no number of lower wishes outweighs a higher one.
/// The same calls in the same order give the same answer.
/// Threads: one at a time. Failure: a required constraint that contradicts the earlier ones is refused; a
/// constant that is no number counts as 0, and one beyond 1e9 as that.
class ZQ_EXPORT LayoutSolver final {
  public:
    using Variable = int;
    using Constraint = std::size_t;
    struct Term {
        Variable variable = 0;
        double coefficient = 1;
    };
    enum class Relation { lessThanOrEqual = -1, equal = 0, greaterThanOrEqual = 1 };

    static constexpr double kRequired = 1000;
    /// Below all wishes: for values that are to stay as they are.
    static constexpr double kStay = -1;

    LayoutSolver();
    ~LayoutSolver();
    LayoutSolver(LayoutSolver&&) noexcept;
    LayoutSolver& operator=(LayoutSolver&&) noexcept;

    /// A new variable. It may take any value.
    [[nodiscard]] Variable addVariable();

    /// Adds "sum of terms, relation, constant". Required from priority 1000 on; none if it then can't hold.
    std::optional<Constraint> addConstraint(std::span<const Term> terms, Relation relation, double constant,
                                            double priority = kRequired);
    /// Adds "variable = constant" as two wishes: not above it by the one priority, not below it by the other;
    /// both are under 1000.
    Constraint addWish(Variable variable, double constant, double notAbove, double notBelow);
    void removeConstraint(Constraint constraint);
    void setConstant(Constraint constraint, double constant);

    /// Brings the values up to date. False if required constraints contradict each other since a constant was
    /// set; the values are then of no use, and the solver has to be made anew.
    [[nodiscard]] bool solve();
    /// The value as of the last `solve`.
    [[nodiscard]] double value(Variable variable) const;
    /// Whether the constraints leave the variable no other value that is as good; true also for some that are
    /// fixed by a limit they just touch.
    [[nodiscard]] bool isFree(Variable variable) const;
    /// `isFree` of every variable, by number, for little more than the price of one.
    [[nodiscard]] std::vector<bool> freeVariables() const;
    /// Grows whenever the answers of `isFree` may have changed.
    [[nodiscard]] std::size_t revision() const noexcept;

  private:
    struct Machine;
    std::unique_ptr<Machine> machine_;
};

}  // namespace zqcore::platform
