#include "Platform/Layout/LayoutDefinitions.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

namespace zqcore::platform {
namespace {

using Row = LayoutTableau::Row;
using Term = LayoutTableau::Term;
using Kind = LayoutTableau::Kind;

std::size_t index(int symbol) { return static_cast<std::size_t>(symbol); }

/// A number of no ratio to another symbol's, so that sums of several vanish only term by term.
double directionOf(int symbol) {
    std::uint64_t mixed = (static_cast<std::uint64_t>(symbol) + 1) * 0x9E3779B97F4A7C15U;
    mixed = (mixed ^ mixed >> 30) * 0xBF58476D1CE4E5B9U;
    mixed = (mixed ^ mixed >> 27) * 0x94D049BB133111EBU;
    return 1 + std::ldexp(static_cast<double>((mixed ^ mixed >> 31) >> 11), -53);
}

}  // namespace

bool LayoutDefinitions::isDefined(int symbol) const {
    return index(symbol) < defined_.size() && defined_[index(symbol)];
}

LayoutDefinitions::Users& LayoutDefinitions::users(int symbol) {
    Users& users = users_[index(symbol)];
    if (users.empty()) return users;
    std::ranges::sort(users);
    const auto twice = std::ranges::unique(users);
    users.erase(twice.begin(), twice.end());
    users.eraseIf(
        [&](int variable) { return !isDefined(variable) || at(variable).coefficientOf(symbol) == 0; });
    return users;
}

bool LayoutDefinitions::adopt(const Row& expression) {
    users_.resize(index(tableau_.symbolCount()));
    for (const Term& term : expression.terms) {
        if (tableau_.kind(term.symbol) != Kind::external || isDefined(term.symbol)) continue;
        if (!users(term.symbol).empty()) continue;
        define(term.symbol, expression, End::back);
        return true;
    }
    return false;
}

// Other definitions speak of the variable; in front of them all it may speak of what has no definition.
bool LayoutDefinitions::adoptResolved(const Row& expression) {
    const auto variable = std::ranges::find_if(
        expression.terms, [&](const Term& term) { return tableau_.kind(term.symbol) == Kind::external; });
    if (variable == expression.terms.end()) return false;
    define(variable->symbol, expression, End::front);
    return true;
}

void LayoutDefinitions::define(int variable, const Row& expression, End end) {
    ++changes_;
    Row definition = expression;
    definition.solveFor(variable);
    const std::size_t count = index(tableau_.symbolCount());
    users_.resize(count);
    place_.resize(count);
    defined_.resize(count);
    defined_[index(variable)] = true;
    note(definition);
    if (end == End::back) {
        place_[index(variable)] = front_ + std::ssize(order_);
        order_.push_back(std::move(definition));
    } else {
        place_[index(variable)] = --front_;
        order_.push_front(std::move(definition));
    }
}

void LayoutDefinitions::note(const Row& definition) {
    for (const Term& term : definition.terms) users_[index(term.symbol)].push_back(definition.basic);
}

void LayoutDefinitions::resolve(Row& expression) const {
    amounts_.resize(index(tableau_.symbolCount()));
    const auto add = [&](const Term& term, double factor) {
        double& amount = amounts_[index(term.symbol)];
        if (amount == 0) {
            if (isDefined(term.symbol)) {
                toPut_.push_back(place_[index(term.symbol)]);
                std::ranges::push_heap(toPut_);
            } else {
                (tableau_.rowOf(term.symbol) ? basic_ : met_).push_back(term.symbol);
            }
        }
        amount += factor * term.coefficient;
    };
    const auto put = [&](const Row& row) {
        const double amount = std::exchange(amounts_[index(row.basic)], 0);
        if (LayoutTableau::isZero(amount)) return;
        expression.constant += amount * row.constant;
        for (const Term& term : row.terms) add(term, amount);
    };
    for (const Term& term : expression.terms) add(term, 1);
    // The rearmost first: what several of its like have in common is gone before it is looked into.
    while (!toPut_.empty()) {
        std::ranges::pop_heap(toPut_);
        const std::ptrdiff_t rearmost = toPut_.back();
        toPut_.pop_back();
        put(order_[static_cast<std::size_t>(rearmost - front_)]);
    }
    for (const int symbol : basic_) put(*tableau_.rowOf(symbol));

    basic_.clear();
    expression.terms.clear();
    std::ranges::sort(met_);
    for (const int symbol : met_) {
        const double amount = std::exchange(amounts_[index(symbol)], 0);
        if (!LayoutTableau::isZero(amount)) expression.terms.push_back({symbol, amount});
    }
    met_.clear();
}

void LayoutDefinitions::shift(int symbol, double by) {
    if (index(symbol) >= users_.size()) return;
    for (const int variable : users(symbol)) at(variable).constant -= at(variable).coefficientOf(symbol) * by;
}

void LayoutDefinitions::replace(const Row& row) {
    if (index(row.basic) >= users_.size()) return;
    users_.resize(index(tableau_.symbolCount()));
    for (const int variable : std::exchange(users(row.basic), {})) {
        Row& definition = at(variable);
        const double factor = definition.coefficientOf(row.basic);
        definition.addTerm(row.basic, -factor);
        for (const Term& term : row.terms) definition.addTerm(term.symbol, factor * term.coefficient);
        definition.constant += factor * row.constant;
        note(definition);
    }
}

void LayoutDefinitions::surrender(int symbol) {
    if (index(symbol) >= users_.size() || users(symbol).empty()) return;
    const int first =
        *std::ranges::min_element(users(symbol), {}, [&](int user) { return place_[index(user)]; });
    Row row = std::exchange(at(first), {});
    defined_[index(first)] = false;
    // 0 = row - first, to be solved for the symbol.
    row.addTerm(first, -1);
    row.solveFor(symbol);
    replace(row);
}

std::vector<double> LayoutDefinitions::follow(std::vector<double> values, bool withConstants) const {
    const auto sum = [&](const Row& row) {
        double value = withConstants ? row.constant : 0;
        for (const Term& term : row.terms) value += term.coefficient * values[index(term.symbol)];
        values[index(row.basic)] = value;
    };
    tableau_.forEachRow(sum);
    for (const Row& definition : order_) {
        if (definition.basic >= 0) sum(definition);
    }
    return values;
}

std::vector<double> LayoutDefinitions::values() const {
    return follow(std::vector<double>(index(tableau_.symbolCount())), true);
}

std::vector<bool> LayoutDefinitions::moved(const std::vector<bool>& moves) const {
    std::vector<double> amounts(moves.size());
    for (std::size_t symbol = 0; symbol < moves.size(); ++symbol)
        if (moves[symbol]) amounts[symbol] = directionOf(static_cast<int>(symbol));
    amounts = follow(std::move(amounts), false);
    std::vector<bool> moved;
    moved.reserve(amounts.size());
    for (const double amount : amounts) moved.push_back(!LayoutTableau::isZero(amount));
    return moved;
}

}  // namespace zqcore::platform
