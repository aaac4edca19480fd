#include "Apps/Zq/Arguments.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "Apps/Zq/Command.h"

namespace zq {

namespace {

bool metHelp = false;

}  // namespace

std::optional<Arguments> Arguments::parse(std::span<const std::string> words,
                                          std::initializer_list<Option> options,
                                          std::initializer_list<std::string_view> names) {
    Arguments result;
    bool onlyWords = false;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[i];
        if (!onlyWords && (word == "--help" || word == "-h")) {
            metHelp = true;
            return std::nullopt;
        }
        if (onlyWords || !word.starts_with("--")) {
            result.words_.push_back(word);
            continue;
        }
        if (word == "--") {
            onlyWords = true;
            continue;
        }
        const auto equals = word.find('=');
        const auto name = std::string_view(word).substr(2, equals == std::string::npos ? equals : equals - 2);
        const auto* const known = std::find_if(options.begin(), options.end(),
                                               [&](const Option& option) { return option.name == name; });
        if (known == options.end()) {
            complain("unknown option --" + std::string(name));
            return std::nullopt;
        }
        if (equals != std::string::npos && known->takesValue) {
            result.options_[std::string(name)] = word.substr(equals + 1);
        } else if (!known->takesValue && equals == std::string::npos) {
            result.options_[std::string(name)] = {};
        } else if (known->takesValue && i + 1 < words.size()) {
            result.options_[std::string(name)] = words[++i];
        } else {
            complain("option --" + std::string(name) +
                     (known->takesValue ? " wants a value" : " takes no value"));
            return std::nullopt;
        }
    }
    const auto given = result.words_.size();
    if (given > names.size()) {
        complain("one word too many: " + result.words_[names.size()]);
        return std::nullopt;
    }
    if (given < names.size() && !names.begin()[given].starts_with('[')) {
        complain(std::string(names.begin()[given]) + " is missing; try --help");
        return std::nullopt;
    }
    return result;
}

bool Arguments::helpIsWanted() { return metHelp; }

std::optional<std::string> Arguments::value(std::string_view option) const {
    const auto found = options_.find(option);
    return found == options_.end() ? std::nullopt : std::optional(found->second);
}

std::optional<double> Arguments::positiveNumber(std::string_view option, double otherwise) const {
    const auto text = value(option);
    if (!text) return otherwise;
    double number = 0;
    const auto [end, error] = std::from_chars(text->data(), text->data() + text->size(), number);
    if (error != std::errc{} || end != text->data() + text->size() || !std::isfinite(number) || number <= 0) {
        complain("--" + std::string(option) + " wants a number above 0, not \"" + *text + "\"");
        return std::nullopt;
    }
    return number;
}

bool Arguments::addresseeIsGood() const {
    const auto to = value("to");
    const auto fits = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' ||
               c == '-' || c == '_';
    };
    if (!to || (!to->empty() && std::ranges::all_of(*to, fits))) return true;
    complain("\"" + *to + "\" is no identifier");
    return false;
}

}  // namespace zq
