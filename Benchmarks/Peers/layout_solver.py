"""The row of views of LayoutSolverBenchmark.cpp, put to the public solver of the same kind.

usage: layout_solver.py build|edit VIEWS ROUNDS: prints the seconds of processor time of each round, a line each.
"""
import sys
import time

from kiwisolver import Solver, Variable


def build(views):
    solver = Solver()
    left = [Variable() for _ in range(views)]
    width = [Variable() for _ in range(views)]
    solver.addEditVariable(width[0], "medium")
    solver.suggestValue(width[0], 20)
    solver.addConstraint(left[0] == 0)
    for at in range(1, views):
        size = 20 + at % 7
        solver.addConstraint((width[at] <= size) | "weak")
        solver.addConstraint((width[at] >= size) | "strong")
        solver.addConstraint(left[at] - left[at - 1] - width[at - 1] >= 8)
        solver.addConstraint((left[at] - left[at - 1] - width[at - 1] == 8) | "strong")
    solver.addConstraint(left[-1] + width[-1] <= 1e6)
    solver.addConstraint((left[-1] + width[-1] == 1e6) | "weak")
    solver.updateVariables()
    return solver, width[0], left[-1]


def timed(action):
    start = time.process_time()
    action()
    print(time.process_time() - start, flush=True)


mode, views, rounds = sys.argv[1], int(sys.argv[2]), int(sys.argv[3])
if mode == "build":
    for _ in range(rounds):
        timed(lambda: build(views))
else:
    solver, first, last = build(views)
    for turn in range(rounds):
        size = 20 if turn % 2 else 33

        def edit():
            solver.suggestValue(first, size)
            solver.updateVariables()

        before = last.value()
        timed(edit)
        assert abs(last.value() - before) == 13
