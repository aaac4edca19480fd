// Queues beside a strand on two threads. Each round submits a fixed number of empty blocks and waits until
// the last has run, so that the whole way is measured: submitting, handing over, running.

#include <benchmark/benchmark.h>

#include <atomic>
#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/strand.hpp>
#include <latch>
#include <thread>
#include <vector>

#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Dispatch/DispatchSourceTimer.h"

namespace {

using namespace zqcore::platform;

// Enough that starting the producers' threads doesn't count.
constexpr int kBlocks = 500'000;

class Strand {
  public:
    Strand() : work_(context_.get_executor()), strand_(context_.get_executor()) {
        for (int i = 0; i < 2; ++i) threads_.emplace_back([this] { context_.run(); });
    }
    ~Strand() { work_.reset(); }

    template <class F>
    void async(F&& block) {
        boost::asio::post(strand_, std::forward<F>(block));
    }

  private:
    boost::asio::io_context context_{2};
    boost::asio::executor_work_guard<boost::asio::io_context::executor_type> work_;
    boost::asio::strand<boost::asio::io_context::executor_type> strand_;
    std::vector<std::jthread> threads_;
};

class Ours {
  public:
    template <class F>
    void async(F&& block) {
        queue_->async(std::forward<F>(block));
    }

  private:
    std::shared_ptr<DispatchQueue> queue_ = DispatchQueue::serial("benchmark");
};

// `producers` threads share the blocks; each thread's last block reports it done.
template <class Queue>
void submit(Queue& queue, int producers, long& counter) {
    std::latch done(producers);
    const auto produce = [&] {
        for (int i = 0; i < kBlocks / producers; ++i) queue.async([&counter] { ++counter; });
        queue.async([&done] { done.count_down(); });
    };
    std::vector<std::jthread> others;
    for (int i = 1; i < producers; ++i) others.emplace_back(produce);
    produce();
    done.wait();
}

template <class Queue, int producers>
void async(benchmark::State& state) {
    Queue queue;
    long counter = 0;
    for (auto _ : state) submit(queue, producers, counter);
    state.SetItemsProcessed(state.iterations() * kBlocks);
    if (counter != state.iterations() * kBlocks) state.SkipWithError("blocks were lost");
}

// One block at a time, each waiting until the other side sleeps or is about to: what a request pays at every
// change of queue.
template <class Queue>
void hop(benchmark::State& state) {
    Queue queue;
    for (auto _ : state) {
        std::atomic<bool> ran{false};
        queue.async([&ran] {
            ran = true;
            ran.notify_one();
        });
        ran.wait(false);
    }
}

// From queue to queue without a foreign thread between.
void pingPong(benchmark::State& state) {
    const auto a = DispatchQueue::serial("a");
    const auto b = DispatchQueue::serial("b");
    constexpr int kHops = 1000;
    for (auto _ : state) {
        std::latch done(1);
        struct Ball {
            DispatchQueue* to;
            DispatchQueue* from;
            std::latch* done;
            int left;
            void operator()() {
                if (left == 0) return done->count_down();
                Ball next{from, to, done, left - 1};
                next.to->async(next);
            }
        };
        a->async(Ball{a.get(), b.get(), &done, kHops});
        done.wait();
    }
    state.SetItemsProcessed(state.iterations() * kHops);
}

void sync(benchmark::State& state) {
    const auto queue = DispatchQueue::serial("sync");
    long counter = 0;
    for (auto _ : state) queue->sync([&counter] { ++counter; });
    benchmark::DoNotOptimize(counter);
}

void makeAndDrop(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(DispatchQueue::serial("made"));
}

// A timer set and taken back, as each request does with its time-out, beside 10,000 others.
void setAndCancelTimer(benchmark::State& state) {
    const auto queue = DispatchQueue::serial("timers");
    std::vector<std::shared_ptr<DispatchSourceTimer>> others;
    const auto make = [&queue](int seconds) {
        auto timer = DispatchSourceTimer::make(queue);
        timer->schedule(DispatchTime::now(std::chrono::seconds(3600 + seconds)), std::chrono::hours(1));
        timer->setEventHandler([] {});
        timer->resume();
        return timer;
    };
    for (int i = 0; i < 10'000; ++i) others.push_back(make(i));
    int i = 0;
    for (auto _ : state) make(++i % 10'000);
}

}  // namespace

BENCHMARK(async<Ours, 1>)->Name("queue/async/ours")->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(async<Strand, 1>)->Name("queue/async/asio_strand")->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(async<Ours, 4>)->Name("queue/async4/ours")->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(async<Strand, 4>)->Name("queue/async4/asio_strand")->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(hop<Ours>)->Name("queue/hop/ours")->UseRealTime();
BENCHMARK(hop<Strand>)->Name("queue/hop/asio_strand")->UseRealTime();
BENCHMARK(pingPong)->Name("queue/pingpong/ours")->UseRealTime();
BENCHMARK(sync)->Name("queue/sync/ours");
BENCHMARK(makeAndDrop)->Name("queue/make/ours");
BENCHMARK(setAndCancelTimer)->Name("timer/set_and_cancel/ours");
