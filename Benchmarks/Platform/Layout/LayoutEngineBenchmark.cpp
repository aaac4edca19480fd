#include "Platform/Layout/LayoutEngine.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

#include "Platform/Layout/ConstraintMaker.h"
#include "Platform/Layout/LayoutItem.h"

// A layout pass over views in a row, each as wide as its content and a gap after the one before: what a stack
// view asks of the solver.
namespace {

using namespace zqcore::platform;

class Item final : public LayoutItem {
  public:
    ~Item() override {
        items.clear();
        endLayout();
    }
    Item& add() {
        items.push_back(std::make_unique<Item>());
        items.back()->above = this;
        items.back()->didJoinSuperitem();
        return *items.back();
    }
    LayoutItem* layoutSuperitem() const override { return above; }
    void forEachLayoutSubitem(const std::function<void(LayoutItem&)>& body) const override {
        for (const auto& item : items) body(*item);
    }
    CGRect layoutFrame() const override { return frame; }
    void setLayoutFrame(const CGRect& next) override { frame = next; }
    CGSize intrinsicContentSize() const override { return content; }

    std::vector<std::unique_ptr<Item>> items;
    Item* above = nullptr;
    CGRect frame;
    CGSize content{-1, -1};
};

std::unique_ptr<Item> makeRow(std::int64_t count) {
    auto row = std::make_unique<Item>();
    row->frame = {{0, 0}, {1e6, 40}};
    Item* before = nullptr;
    for (std::int64_t index = 0; index < count; ++index) {
        Item& item = row->add();
        item.content = {static_cast<double>(20 + index % 7), 16};
        snp(item).makeConstraints([&](ConstraintMaker& make) {
            make.centerY().equalToSuperview().priority(250);
            if (!before) {
                make.left().equalToSuperview();
                return;
            }
            make.left().greaterThanOrEqualTo(snp(*before).right()).offset(8);
            make.left().equalTo(snp(*before).right()).offset(8).priority(750);
        });
        before = &item;
    }
    snp(*before).makeConstraints([](ConstraintMaker& make) {
        make.right().lessThanOrEqualToSuperview();
        make.right().equalToSuperview().priority(250);
    });
    return row;
}

// One label of the row changes its text; all that come after it move.
void oneChange(benchmark::State& state) {
    const auto row = makeRow(state.range(0));
    LayoutEngine::layout(*row);
    Item& first = *row->items.front();
    for (auto _ : state) {
        first.content.width = first.content.width == 20 ? 33 : 20;
        first.invalidateIntrinsicContentSize();
        LayoutEngine::layout(*row);
        benchmark::DoNotOptimize(row->items.back()->frame);
    }
}

void firstPass(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        auto row = makeRow(state.range(0));
        state.ResumeTiming();
        LayoutEngine::layout(*row);
        state.PauseTiming();
        row.reset();
        state.ResumeTiming();
    }
}

BENCHMARK(oneChange)->Name("layout/change250/ours")->ArgName("views")->Arg(250);
BENCHMARK(oneChange)->Name("layout/change500/ours")->ArgName("views")->Arg(500);
BENCHMARK(oneChange)->Name("layout/change1000/ours")->ArgName("views")->Arg(1000);
BENCHMARK(firstPass)->Name("layout/first20/ours")->ArgName("views")->Arg(20);
BENCHMARK(firstPass)->Name("layout/first1000/ours")->ArgName("views")->Arg(1000);

}  // namespace
