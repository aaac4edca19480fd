#pragma once

#include <initializer_list>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zq {

/// The words behind a command, sorted into options and the rest. Options are long ones, `--to VALUE` or
/// `--to=VALUE`;
/// `--` ends them.
class Arguments {
  public:
    struct Option {
        std::string_view name;
        bool takesValue = true;
    };

    /// Absent, with a message on standard error, for an unknown option, a missing value or a wrong count of
    /// words; absent without one for --help in the place of an option.
    [[nodiscard]] static std::optional<Arguments> parse(std::span<const std::string> words,
                                                        std::initializer_list<Option> options,
                                                        std::size_t leastWords, std::size_t mostWords);

    /// Whether that was met; the command's help is to be printed then.
    [[nodiscard]] static bool helpIsWanted();

    [[nodiscard]] bool has(std::string_view option) const { return options_.contains(option); }
    [[nodiscard]] std::optional<std::string> value(std::string_view option) const;
    /// A number above 0 under `option`, `otherwise` without the option; absent, with a message, for anything
    /// else.
    [[nodiscard]] std::optional<double> positiveNumber(std::string_view option, double otherwise) const;
    [[nodiscard]] const std::vector<std::string>& words() const { return words_; }

  private:
    std::map<std::string, std::string, std::less<>> options_;
    std::vector<std::string> words_;
};

}  // namespace zq
