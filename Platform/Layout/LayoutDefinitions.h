#pragma once

#include <cstddef>
#include <deque>
#include <vector>

#include "Platform/Layout/LayoutTableau.h"

// Private to the solver.
namespace zqcore::platform {

/// What the user's variables are made of. They may take any value, so the simplex needs no rows for them:
/// each has one definition by slacks, errors and variables further in front, which stays as it was written
/// while the tableau turns. A chain of a thousand views is a thousand short definitions; put into one another
/// they would be half a million terms.
class LayoutDefinitions final {
  public:
    using Row = LayoutTableau::Row;

    explicit LayoutDefinitions(const LayoutTableau& tableau) : tableau_(tableau) {}

    /// Takes "0 = expression" as the definition of a variable that neither has one nor stands in one; false
    /// if there is no such variable in it.
    bool adopt(const Row& expression);
    /// Puts definitions and the tableau's rows into an expression, until it speaks only of symbols that
    /// aren't basic and of variables without a definition.
    void resolve(Row& expression) const;
    /// Takes a resolved "0 = expression" as the definition of a variable in it; false if there is none.
    bool adoptResolved(const Row& expression);

    /// What the symbol stood for is the symbol less `by` from now on.
    void shift(int symbol, double by);
    /// Puts a row in the place of its basic symbol, which is about to go.
    void replace(const Row& row);
    /// The symbol is about to go and stands in no row: the first variable that it helps to define is without
    /// a definition from now on, and stands for it in the others.
    void surrender(int symbol);

    /// By symbol: the values of the tableau's present solution; 0 for what isn't basic or has no definition.
    [[nodiscard]] std::vector<double> values() const;
    /// By symbol: whether `moves`, a mark by symbol of those that aren't basic, moves it.
    [[nodiscard]] std::vector<bool> moved(const std::vector<bool>& moves) const;
    [[nodiscard]] bool isDefined(int symbol) const;
    /// Counts the definitions taken.
    [[nodiscard]] std::size_t changes() const noexcept { return changes_; }

  private:
    using Users = InlineVector<int, 4>;
    enum class End { front, back };
    void define(int variable, const Row& expression, End end);
    void note(const Row& definition);
    Row& at(int variable) { return order_[static_cast<std::size_t>(place_[std::size_t(variable)] - front_)]; }
    /// The variables in whose definitions a symbol stands, each once.
    Users& users(int symbol);
    /// Values along the order: those of symbols that aren't basic are given, rows and definitions follow.
    [[nodiscard]] std::vector<double> follow(std::vector<double> values, bool withConstants) const;

    const LayoutTableau& tableau_;
    std::deque<Row> order_;  // each speaks of variables in front of it; basic < 0: given up
    std::ptrdiff_t front_ = 0;
    std::vector<std::ptrdiff_t> place_;  // by symbol, `front_` being the foremost
    std::vector<bool> defined_;          // by symbol
    std::vector<Users> users_;           // by symbol; checked when read
    std::size_t changes_ = 0;
    mutable std::vector<double> amounts_;  // by symbol; all 0 between two calls of `resolve`
    // Room for `resolve`, empty between two calls.
    mutable std::vector<std::ptrdiff_t> toPut_;  // places of definitions, a heap
    mutable std::vector<int> basic_;
    mutable std::vector<int> met_;
};

}  // namespace zqcore::platform
