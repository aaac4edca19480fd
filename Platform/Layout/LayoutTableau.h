#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "Platform/Layout/InlineVector.h"

// Private to the solver.
namespace zqcore::platform {

/// The simplex tableau: each row gives one basic symbol by the others, and a cost vector with one number a
/// priority level says what raising a symbol that isn't basic would cost. Symbols are small numbers.
class LayoutTableau final {
  public:
    enum class Kind : std::uint8_t {
        none,
        external,  // a variable of the user's; any value, and in no row (LayoutDefinitions)
        slack,     // the room in an inequality; not negative
        error,     // what a wish misses; not negative, has a cost
        dummy,     // marks a required equation; always 0, never becomes basic by choice
    };
    struct Term {
        int symbol;
        double coefficient;
    };
    /// basic = constant + sum of terms, sorted by symbol.
    struct Row {
        int basic = -1;
        double constant = 0;
        InlineVector<Term, 4> terms;

        [[nodiscard]] double coefficientOf(int symbol) const;
        void addTerm(int symbol, double coefficient);
        /// Turns "0 = constant + terms" into "symbol = constant + terms".
        void solveFor(int symbol);
    };
    struct Level {
        double priority;
        std::vector<double> cost;  // by symbol
    };

    static constexpr int kNone = -1;
    static constexpr double kEpsilon = 1e-9;
    [[nodiscard]] static bool isZero(double value) noexcept { return value < kEpsilon && value > -kEpsilon; }

    int addSymbol(Kind kind);
    void removeSymbol(int symbol);
    [[nodiscard]] int symbolCount() const noexcept { return static_cast<int>(kinds_.size()); }
    [[nodiscard]] Kind kind(int symbol) const { return kinds_[static_cast<std::size_t>(symbol)]; }
    [[nodiscard]] bool mayEnter(int symbol) const {
        return kind(symbol) == Kind::slack || kind(symbol) == Kind::error;
    }

    /// The row of a basic symbol, or null.
    [[nodiscard]] const Row* rowOf(int symbol) const;
    /// Changes the constant of a basic symbol's row.
    void shiftConstant(int basic, double by);
    /// Calls `body(row, coefficient)` for each row that has `symbol` in it; body mustn't change terms.
    template <class Body>
    void forEachRowWith(int symbol, const Body& body);
    template <class Body>
    void forEachRow(const Body& body) const {
        for (const Row& row : rows_)
            if (row.basic >= 0) body(row);
    }

    /// Turns "0 = expression" into a row for `subject`, puts it in and replaces the subject everywhere.
    void insert(Row expression, int subject);
    /// Takes a basic symbol's row out.
    void erase(int basic);
    /// Makes `entering` basic instead of `leaving`.
    void pivot(int leaving, int entering);
    /// Strikes a symbol that is 0 and not basic from all rows.
    void strike(int symbol);

    /// Counts the rows put in.
    [[nodiscard]] std::size_t changes() const noexcept { return changes_; }
    [[nodiscard]] const std::vector<Level>& levels() const noexcept { return levels_; }
    /// Adds a cost for each unit of `symbol`; negative takes it away again.
    void addCost(int symbol, double priority, double amount);
    /// Whether raising the symbol costs nothing on any level.
    [[nodiscard]] bool costsNothing(int symbol) const;
    /// Compares what two symbols cost per unit of help, strongest level first; the lower number wins a tie.
    [[nodiscard]] bool isCheaper(int a, double perA, int b, double perB) const;
    /// The basic symbol that reaches 0 first when `entering` grows; none if nothing stops it. The lowest
    /// number wins a tie.
    [[nodiscard]] int firstToLeave(int entering);

  private:
    void addScaled(Row& row, const Row& other, double factor);
    void substitute(int symbol, const Row& by);
    void place(Row row);

    std::vector<Kind> kinds_;
    std::vector<int> freeSymbols_;
    std::vector<Row> rows_;  // basic < 0: an empty place
    std::vector<std::size_t> freeRows_;
    std::vector<int> rowOf_;                     // by symbol; -1 for none
    std::vector<InlineVector<int, 4>> columns_;  // by symbol: rows that have had it; checked when read
    std::vector<Level> levels_;                  // strongest first
    std::vector<unsigned> visited_;              // by row: the walk that came by last
    unsigned walk_ = 0;
    std::size_t changes_ = 0;
    InlineVector<Term, 4> scratch_;
    std::vector<int> gained_;  // symbols that the last `addScaled` brought into its row
};

template <class Body>
void LayoutTableau::forEachRowWith(int symbol, const Body& body) {
    auto& column = columns_[static_cast<std::size_t>(symbol)];
    std::size_t kept = 0;
    ++walk_;
    for (const int index : column) {
        Row& row = rows_[static_cast<std::size_t>(index)];
        const double coefficient = row.basic < 0 ? 0 : row.coefficientOf(symbol);
        // A symbol that left a row and came back is listed twice.
        if (coefficient == 0 || std::exchange(visited_[static_cast<std::size_t>(index)], walk_) == walk_)
            continue;
        column[kept++] = index;
        body(row, coefficient);
    }
    column.shrinkTo(kept);
}

}  // namespace zqcore::platform
