// The solver alone on the constraints of a row of views, beside the public solver of its kind. That one is at
// hand as a Python module only, so it tells its own processor time, and ours is held to the same; what Python
// adds is a few percent.
#include "Platform/Layout/LayoutSolver.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace zqcore::platform;
using Relation = LayoutSolver::Relation;
using Term = LayoutSolver::Term;

struct Row {
    explicit Row(int views) {
        for (int at = 0; at < views; ++at) {
            const auto view = static_cast<std::size_t>(at);
            left.push_back(solver.addVariable());
            width.push_back(solver.addVariable());
            const auto wish = solver.addWish(width[view], 20 + at % 7, /*notAbove=*/250, /*notBelow=*/750);
            if (at == 0) {
                first = wish;
                add({{left[0], 1}}, Relation::equal, 0, LayoutSolver::kRequired);
                continue;
            }
            const std::vector<Term> gap{{left[view], 1}, {left[view - 1], -1}, {width[view - 1], -1}};
            add(gap, Relation::greaterThanOrEqual, 8, LayoutSolver::kRequired);
            add(gap, Relation::equal, 8, 750);
        }
        const std::vector<Term> end{{left.back(), 1}, {width.back(), 1}};
        add(end, Relation::lessThanOrEqual, 1e6, LayoutSolver::kRequired);
        add(end, Relation::equal, 1e6, 250);
        if (!solver.solve()) std::abort();
    }
    void add(const std::vector<Term>& terms, Relation relation, double constant, double priority) {
        if (!solver.addConstraint(terms, relation, constant, priority)) std::abort();
    }

    LayoutSolver solver;
    std::vector<LayoutSolver::Variable> left, width;
    LayoutSolver::Constraint first = 0;
};

double processorTime() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

void build(benchmark::State& state, int views) {
    for (auto _ : state) {
        const double start = processorTime();
        Row row(views);
        benchmark::DoNotOptimize(row.solver.value(row.left.back()));
        state.SetIterationTime(processorTime() - start);
    }
}

void edit(benchmark::State& state, int views) {
    Row row(views);
    double size = 20;
    for (auto _ : state) {
        size = size == 20 ? 33 : 20;
        const double before = row.solver.value(row.left.back());
        const double start = processorTime();
        row.solver.setConstant(row.first, size);
        const bool solved = row.solver.solve();
        state.SetIterationTime(processorTime() - start);
        if (!solved || row.solver.value(row.left.back()) == before) state.SkipWithError("nothing moved");
    }
}

// A round of the other solver an iteration, timed by itself.
void peer(benchmark::State& state, const std::string& mode, int views) {
    const std::string command = "exec /usr/bin/python3 " ZQ_BENCH_PEERS "/layout_solver.py " + mode + " " +
                                std::to_string(views) + " " + std::to_string(state.max_iterations);
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> told(popen(command.c_str(), "r"), pclose);
    for (auto _ : state) {
        double seconds = 0;
        if (!told || std::fscanf(told.get(), "%lf", &seconds) != 1) {
            state.SkipWithError("the Python module kiwisolver isn't installed");
            break;
        }
        state.SetIterationTime(seconds);
    }
}

BENCHMARK_CAPTURE(build, 250, 250)->Name("solver/build250/ours")->UseManualTime();
BENCHMARK_CAPTURE(peer, build250, "build", 250)->Name("solver/build250/kiwi")->UseManualTime()->Iterations(5);
BENCHMARK_CAPTURE(edit, 1000, 1000)->Name("solver/edit1000/ours")->UseManualTime();
BENCHMARK_CAPTURE(peer, edit1000, "edit", 1000)
    ->Name("solver/edit1000/kiwi")
    ->UseManualTime()
    ->Iterations(400);

}  // namespace
