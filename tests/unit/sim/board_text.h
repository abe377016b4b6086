// What the tests of board files share.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "sim/board/BoardFile.h"

// The text of the error that the board file raises; empty when it raises none.
inline std::string ErrorOf(std::string const& json) {
    try {
        gputune::sim::ReadBoardText(json, "some.json");
        return "";
    } catch (gputune::sim::BoardFileError const& error) {
        return error.what();
    }
}

inline std::string Replaced(std::string text, std::string const& from, std::string const& to) {
    std::size_t const position = text.find(from);
    EXPECT_NE(position, std::string::npos) << from;
    return text.replace(position, from.size(), to);
}
