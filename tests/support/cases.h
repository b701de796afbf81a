// SPDX-License-Identifier: MIT
// What functions make of texts, and what they refuse.
#pragma once

#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <string_view>

// What is told when something is refused, else nothing.
template <typename Act> std::string Refusal(Act act) {
    try {
        act();
    } catch (const std::runtime_error &error) {
        return error.what();
    }
    return "";
}

// A table, several cases a line: "input=>result|input=>!what is wrong", of which a part will do.
template <typename Function> void ExpectAll(Function function, std::string_view cases) {
    while (!cases.empty()) {
        const std::string_view one = cases.substr(0, cases.find_first_of("|\n"));
        cases.remove_prefix(std::min(one.size() + 1, cases.size()));
        const std::string_view expected = one.substr(one.find("=>") + 2);
        try {
            EXPECT_EQ(function(std::string(one.substr(0, one.find("=>")))), expected) << one;
        } catch (const std::runtime_error &error) {
            EXPECT_EQ(expected.substr(0, 1), "!") << one;
            EXPECT_NE(std::string(error.what()).find(expected.substr(1)), std::string::npos)
                << one << " told: " << error.what();
        }
    }
}
