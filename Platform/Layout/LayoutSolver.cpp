#include "Platform/Layout/LayoutSolver.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "Platform/Layout/LayoutDefinitions.h"
#include "Platform/Layout/LayoutTableau.h"

namespace zqcore::platform {
namespace {

using Kind = LayoutTableau::Kind;
using Row = LayoutTableau::Row;

constexpr double kEpsilon = LayoutTableau::kEpsilon;
constexpr double kContradiction = 1e-6;  // points
constexpr int kNone = LayoutTableau::kNone;

/// What is no number, or beyond all screens, would spoil every sum that it enters.
double sane(double constant) {
    constexpr double kFar = 1e9;
    return std::isnan(constant) ? 0 : std::clamp(constant, -kFar, kFar);
}

/// What one constraint put into the tableau. `sign` is the marker's factor in "terms + ... = constant".
struct Entry {
    int marker = kNone;
    int other = kNone;
    double sign = 1;
    double constant = 0;
    double markerPriority = LayoutSolver::kRequired;
    double otherPriority = LayoutSolver::kRequired;
};

}  // namespace

struct LayoutSolver::Machine {
    LayoutTableau tableau;
    LayoutDefinitions definitions{tableau};
    std::vector<double> values;  // by symbol, as of the last solution
    std::vector<Entry> entries;
    std::vector<Constraint> unused;
    std::vector<int> infeasible;  // basic symbols that an edit may have made negative
    bool contradicted = false;    // an edit broke required constraints
    bool optimal = true;

    std::optional<Constraint> admit(Row expression, const Entry& entry);
    bool enter(Row expression, const Entry& entry);
    bool admitThroughArtificial(Row expression);
    [[nodiscard]] bool isSlidable(int symbol) const;
    void charge(const Entry& entry, double factor);
    void giveRow(int marker);
    bool restoreFeasibility();
    int bestLift(const Row& row) const;
    bool helps(int symbol, std::size_t depth) const;
    void optimize();
    // More moves than any system needs; only rounding could lead to as many.
    [[nodiscard]] int moveLimit() const { return 100 + 20 * tableau.symbolCount(); }
};

LayoutSolver::LayoutSolver() : machine_(std::make_unique<Machine>()) {}

LayoutSolver::~LayoutSolver() = default;
LayoutSolver::LayoutSolver(LayoutSolver&&) noexcept = default;
LayoutSolver& LayoutSolver::operator=(LayoutSolver&&) noexcept = default;

LayoutSolver::Variable LayoutSolver::addVariable() { return machine_->tableau.addSymbol(Kind::external); }

std::optional<LayoutSolver::Constraint> LayoutSolver::addConstraint(std::span<const Term> terms,
                                                                    Relation relation, double constant,
                                                                    double priority) {
    constant = sane(constant);
    machine_->restoreFeasibility();
    LayoutTableau& tableau = machine_->tableau;
    Row expression;
    expression.constant = -constant;
    for (const Term& term : terms) expression.addTerm(term.variable, term.coefficient);

    const bool required = priority >= kRequired;
    Entry entry;
    entry.constant = constant;
    if (relation == Relation::equal) {
        entry.sign = required ? 1 : -1;
        entry.marker = tableau.addSymbol(required ? Kind::dummy : Kind::error);
        if (!required) entry.markerPriority = priority;
    } else {
        entry.sign = relation == Relation::lessThanOrEqual ? 1 : -1;
        entry.marker = tableau.addSymbol(Kind::slack);
    }
    expression.addTerm(entry.marker, entry.sign);
    if (!required) {
        entry.other = tableau.addSymbol(Kind::error);
        entry.otherPriority = priority;
        expression.addTerm(entry.other, -entry.sign);
    }
    return machine_->admit(std::move(expression), entry);
}

LayoutSolver::Constraint LayoutSolver::addWish(Variable variable, double constant, double notAbove,
                                               double notBelow) {
    constant = sane(constant);
    machine_->restoreFeasibility();
    LayoutTableau& tableau = machine_->tableau;
    Entry entry;
    entry.marker = tableau.addSymbol(Kind::error);
    entry.other = tableau.addSymbol(Kind::error);
    entry.sign = -1;
    entry.constant = constant;
    entry.markerPriority = notAbove;
    entry.otherPriority = notBelow;
    Row expression;
    expression.constant = -constant;
    expression.addTerm(variable, 1);
    expression.addTerm(entry.marker, -1);
    expression.addTerm(entry.other, 1);
    return *machine_->admit(std::move(expression), entry);  // errors can always take up the difference
}

// Puts "0 = expression" into the system. None if it can't hold; the new symbols are then gone.
std::optional<LayoutSolver::Constraint> LayoutSolver::Machine::admit(Row expression, const Entry& entry) {
    optimal = false;
    bool admitted = definitions.adopt(expression);
    if (!admitted) {
        definitions.resolve(expression);
        admitted = definitions.adoptResolved(expression) || enter(std::move(expression), entry);
    }
    if (!admitted) {
        tableau.removeSymbol(entry.marker);
        if (entry.other != kNone) tableau.removeSymbol(entry.other);
        return std::nullopt;
    }
    charge(entry, 1);
    if (unused.empty()) {
        entries.push_back(entry);
        return entries.size() - 1;
    }
    const Constraint place = unused.back();
    unused.pop_back();
    entries[place] = entry;
    return place;
}

// Puts what speaks of slacks, errors and dummies alone into the tableau; false if it can't hold.
bool LayoutSolver::Machine::enter(Row expression, const Entry& entry) {
    // One of the constraint's own becomes basic, if its value then isn't negative.
    for (const int own : {entry.marker, entry.other}) {
        if (own == kNone || tableau.kind(own) == Kind::dummy) continue;
        if (-expression.constant / expression.coefficientOf(own) < -kEpsilon) continue;
        tableau.insert(std::move(expression), own);
        return true;
    }
    const bool onlyDummies = std::ranges::all_of(
        expression.terms, [this](const auto& term) { return tableau.kind(term.symbol) == Kind::dummy; });
    if (!onlyDummies) return admitThroughArtificial(std::move(expression));
    // It follows from earlier ones, or contradicts them.
    if (std::abs(expression.constant) >= kContradiction) return false;
    expression.constant = 0;
    tableau.insert(std::move(expression), entry.marker);
    return true;
}

// Lets the equation be missed by an artificial amount and brings that amount down; it can hold if 0 is
// reached.
bool LayoutSolver::Machine::admitThroughArtificial(Row expression) {
    if (expression.constant < 0) {
        expression.constant = -expression.constant;
        for (LayoutTableau::Term& term : expression.terms) term.coefficient = -term.coefficient;
    }
    const int artificial = tableau.addSymbol(Kind::slack);
    expression.addTerm(artificial, -1);
    tableau.insert(std::move(expression), artificial);

    int moves = 0;
    while (const Row* row = tableau.rowOf(artificial)) {
        if (row->constant < kEpsilon || ++moves > moveLimit()) break;
        const auto lowers = std::find_if(row->terms.begin(), row->terms.end(), [&](const auto& term) {
            return term.coefficient < -kEpsilon && tableau.mayEnter(term.symbol);
        });
        if (lowers == row->terms.end()) break;
        const int entering = lowers->symbol;
        tableau.pivot(tableau.firstToLeave(entering), entering);
    }
    if (const Row* row = tableau.rowOf(artificial)) {
        if (row->constant > kContradiction) {
            tableau.erase(artificial);
            tableau.removeSymbol(artificial);
            return false;
        }
        // At 0 but still basic: any other symbol of the row can take the place, since nothing moves.
        const auto taker = std::find_if(row->terms.begin(), row->terms.end(),
                                        [&](const auto& term) { return tableau.mayEnter(term.symbol); });
        if (taker != row->terms.end()) {
            tableau.pivot(artificial, taker->symbol);
        } else if (!row->terms.empty()) {
            tableau.pivot(artificial, row->terms.back().symbol);
        } else {
            tableau.erase(artificial);
        }
    }
    tableau.strike(artificial);
    tableau.removeSymbol(artificial);
    return true;
}

void LayoutSolver::Machine::charge(const Entry& entry, double factor) {
    if (entry.markerPriority < kRequired) tableau.addCost(entry.marker, entry.markerPriority, factor);
    if (entry.other != kNone) tableau.addCost(entry.other, entry.otherPriority, factor);
}

// An equation goes with its marker's row, so a marker that has none gets one. The row that runs out of room
// first, in the one direction or else in the other, keeps all the rest as it is.
void LayoutSolver::Machine::giveRow(int marker) {
    int leaving = kNone;
    int rank = 2;
    double least = 0;
    tableau.forEachRowWith(marker, [&](const Row& row, double coefficient) {
        const int rowRank = coefficient < 0 ? 0 : 1;
        const double room = std::abs(row.constant / coefficient);
        const bool earlier = room < least || (room == least && row.basic < leaving);
        if (rowRank > rank || (rowRank == rank && !earlier)) return;
        leaving = row.basic;
        rank = rowRank;
        least = room;
    });
    if (leaving != kNone) tableau.pivot(leaving, marker);
}

void LayoutSolver::removeConstraint(Constraint constraint) {
    machine_->restoreFeasibility();
    LayoutTableau& tableau = machine_->tableau;
    const Entry entry = machine_->entries[constraint];
    machine_->charge(entry, -1);
    machine_->optimal = false;
    if (!tableau.rowOf(entry.marker)) machine_->giveRow(entry.marker);
    LayoutDefinitions& definitions = machine_->definitions;
    if (const Row* row = tableau.rowOf(entry.marker)) {
        definitions.replace(*row);
        tableau.erase(entry.marker);
    } else {
        definitions.surrender(entry.marker);
    }
    for (const int symbol : {entry.marker, entry.other}) {
        if (symbol == kNone) continue;
        Row nothing;
        nothing.basic = symbol;
        definitions.replace(nothing);
        tableau.strike(symbol);
        tableau.removeSymbol(symbol);
    }
    machine_->entries[constraint] = {};
    machine_->unused.push_back(constraint);
}

void LayoutSolver::setConstant(Constraint constraint, double constant) {
    Machine& machine = *machine_;
    Entry& entry = machine.entries[constraint];
    constant = sane(constant);
    const double change = constant - entry.constant;
    if (change == 0) return;
    if (!machine.optimal) machine.optimize();
    entry.constant = constant;
    machine.definitions.shift(entry.marker, entry.sign * change);
    // The marker stands for the same thing as before, shifted; so only constants of rows move.
    const auto check = [&machine](const Row& row) {
        if (machine.tableau.kind(row.basic) == Kind::dummy) {
            machine.contradicted = machine.contradicted || std::abs(row.constant) > kContradiction;
        } else if (row.constant < -kEpsilon) {
            machine.infeasible.push_back(row.basic);
        }
    };
    for (const int own : {entry.marker, entry.other}) {
        if (own == kNone || !machine.tableau.rowOf(own)) continue;
        machine.tableau.shiftConstant(own, (own == entry.marker ? entry.sign : -entry.sign) * change);
        check(*machine.tableau.rowOf(own));
        return;
    }
    machine.tableau.forEachRowWith(entry.marker, [&](Row& row, double coefficient) {
        row.constant -= coefficient * entry.sign * change;
        check(row);
    });
}

bool LayoutSolver::solve() {
    if (!machine_->restoreFeasibility()) return false;
    if (!machine_->optimal) machine_->optimize();
    machine_->values = machine_->definitions.values();
    return true;
}

// The symbol whose growth lifts the row at the least cost, strongest level first; none if nothing lifts it.
int LayoutSolver::Machine::bestLift(const Row& row) const {
    int best = kNone;
    double per = 1;
    for (const LayoutTableau::Term& term : row.terms) {
        if (term.coefficient <= kEpsilon || !tableau.mayEnter(term.symbol)) continue;
        if (best == kNone || tableau.isCheaper(term.symbol, term.coefficient, best, per)) {
            best = term.symbol;
            per = term.coefficient;
        }
    }
    return best;
}

// The dual simplex: costs are in order, some basic symbols are negative; each leaves for what lifts it best.
bool LayoutSolver::Machine::restoreFeasibility() {
    int moves = 0;
    while (!infeasible.empty() && !contradicted) {
        const int leaving = infeasible.back();
        infeasible.pop_back();
        const Row* row = tableau.rowOf(leaving);
        if (!row || row->constant >= -kEpsilon) continue;
        const int entering = bestLift(*row);
        // A new solver doesn't go round in circles, if this one does.
        if (entering == kNone || ++moves > moveLimit()) {
            contradicted = true;
            break;
        }
        tableau.pivot(leaving, entering);
        tableau.forEachRowWith(leaving, [this](const Row& touched, double) {
            if (touched.constant < -kEpsilon) infeasible.push_back(touched.basic);
        });
    }
    return !contradicted;
}

// Whether raising the symbol helps this level and costs nothing on those above.
bool LayoutSolver::Machine::helps(int symbol, std::size_t depth) const {
    const auto& levels = tableau.levels();
    const auto place = static_cast<std::size_t>(symbol);
    if (levels[depth].cost[place] >= -kEpsilon || !tableau.mayEnter(symbol)) return false;
    for (std::size_t above = 0; above < depth; ++above) {
        if (levels[above].cost[place] > kEpsilon) return false;
    }
    return true;
}

// The primal simplex, level by level.
void LayoutSolver::Machine::optimize() {
    optimal = true;
    for (std::size_t depth = 0; depth < tableau.levels().size(); ++depth) {
        // Symbols are tried in turn from where the last one entered, which is quick; after many moves always
        // from the lowest, which surely ends (Bland's rule).
        int symbol = 0;
        int untried = tableau.symbolCount();
        int moves = 0;
        while (untried > 0 && moves < moveLimit()) {
            const int candidate = symbol;
            symbol = symbol + 1 == tableau.symbolCount() ? 0 : symbol + 1;
            --untried;
            if (!helps(candidate, depth)) continue;
            const int leaving = tableau.firstToLeave(candidate);
            if (leaving == kNone) continue;
            tableau.pivot(leaving, candidate);
            untried = tableau.symbolCount();
            if (++moves > moveLimit() / 2) symbol = 0;
        }
    }
}

double LayoutSolver::value(Variable variable) const {
    const auto place = static_cast<std::size_t>(variable);
    return place < machine_->values.size() ? machine_->values[place] : 0;
}

// Whether a symbol that isn't basic may change for nothing.
bool LayoutSolver::Machine::isSlidable(int symbol) const {
    if (tableau.kind(symbol) == Kind::external) return !definitions.isDefined(symbol);
    return tableau.mayEnter(symbol) && !tableau.rowOf(symbol) && tableau.costsNothing(symbol);
}

bool LayoutSolver::isFree(Variable variable) const {
    Row row;
    row.addTerm(variable, 1);
    machine_->definitions.resolve(row);
    return std::ranges::any_of(row.terms,
                               [this](const auto& term) { return machine_->isSlidable(term.symbol); });
}

std::vector<bool> LayoutSolver::freeVariables() const {
    std::vector<bool> slidable(static_cast<std::size_t>(machine_->tableau.symbolCount()));
    for (std::size_t symbol = 0; symbol < slidable.size(); ++symbol)
        slidable[symbol] = machine_->isSlidable(static_cast<int>(symbol));
    return machine_->definitions.moved(slidable);
}

std::size_t LayoutSolver::revision() const noexcept {
    return machine_->tableau.changes() + machine_->definitions.changes();
}

}  // namespace zqcore::platform
