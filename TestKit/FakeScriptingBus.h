#pragma once

#include <expected>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Platform/Scripting/ScriptingBus.h"

namespace zqcore::testkit {

/// A bus that a test steers, in force while it lives: for what a real bus can't be brought to. It knows one
/// target, serves nobody, and keeps what was asked of it. Threads: any; set the fields before the calls.
class FakeScriptingBus final : public platform::ScriptingBus {
  public:
    FakeScriptingBus() { installForTesting(this); }
    ~FakeScriptingBus() override { installForTesting(nullptr); }

    bool installed = true;
    bool running = true;
    bool hasCommand = true;
    bool takesPosts = true;
    /// What a command gives; by default its own text.
    std::function<std::expected<Answer, platform::NSError>(std::string_view text)> answer =
        [](std::string_view text) { return Answer(std::string(text)); };

    /// What is to be called when the bus is gone.
    std::function<void()> gone;

    /// "start" and "request TEXT", in order.
    [[nodiscard]] std::vector<std::string> calls() const {
        const std::lock_guard lock(mutex_);
        return calls_;
    }
    [[nodiscard]] std::vector<platform::NSDistributedNotification> posts() const {
        const std::lock_guard lock(mutex_);
        return posts_;
    }
    /// Gives a notification to every listener of its name, on this thread.
    void deliver(const platform::NSDistributedNotification& notification) {
        std::vector<NotificationHandler> handlers;
        {
            const std::lock_guard lock(mutex_);
            for (const auto& [name, handler] : listeners_) {
                if (name == notification.name) handlers.push_back(handler);
            }
        }
        for (const auto& handler : handlers) handler(notification);
    }

    bool nameHasOwner(const std::string&) override { return installed && running; }
    bool isActivatable(const std::string&) override { return installed; }
    void start(const std::string&) override { note("start"); }
    std::expected<bool, platform::NSError> knowsRequestCommand(const std::string&) override {
        return hasCommand;
    }
    std::expected<Answer, platform::NSError> request(const std::string&, std::string_view text) override {
        note("request " + std::string(text));
        return answer(text);
    }
    platform::ScriptingServeStatus serve(const std::string&, CommandHandler) override {
        return platform::ScriptingServeStatus::noBus;
    }
    void stopServing(const std::string&) override {}
    void whenGone(std::function<void()> handler) override { gone = std::move(handler); }
    bool broadcast(const platform::NSDistributedNotification& notification) override {
        const std::lock_guard lock(mutex_);
        posts_.push_back(notification);
        return takesPosts;
    }
    std::shared_ptr<void> listen(const std::string& name, NotificationHandler handler) override {
        const std::lock_guard lock(mutex_);
        listeners_.emplace_back(name, std::move(handler));
        return std::make_shared<int>();
    }

  private:
    void note(std::string call) {
        const std::lock_guard lock(mutex_);
        calls_.push_back(std::move(call));
    }

    mutable std::mutex mutex_;
    std::vector<std::string> calls_;
    std::vector<platform::NSDistributedNotification> posts_;
    std::vector<std::pair<std::string, NotificationHandler>> listeners_;
};

}  // namespace zqcore::testkit
