#pragma once

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

namespace zqcore::testkit {

/// Gives a variable of the environment another value, or takes it out, and puts the former state back at its
/// end. Threads: made, changed and ended while no other thread reads the environment. Lifetime: of several
/// for one variable the last one made ends first.
class EnvironmentVariable final {
  public:
    explicit EnvironmentVariable(std::string name, std::optional<std::string> value = std::nullopt)
        : name_(std::move(name)) {
        if (const char* before = std::getenv(name_.c_str())) before_ = before;
        set(value);
    }
    ~EnvironmentVariable() { set(before_); }
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

    void set(const std::optional<std::string>& value) const {
        if (value) {
            ::setenv(name_.c_str(), value->c_str(), 1);
        } else {
            ::unsetenv(name_.c_str());
        }
    }

  private:
    std::string name_;
    std::optional<std::string> before_;
};

}  // namespace zqcore::testkit
