#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <string_view>
#include <utility>

namespace zqcore {

/// Expects of every case of a status its number, counted from 0 in this order, and its name in the log.
template <class Status>
void expectCases(std::initializer_list<std::pair<Status, std::string_view>> cases) {
    int number = 0;
    for (const auto& [status, name] : cases) {
        EXPECT_EQ(static_cast<int>(status), number) << name;
        EXPECT_EQ(caseName(status), name) << number;
        ++number;
    }
}

}  // namespace zqcore
