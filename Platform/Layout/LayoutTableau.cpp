#include "Platform/Layout/LayoutTableau.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace zqcore::platform {
namespace {

std::size_t at(int symbol) { return static_cast<std::size_t>(symbol); }

}  // namespace

double LayoutTableau::Row::coefficientOf(int symbol) const {
    const auto place = std::ranges::lower_bound(terms, symbol, {}, &Term::symbol);
    return place != terms.end() && place->symbol == symbol ? place->coefficient : 0;
}

void LayoutTableau::Row::addTerm(int symbol, double amount) {
    const auto place = std::ranges::lower_bound(terms, symbol, {}, &Term::symbol);
    if (place == terms.end() || place->symbol != symbol) {
        if (!isZero(amount)) terms.insert(place, {symbol, amount});
    } else if (place->coefficient += amount; isZero(place->coefficient)) {
        terms.erase(place);
    }
}

void LayoutTableau::Row::solveFor(int symbol) {
    const double coefficient = coefficientOf(symbol);
    terms.eraseIf([symbol](const Term& term) { return term.symbol == symbol; });
    constant /= -coefficient;
    for (Term& term : terms) term.coefficient /= -coefficient;
    basic = symbol;
}

int LayoutTableau::addSymbol(Kind kind) {
    if (!freeSymbols_.empty()) {
        const int symbol = freeSymbols_.back();
        freeSymbols_.pop_back();
        kinds_[at(symbol)] = kind;
        return symbol;
    }
    kinds_.push_back(kind);
    rowOf_.push_back(-1);
    columns_.emplace_back();
    for (Level& level : levels_) level.cost.push_back(0);
    return symbolCount() - 1;
}

void LayoutTableau::removeSymbol(int symbol) {
    kinds_[at(symbol)] = Kind::none;
    columns_[at(symbol)].clear();
    for (Level& level : levels_) level.cost[at(symbol)] = 0;
    freeSymbols_.push_back(symbol);
}

const LayoutTableau::Row* LayoutTableau::rowOf(int symbol) const {
    const int index = rowOf_[at(symbol)];
    return index < 0 ? nullptr : &rows_[at(index)];
}

void LayoutTableau::shiftConstant(int basic, double by) { rows_[at(rowOf_[at(basic)])].constant += by; }

// row += factor * other; both are sorted, so is the result.
void LayoutTableau::addScaled(Row& row, const Row& other, double factor) {
    auto& scratch = scratch_;
    row.constant += factor * other.constant;
    scratch.clear();
    gained_.clear();
    auto mine = row.terms.begin();
    auto theirs = other.terms.begin();
    while (mine != row.terms.end() && theirs != other.terms.end()) {
        if (mine->symbol < theirs->symbol) {
            scratch.push_back(*mine++);
        } else if (theirs->symbol < mine->symbol) {
            gained_.push_back(theirs->symbol);
            scratch.push_back({theirs->symbol, factor * theirs->coefficient});
            ++theirs;
        } else {
            const double sum = mine->coefficient + factor * theirs->coefficient;
            if (!isZero(sum)) scratch.push_back({mine->symbol, sum});
            ++mine;
            ++theirs;
        }
    }
    scratch.append(mine, row.terms.end());
    for (; theirs != other.terms.end(); ++theirs) {
        gained_.push_back(theirs->symbol);
        scratch.push_back({theirs->symbol, factor * theirs->coefficient});
    }
    std::swap(row.terms, scratch);
}

void LayoutTableau::place(Row row) {
    std::size_t index = rows_.size();
    if (freeRows_.empty()) {
        rows_.emplace_back();
        visited_.push_back(0);
    } else {
        index = freeRows_.back();
        freeRows_.pop_back();
    }
    rowOf_[at(row.basic)] = static_cast<int>(index);
    for (const Term& term : row.terms) columns_[at(term.symbol)].push_back(static_cast<int>(index));
    rows_[index] = std::move(row);
}

void LayoutTableau::insert(Row expression, int subject) {
    expression.solveFor(subject);
    ++changes_;
    substitute(subject, expression);
    place(std::move(expression));
}

void LayoutTableau::erase(int basic) {
    const std::size_t index = at(rowOf_[at(basic)]);
    rowOf_[at(basic)] = -1;
    rows_[index].basic = -1;
    rows_[index].terms.clear();
    freeRows_.push_back(index);
}

// Replaces a symbol that is about to be basic by its row, in all other rows and in the costs.
void LayoutTableau::substitute(int symbol, const Row& by) {
    const auto column = std::exchange(columns_[at(symbol)], {});
    for (const int index : column) {
        Row& row = rows_[at(index)];
        const double factor = row.basic < 0 ? 0 : row.coefficientOf(symbol);
        if (factor == 0) continue;
        row.terms.eraseIf([symbol](const Term& term) { return term.symbol == symbol; });
        addScaled(row, by, factor);
        for (const int gained : gained_) columns_[at(gained)].push_back(index);
    }
    for (Level& level : levels_) {
        const double factor = std::exchange(level.cost[at(symbol)], 0);
        if (factor == 0) continue;
        for (const Term& term : by.terms) {
            double& cost = level.cost[at(term.symbol)];
            cost += factor * term.coefficient;
            if (isZero(cost)) cost = 0;
        }
    }
}

void LayoutTableau::pivot(int leaving, int entering) {
    Row row = std::move(rows_[at(rowOf_[at(leaving)])]);
    erase(leaving);
    // 0 = row - leaving, to be solved for the entering symbol.
    row.addTerm(leaving, -1);
    insert(std::move(row), entering);
}

void LayoutTableau::strike(int symbol) {
    for (const int index : columns_[at(symbol)]) {
        rows_[at(index)].terms.eraseIf([symbol](const Term& term) { return term.symbol == symbol; });
    }
    columns_[at(symbol)].clear();
}

void LayoutTableau::addCost(int symbol, double priority, double amount) {
    auto level = std::lower_bound(levels_.begin(), levels_.end(), priority,
                                  [](const Level& one, double wanted) { return one.priority > wanted; });
    if (level == levels_.end() || level->priority != priority) {
        level = levels_.insert(level, Level{priority, std::vector<double>(kinds_.size(), 0.0)});
    }
    const auto add = [&](int to, double much) {
        double& cost = level->cost[at(to)];
        cost += much;
        if (isZero(cost)) cost = 0;
    };
    if (const Row* row = rowOf(symbol)) {
        for (const Term& term : row->terms) add(term.symbol, amount * term.coefficient);
    } else {
        add(symbol, amount);
    }
}

bool LayoutTableau::costsNothing(int symbol) const {
    return std::all_of(levels_.begin(), levels_.end(),
                       [symbol](const Level& level) { return level.cost[at(symbol)] == 0; });
}

bool LayoutTableau::isCheaper(int a, double perA, int b, double perB) const {
    for (const Level& level : levels_) {
        const double costA = level.cost[at(a)] / perA;
        const double costB = level.cost[at(b)] / perB;
        if (!isZero(costA - costB)) return costA < costB;
    }
    return a < b;
}

int LayoutTableau::firstToLeave(int entering) {
    int leaving = kNone;
    double least = std::numeric_limits<double>::infinity();
    forEachRowWith(entering, [&](const Row& row, double coefficient) {
        if (coefficient >= 0) return;
        const double room = -row.constant / coefficient;
        if (room < least - kEpsilon || (room < least + kEpsilon && row.basic < leaving)) {
            least = std::min(room, least);
            leaving = row.basic;
        }
    });
    return leaving;
}

}  // namespace zqcore::platform
