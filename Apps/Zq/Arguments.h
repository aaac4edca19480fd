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
/// `--to=VALUE`; `--` ends them.
class Arguments {
  public:
    struct Option {
        std::string_view name;
        bool takesValue = true;
    };

    /// `names` are those of the words, as the usage has them: "KEY", or "[KEY]" for one that may be left out.
    /// Absent, with a message on standard error, for an unknown option, a missing value, a missing word or
    /// one too many; absent without one for --help or -h in the place of an option.
    [[nodiscard]] static std::optional<Arguments> parse(std::span<const std::string> words,
                                                        std::initializer_list<Option> options,
                                                        std::initializer_list<std::string_view> names);

    /// Whether that was met; the command's help is to be printed then.
    [[nodiscard]] static bool helpIsWanted();

    [[nodiscard]] bool has(std::string_view option) const { return options_.contains(option); }
    [[nodiscard]] std::optional<std::string> value(std::string_view option) const;
    /// A number above 0 under `option`, `otherwise` without the option; absent, with a message, for anything
    /// else.
    [[nodiscard]] std::optional<double> positiveNumber(std::string_view option, double otherwise) const;
    /// Whether --to, where it is given, can be an application's identifier; a message if not.
    [[nodiscard]] bool addresseeIsGood() const;
    [[nodiscard]] const std::vector<std::string>& words() const { return words_; }

  private:
    std::map<std::string, std::string, std::less<>> options_;
    std::vector<std::string> words_;
};

}  // namespace zq
